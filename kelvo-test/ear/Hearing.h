// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>

/// Something that an ear has to tell of a sound, measured and not told by whoever plays it.
struct Hearing
{
    enum Kind {
        Begins, ///< there is a sound where none was
        Goes, ///< it goes on; told a few times a second
        Jumps, ///< it goes on at another place, or of another item, and was not silent in between
        Ends, ///< there is none any more
        Fails, ///< nothing can be heard from now on: doubt says why
    };

    Kind kind = Goes;
    double at = 0; ///< when, in seconds
    double within = 0; ///< how far off `at` may be, either way, seconds
    int item = 0; ///< whose code it is (MediaClock); 0: of none that could be read
    std::optional<double> position = {}; ///< of the item then, seconds
    double speed = 1;
    std::optional<double> level = {}; ///< of the tone, dBFS: a sine of full scale has 0
    QString doubt = {}; ///< why what is missing, or the level, could not be measured; empty: all is well

    /// How far off positions may be, either way, in seconds: a tenth of the code's shortest mark.
    static constexpr double PositionError = 0.0002;
    /// The same of levels, in decibels.
    static constexpr double LevelError = 0.1;

    /// "begins", "goes", "jumps", "ends", "fails".
    QString kindText() const;
    QJsonObject json() const;
    /// Nothing where these are no words of an ear.
    static std::optional<Hearing> of(const QJsonObject &json);
    /// The same as one line of text.
    QByteArray line() const;
    static std::optional<Hearing> ofLine(const QByteArray &line);
};
