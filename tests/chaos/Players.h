// SPDX-License-Identifier: MIT
#pragma once

#include "FakeMprisPlayer.h"
#include "Family.h"
#include "Stage.h"

#include <memory>
#include <vector>

/// Media players on the session bus that come, go, hang and say what does not fit together.
class Players : public Family
{
public:
    explicit Players(const Stage &stage);
    ~Players() override;

    QList<Deed> deeds() override;
    void end() override;

private:
    void come();
    void go(Dice &dice);
    void say(Dice &dice) const;

    const Stage &m_stage;
    std::vector<std::unique_ptr<FakeMprisPlayer>> m_players;
    int m_number = 0;
};
