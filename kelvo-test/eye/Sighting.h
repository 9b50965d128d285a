// SPDX-License-Identifier: MIT
#pragma once

#include "MediaClock.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>

/// Something that an eye has to tell of a picture, measured and not told by whoever shows it.
struct Sighting
{
    enum Kind {
        Begins, ///< there is a picture with a mark where none was
        Goes, ///< it moves on; told a few times a second, of one of the last pictures that was neither late nor early
        Jumps, ///< it goes on at another place, or of another item
        Rests, ///< it is the same for a while: at says since when
        Ends, ///< none can be read any more: doubt says why
        Fails, ///< nothing can be seen from now on: doubt says why
    };

    Kind kind = Goes;
    double at = 0; ///< when that picture came, in seconds
    double within = 0; ///< how far off `at` may be, either way, seconds
    MediaClock::Moment moment = {}; ///< which picture; item 0: none
    double speed = 1; ///< of late, as a share of the normal one
    int leftOut = 0; ///< pictures that were not shown, since the last time that something was told
    QString doubt = {}; ///< why nothing could be measured; empty: all is well

    /// "begins", "goes", "jumps", "rests", "ends", "fails".
    QString kindText() const;
    QJsonObject json() const;
    /// Nothing where these are no words of an eye.
    static std::optional<Sighting> of(const QJsonObject &json);
    /// The same as one line of text.
    QByteArray line() const;
    static std::optional<Sighting> ofLine(const QByteArray &line);
};
