// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCoreGlobal.h"

#include <QString>
#include <QVariantList>

#include <atomic>
#include <utility>

/// Hears of every command that the objects of the boundary are given, and of every answer they give: what no signal
/// tells. There is one in a process, or none.
///
/// Commands are noted by who receives them. ItemRenderer does so for all renderers that are made of it; a renderer that
/// derives from KelvoRenderer directly notes each command where it enters, by its own name and with its arguments, and
/// each answer where it is given:
///
///     KelvoCommandListener::noteCommand(*this, "setPosition", seconds, mode);
///     KelvoCommandListener::noteAnswer(*this, "getPosition", position);
///
/// While nobody listens a note costs the reading of one variable. Any thread, commands of one object in their order.
class KELVO_CORE_EXPORT KelvoCommandListener
{
public:
    /// Ends listening when this is the one that listens.
    virtual ~KelvoCommandListener();

    /// @param uuid  of the renderer, source or playlist
    /// @param name  of the operation, as the boundary has it
    virtual void commandGiven(const QString &uuid, const char *name, const QVariantList &arguments) = 0;
    /// @param arguments  what the slot of the caller is given
    virtual void answerGiven(const QString &uuid, const char *name, const QVariantList &arguments) = 0;

    /// Who listens from now on, in the place of whoever did; null: nobody. Not owned. GUI thread.
    static void install(KelvoCommandListener *listener);

    /// Something of the boundary was told to do something. Of objects that tell their uuid, which is asked for only
    /// while somebody listens.
    template <typename Object, typename... Arguments>
    static void noteCommand(const Object &object, const char *name, Arguments &&...arguments)
    {
        if (KelvoCommandListener *listener = s_installed.load(std::memory_order_acquire))
            listener->commandGiven(object.uuid(), name, listOf(std::forward<Arguments>(arguments)...));
    }
    /// Something of the boundary gave an answer, told in the same way.
    template <typename Object, typename... Arguments>
    static void noteAnswer(const Object &object, const char *name, Arguments &&...arguments)
    {
        if (KelvoCommandListener *listener = s_installed.load(std::memory_order_acquire))
            listener->answerGiven(object.uuid(), name, listOf(std::forward<Arguments>(arguments)...));
    }

protected:
    KelvoCommandListener() = default;
    Q_DISABLE_COPY_MOVE(KelvoCommandListener)

private:
    template <typename... Arguments> static QVariantList listOf(Arguments &&...arguments)
    {
        return {QVariant::fromValue(std::forward<Arguments>(arguments))...};
    }

    static std::atomic<KelvoCommandListener *> s_installed;
};
