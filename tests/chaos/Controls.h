// SPDX-License-Identifier: MIT
#pragma once

#include "Family.h"
#include "Stage.h"

/// What the user does to the window: buttons, sliders, boxes, tabs, entries of menus that open no dialog.
class Controls : public Family
{
public:
    explicit Controls(const Stage &stage);

    QList<Deed> deeds() override;

private:
    void press(Dice &dice) const;
    void pressPlay(Dice &dice) const;
    void moveSlider(Dice &dice) const;
    void holdSlider(Dice &dice) const;
    void chooseItem(Dice &dice) const;
    void playFast(Dice &dice) const;
    void trigger(Dice &dice) const;
    void chooseIn(Dice &dice, const char *box) const;
    void chooseRenderer(Dice &dice) const;
    void choosePlaylist(Dice &dice) const;
    void arrangeWindow(Dice &dice) const;
    void closeErrorLog(Dice &dice) const;

    const Stage &m_stage;
};
