// SPDX-License-Identifier: MIT
#pragma once

#include "Verb.h"

/// Holds a renderer to the contract, and writes the card of what it claims and what it does.
class ConformVerb : public Verb
{
public:
    QString name() const override;
    QString summary() const override;
    QString help() const override;
    int run(const QStringList &arguments) override;
};
