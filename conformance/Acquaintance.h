// SPDX-License-Identifier: MIT
#pragma once

#include "Media.h"
#include "statements/Trial.h"

/// What is found out of a renderer before it is held to the contract.
class Acquaintance : public Trial
{
public:
    using Trial::Trial;

    /// The statement of this trial: the renderer has a clock in hand, or plays one of the media.
    void meet(const QList<Media> &offered);

    QString name; ///< display name
    bool isSimulated = false;
    qsizetype playable = -1; ///< of the media offered, the first that plays; -1: none
    qint64 roundTrip = 0; ///< longest time from a command to its report, in milliseconds
    /// What it says that it cannot do, and in which words.
    QMap<Ability, QString> refusals;

private:
    bool plays(const Media &media);
    void measure();
    void askForProperties();
    QVariant ask(const QString &property);
    qint64 timeUntil(const std::function<bool()> &condition);
};
