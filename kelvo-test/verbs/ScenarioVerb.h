// SPDX-License-Identifier: MIT
#pragma once

#include "Verb.h"

/// Makes a scenario of a recording.
class ScenarioVerb : public Verb
{
public:
    QString name() const override;
    QString summary() const override;
    QString help() const override;
    int run(const QStringList &arguments) override;
};
