// SPDX-License-Identifier: MIT
#pragma once

#include "Verb.h"

/// Runs scenarios on renderers, and tells which held.
class RunVerb : public Verb
{
public:
    QString name() const override;
    QString summary() const override;
    QString help() const override;
    int run(const QStringList &arguments) override;
};
