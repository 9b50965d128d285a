// SPDX-License-Identifier: MIT
#include "Eye.h"

Eye::Eye(QObject *parent)
    : QObject(parent)
    , m_program(QStringLiteral("kelvo-eye"), QByteArrayLiteral("looking"))
{
    connect(&m_program, &SenseProgram::ready, this, [this](const QByteArray &window) {
        m_window = window.toUInt();
        Q_EMIT ready();
    });
    connect(&m_program, &SenseProgram::measured, this, [this](const QByteArray &line) {
        if (const std::optional<Sighting> sighting = Sighting::ofLine(line))
            tell(*sighting);
    });
    connect(&m_program, &SenseProgram::failed, this, [this](const QString &problem) {
        Sighting end;
        end.kind = Sighting::Fails;
        end.at = now();
        end.doubt = problem;
        tell(end);
        Q_EMIT failed();
    });
}

void Eye::tell(const Sighting &sighting)
{
    m_last = sighting;
    Q_EMIT seen(sighting);
}
