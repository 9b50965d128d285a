// SPDX-License-Identifier: MIT
#include "Dice.h"

namespace {
// The numbers of SplitMix64, which is the same on every machine.
constexpr quint64 increment = 0x9E3779B97F4A7C15;

quint64 mixed(quint64 number)
{
    number = (number ^ (number >> 30)) * 0xBF58476D1CE4E5B9;
    number = (number ^ (number >> 27)) * 0x94D049BB133111EB;
    return number ^ (number >> 31);
}
} // namespace

Dice::Dice(quint64 seed, quint64 step)
    : m_state(mixed(seed * increment) + step * increment)
{
}

quint64 Dice::next()
{
    m_state += increment;
    return mixed(m_state);
}

int Dice::below(int count)
{
    return int(next() % quint64(count));
}
