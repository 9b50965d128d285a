// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCommandListener.h"

class EventWriter;

/// Writes down commands and answers for as long as it lives. One in a process.
class CommandTap : public KelvoCommandListener
{
public:
    /// The writer is not owned and must outlive this object.
    explicit CommandTap(const EventWriter &writer);

    void commandGiven(const QString &uuid, const char *name, const QVariantList &arguments) override;
    void answerGiven(const QString &uuid, const char *name, const QVariantList &arguments) override;

private:
    const EventWriter &m_writer;
};
