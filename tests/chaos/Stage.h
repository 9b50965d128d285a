// SPDX-License-Identifier: MIT
#pragma once

#include "ConsoleFixture.h"
#include "DialogHand.h"
#include "Dice.h"
#include "Journal.h"
#include "KelvoRegistry.h"
#include "StallMeter.h"

/// What the deeds act on.
struct Stage
{
    Journal &journal;
    StallMeter &meter;
    ConsoleFixture &console;
    DialogHand &hand;
    /// Does something that can happen while a dialog is open.
    std::function<void(Dice &)> meanwhile;

    template <typename T> T *find(const char *name) const
    {
        auto *widget = console.find<T>(name);
        Q_ASSERT(widget);
        return widget;
    }
    KelvoRegistry *registry() const { return KelvoRegistry::instance(); }
    /// Writing it may take its time.
    void say(const QString &text) const
    {
        meter.leaveOut([&] { journal.say(text); });
    }
};
