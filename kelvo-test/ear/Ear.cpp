// SPDX-License-Identifier: MIT
#include "Ear.h"

Ear::Ear(QObject *parent)
    : QObject(parent)
    , m_program(QStringLiteral("kelvo-ear"), QByteArrayLiteral("listening"))
{
    connect(&m_mute, &MuteWatch::changed, this, &Ear::takeMute);
    connect(&m_program, &SenseProgram::ready, this, &Ear::ready);
    connect(&m_program, &SenseProgram::measured, this, [this](const QByteArray &line) {
        const std::optional<Hearing> hearing = Hearing::ofLine(line);
        if (hearing && !m_isMuted)
            Q_EMIT heard(*hearing);
    });
    connect(&m_program, &SenseProgram::failed, this, [this](const QString &problem) {
        tellFailure(problem);
        Q_EMIT failed();
    });
}

void Ear::listen(const QString &device)
{
    m_program.start({device});
    m_mute.watch(device);
}

void Ear::takeMute(bool muted)
{
    m_isMuted = muted;
    if (muted)
        tellFailure(QStringLiteral("the source that is listened to is muted"));
}

void Ear::tellFailure(const QString &doubt)
{
    Hearing last;
    last.kind = Hearing::Fails;
    last.at = now();
    last.doubt = doubt;
    Q_EMIT heard(last);
}
