// SPDX-License-Identifier: MIT
#pragma once

#include "Verb.h"

/// Makes a page, or a file for a trace viewer, of a recording.
class ReportVerb : public Verb
{
public:
    QString name() const override;
    QString summary() const override;
    QString help() const override;
    int run(const QStringList &arguments) override;
};
