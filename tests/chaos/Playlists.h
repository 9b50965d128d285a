// SPDX-License-Identifier: MIT
#pragma once

#include "Family.h"
#include "Stage.h"

class KelvoPlaylist;

/// Playlists that the user makes and edits, and that other parts of the program publish, fill and withdraw.
class Playlists : public Family
{
public:
    explicit Playlists(const Stage &stage);

    QList<Deed> deeds() override;

private:
    void trigger(Dice &dice) const;
    void removeSelected(Dice &dice) const;
    void publish(Dice &dice);
    void withdraw(Dice &dice) const;
    void fill(Dice &dice) const;
    void edit(Dice &dice) const;
    KelvoPlaylist *anyOfOurs(Dice &dice) const;

    const Stage &m_stage;
    int m_published = 0;
};
