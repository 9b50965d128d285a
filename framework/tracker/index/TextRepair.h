// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerGlobal.h"

#include <QByteArray>
#include <QString>

/// Texts of unknown encoding, shown as well as can be.
namespace TextRepair {

/// UTF-8 where it is valid; otherwise the encoding that its bytes look like, Windows-1252 if they look like none.
/// `more` is further text of the same origin, which makes the guess better.
KELVO_TRACKER_EXPORT QString decode(const QByteArray &bytes, const QByteArray &more = {});

/// Composed (NFC), one line, without control characters or blanks at the ends, at most 1000 characters.
KELVO_TRACKER_EXPORT QString tidy(const QString &text);

} // namespace TextRepair
