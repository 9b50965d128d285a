// SPDX-License-Identifier: MIT
#pragma once

#include "SenseTrial.h"

#include <QTemporaryDir>

class Session;

/// The two items with a clock that a trial of a sense plays; they go with this. GUI thread.
class TrialMedia
{
public:
    /// Blocks while a program of its own makes them.
    /// @param format  of ClockedMedium
    bool make(const QString &format, QString *error);
    SenseTrial::Media items() const { return m_items; }

    /// Makes them, and finds the renderer. Null, and told, where one cannot be had.
    static KelvoRenderer *prepareTrial(
        Session &session, const QString &uuid, const QString &format, TrialMedia *media);

private:
    QTemporaryDir m_folder;
    SenseTrial::Media m_items;
};
