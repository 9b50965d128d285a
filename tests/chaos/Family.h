// SPDX-License-Identifier: MIT
#pragma once

#include "Dice.h"

#include <QList>
#include <QString>

#include <functional>

/// Something that a step may do.
struct Deed
{
    int weight; ///< how often, against the others
    /// Also while a dialog is open: not done by the user of the window.
    enum Place { AtTheWindow, Elsewhere } place;
    std::function<void(Dice &)> act;
};

/// Deeds of one kind, and what they need.
class Family
{
public:
    virtual ~Family() = default;
    Q_DISABLE_COPY_MOVE(Family)

    virtual QList<Deed> deeds() = 0;
    /// What is wrong now; lasting faults only, as it is asked until there are none.
    virtual QStringList faults() { return {}; }
    /// Before the console ends.
    virtual void end() { }

protected:
    Family() = default;
};
