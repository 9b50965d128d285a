// SPDX-License-Identifier: MIT
#include "CommandTap.h"

#include "EventWriter.h"

CommandTap::CommandTap(const EventWriter &writer)
    : m_writer(writer)
{
    install(this);
}

void CommandTap::commandGiven(const QString &uuid, const char *name, const QVariantList &arguments)
{
    m_writer.note(uuid, "command", name, arguments);
}

void CommandTap::answerGiven(const QString &uuid, const char *name, const QVariantList &arguments)
{
    m_writer.note(uuid, "answer", name, arguments);
}
