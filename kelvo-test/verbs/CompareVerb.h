// SPDX-License-Identifier: MIT
#pragma once

#include "Verb.h"

/// Names what is different between two recordings of one scenario.
class CompareVerb : public Verb
{
public:
    QString name() const override;
    QString summary() const override;
    QString help() const override;
    int run(const QStringList &arguments) override;
};
