// SPDX-License-Identifier: MIT
#pragma once

#include "Family.h"
#include "Invariants.h"
#include "Onlooker.h"
#include "Questions.h"
#include "Stage.h"

#include <memory>
#include <vector>

/// One seed: steps made by chance, and what must be true after each.
class ChaosRun
{
public:
    ChaosRun(const Stage &stage, quint64 seed);

    void add(std::unique_ptr<Family> family);
    /// Makes the steps up to this one. Stops at the first fault.
    void run(int steps);
    /// Makes one step.
    void step(int number);
    /// After the last step: everything that was asked has been answered.
    void finish();
    /// What kept the window from its events until now is not judged.
    void forgetStall();
    /// Something that happens outside of the window.
    void meanwhile(Dice &dice);

    int questionsAsked() const { return m_questions.asked(); }
    int reports() const { return m_onlooker.reports(); }

private:
    void letTimePass(Dice &dice);
    void perform(Dice &dice, bool elsewhere);
    void settle();
    bool waitUntil(const std::function<bool()> &condition, double milliseconds);
    void check();
    void checkStall();

    const Stage &m_stage;
    const quint64 m_seed;
    Questions m_questions;
    Onlooker m_onlooker;
    Invariants m_invariants;
    std::vector<std::unique_ptr<Family>> m_families;
    QList<Deed> m_deeds;
};
