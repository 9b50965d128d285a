// SPDX-License-Identifier: MIT
#pragma once

#include "HeardSound.h"
#include "SenseWatch.h"

class Ear;

/// What a renderer says, and what is heard of it.
class SoundWatch : public SenseWatch
{
    Q_OBJECT
public:
    /// Neither is owned. The ear outlives this; the renderer may go meanwhile.
    SoundWatch(KelvoRenderer *renderer, const Ear *ear, QObject *parent = nullptr);

    void begin() override;
    std::optional<First> first() const override;
    bool hasGoneOn() const override;
    bool isAtRest() override { return sound().isAtRest(); }
    /// Silence.
    std::optional<Measured> restedAt() override { return sound().silence(); }
    std::optional<Measured> position() override { return sound().position(); }
    std::optional<Measured> wentOnAwayFrom(double place) const override;
    std::optional<Change> changeTo(int item) override;
    QString doubt() override { return sound().doubt(); }

    /// As of now.
    const HeardSound &sound();

private:
    void take(const Hearing &hearing);
    std::optional<Hearing> find(const std::function<bool(const Hearing &)> &is) const;

    QList<Hearing> m_heard; ///< since the command, times after that
    const double m_clockError; ///< seconds
    HeardSound m_sound;
};
