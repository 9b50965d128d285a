// SPDX-License-Identifier: MIT
#pragma once

#include "Verb.h"

/// Says in one sentence what keeps a renderer silent, and shows the events that tell it.
class WhyVerb : public Verb
{
public:
    QString name() const override;
    QString summary() const override;
    QString help() const override;
    int run(const QStringList &arguments) override;
};
