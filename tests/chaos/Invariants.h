// SPDX-License-Identifier: MIT
#pragma once

#include "Stage.h"

class Onlooker;
class QComboBox;

/// What must be true of the window whenever its event loop has nothing left to do.
class Invariants
{
public:
    Invariants(const Stage &stage, const Onlooker &onlooker);

    /// What is wrong, in words.
    QStringList faults() const;

private:
    QStringList captionFaults() const;
    QStringList rendererBoxFaults() const;
    QStringList playlistBoxFaults() const;
    QStringList playlistFaults() const;
    QStringList positionFaults() const;
    QStringList shownPositionFaults(const QString &text) const;
    bool isSliderInHand() const;

    const Stage &m_stage;
    const Onlooker &m_onlooker;
};
