// SPDX-License-Identifier: MIT
#pragma once

#include "Verb.h"

/// Plays on a renderer, without a window.
class PlayVerb : public Verb
{
public:
    QString name() const override;
    QString summary() const override;
    QString help() const override;
    int run(const QStringList &arguments) override;
};
