// SPDX-License-Identifier: MIT
#include "SeekWishes.h"

#include <utility>

void SeekWishes::beginItem(double speed)
{
    forgetItem();
    m_speed = speed;
}

void SeekWishes::forgetItem()
{
    m_wished.reset();
    m_inFlight.reset();
    m_isWishedOnTheSpot = false;
}

std::optional<qint64> SeekWishes::takeWish()
{
    return std::exchange(m_wished, std::nullopt);
}

void SeekWishes::begin(qint64 position)
{
    m_wished.reset();
    m_isWishedOnTheSpot = false;
    m_inFlight = position;
}
