// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QJsonValue>
#include <QString>

/// Texts of others, written into a page so that they stay texts.
namespace HtmlText {
/// The text for the content of an element or a quoted attribute. Characters that cannot be seen or that change the
/// direction of what follows are written by their number, "\u202e", as in JSON.
QByteArray of(const QString &text);

/// A JSON value on one line, written in the same way: what a reader copies is still JSON.
QByteArray ofJson(const QJsonValue &value);
} // namespace HtmlText
