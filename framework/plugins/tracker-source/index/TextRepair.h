// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// Texts of unknown encoding, shown as well as can be.
namespace TextRepair {

/// UTF-8 where it is valid; otherwise the encoding that its bytes look like, Windows-1252 if they look like none.
/// `more` is further text of the same origin, which makes the guess better.
QString decode(const QByteArray &bytes, const QByteArray &more = {});

/// Composed (NFC), one line, without control characters or blanks at the ends, at most 1000 characters.
QString tidy(const QString &text);

/// The last part of a URI's path, decoded, to be shown.
QString fileName(const QByteArray &uri);

} // namespace TextRepair
