// SPDX-License-Identifier: MIT
#pragma once

#include "Family.h"
#include "Stage.h"

/// Dialogs: opened, worked with while the world goes on, and closed in one way or another.
class Dialogs : public Family
{
public:
    explicit Dialogs(const Stage &stage);

    QList<Deed> deeds() override;

private:
    void open(Dice &dice) const;
    void attendTo(QDialog *dialog, Dice &dice) const;
    void workWith(QDialog *dialog, Dice &dice) const;
    void close(QDialog *dialog, Dice &dice) const;
    void playUri(Dice &dice) const;

    const Stage &m_stage;
};
