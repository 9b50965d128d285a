// SPDX-License-Identifier: MIT
#pragma once

#include "ClockedMedium.h"
#include "Interruption.h"
#include "MediaClock.h"
#include "Output.h"

#include <QDir>
#include <QList>
#include <QTemporaryDir>

/// The folder that media with a clock are made in: each is there as a whole or not at all. GUI thread.
class MediaFolder
{
public:
    /// @param path  of the folder, which is made when there is none
    explicit MediaFolder(const QString &path);

    /// Makes them, one after the other, in event loops of its own, and tells of each; those that cannot be made are left
    /// out, after a complaint. Returns when all are done, or early when no more can be written or the tester interrupts.
    /// True: all are there.
    bool make(const QList<ClockedMedium> &media);

private:
    enum class Outcome { Made, LeftOut, Ended };

    Outcome makeOne(const ClockedMedium &medium);
    Outcome judge(const ClockedMedium &medium, int code, const QString &words);
    Outcome refuse(const ClockedMedium &medium, const QString &reason, Outcome outcome);

    const QDir m_folder;
    const QTemporaryDir m_unfinished; ///< in the folder, so that what is finished only has to be renamed
    Interruption m_interruption;
    Output m_output;
};
