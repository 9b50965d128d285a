// SPDX-License-Identifier: MIT
#pragma once

#include "Family.h"
#include "Stage.h"

#include <QProcess>

#include <memory>

/// Another console on the same bus: this program once more, which makes its steps when it is told to. It is frozen and
/// killed, too.
class SecondConsole : public Family
{
public:
    SecondConsole(const Stage &stage, quint64 seed);
    ~SecondConsole() override;

    QList<Deed> deeds() override;
    void end() override;

private:
    void start();
    void step(int count);
    void freeze();
    void thaw();
    void kill();
    void compare();
    QByteArray ask(const QByteArray &line);
    bool waitFor(const std::function<bool()> &condition) const;

    const Stage &m_stage;
    const quint64 m_seed;
    std::unique_ptr<QProcess> m_process;
    bool m_isFrozen = false;
    int m_started = 0;
    int m_steps = 0;
};
