// SPDX-License-Identifier: MIT
#pragma once

#include "RemoteTransport.h"

#include <QStringList>

#include <functional>

/// A transport that notes what it is told and says what a test lets it say.
class ScriptedTransport : public RemoteTransport
{
    Q_OBJECT
public:
    using RemoteTransport::RemoteTransport;

    Abilities abilities() const override { return can; }
    void load(const Item &item) override
    {
        items.append(item);
        calls.append(QStringLiteral("load ") + item.info.url().toString());
    }
    void unload() override { calls.append(QStringLiteral("unload")); }
    void pause() override { calls.append(QStringLiteral("pause")); }
    void resume() override { calls.append(QStringLiteral("resume")); }
    void seek(double seconds) override { calls.append(QStringLiteral("seek %1").arg(seconds)); }
    void setVolume(int volume) override { calls.append(QStringLiteral("volume %1").arg(volume)); }
    void setRate(double rate) override { calls.append(QStringLiteral("rate %1").arg(rate)); }
    void askPosition() override
    {
        ++polls;
        if (position) {
            QMetaObject::invokeMethod(
                this, [this] { Q_EMIT positionReported(epoch(), position()); }, Qt::QueuedConnection);
        }
    }

    quint64 epoch() const { return items.isEmpty() ? 0 : items.constLast().epoch; }

    Abilities can{true, true, true, 0.5, 2.0};
    QStringList calls; ///< all but the questions for the position
    QList<Item> items;
    int polls = 0;
    std::function<double()> position; ///< answers the questions, if there is one
};
