// SPDX-License-Identifier: MIT
#pragma once

#include "Verb.h"

/// Shows what is there: renderers, sources, playlists, and the back ends with their state.
class ListVerb : public Verb
{
public:
    QString name() const override;
    QString summary() const override;
    QString help() const override;
    int run(const QStringList &arguments) override;
};
