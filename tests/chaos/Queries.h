// SPDX-License-Identifier: MIT
#pragma once

#include "Family.h"
#include "Stage.h"

/// The query and the browse tab.
class Queries : public Family
{
public:
    explicit Queries(const Stage &stage);

    QList<Deed> deeds() override;
    /// A query that neither brings rows nor ends.
    QStringList faults() override;

private:
    void press(Dice &dice) const;
    void chooseQuery(Dice &dice) const;
    void chooseResult(Dice &dice) const;

    const Stage &m_stage;
    double m_runningSince = 0; ///< milliseconds of the meter; 0: no query runs
};
