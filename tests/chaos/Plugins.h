// SPDX-License-Identifier: MIT
#pragma once

#include "Family.h"
#include "Stage.h"

/// Plug-ins that are loaded and unloaded, whatever plays.
class Plugins : public Family
{
public:
    /// @param names  file names
    Plugins(const Stage &stage, QStringList names);

    QList<Deed> deeds() override;
    /// Those that could not be loaded.
    QStringList faults() override;

private:
    const Stage &m_stage;
    const QStringList m_names;
};
