// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

/// Chance of one step: the same for the same seed and step, whatever other steps drew.
class Dice
{
public:
    Dice(quint64 seed, quint64 step);

    /// 0 to count - 1; count is at least 1.
    int below(int count);
    /// Both included.
    int between(int least, int greatest) { return least + below(greatest - least + 1); }
    bool chance(int percent) { return below(100) < percent; }
    /// The list must not be empty.
    template <typename List> auto oneOf(const List &list)
    {
        return *(std::begin(list) + below(int(std::size(list))));
    }

private:
    quint64 next();

    quint64 m_state;
};
