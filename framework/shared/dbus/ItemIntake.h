// SPDX-License-Identifier: MIT
#pragma once

#include "PlaylistProtocol.h"

#include <QSet>

/// Makes the items that another process gives, part by part, fit for use: no more of them than this process takes,
/// each with an id of its own, texts and durations within their bounds.
class ItemIntake
{
public:
    /// How many have been taken.
    qsizetype count() const { return m_count; }

    /// There will be so many, it is said.
    void expect(uint items);
    /// Takes the next items, in place. False when there were too many, and the rest is cut off.
    bool take(SharedItems &items);
    /// There will be no more.
    void end() { m_ids = {}; }

private:
    bool cut(SharedItems &items);
    void repair(SharedItem &item);

    qsizetype m_count = 0;
    qsizetype m_characters = 0;
    QSet<QString> m_ids;
};
