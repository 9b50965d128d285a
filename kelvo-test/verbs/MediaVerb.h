// SPDX-License-Identifier: MIT
#pragma once

#include "Verb.h"

/// Makes media with a clock in them, as files.
class MediaVerb : public Verb
{
public:
    QString name() const override;
    QString summary() const override;
    QString help() const override;
    int run(const QStringList &arguments) override;
};
