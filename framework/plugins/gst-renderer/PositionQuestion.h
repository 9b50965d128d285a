// SPDX-License-Identifier: MIT
#pragma once

#include "Engine.h"
#include "KelvoAnswer.h"

#include <QObject>

#include <utility>

/// One question for the position on its way to the engine thread and back; goes with its answer.
class PositionQuestion : public QObject
{
    Q_OBJECT
public:
    PositionQuestion(Engine::PositionAnswer answer, QObject *parent)
        : QObject(parent)
        , m_answer(std::move(answer))
    {
    }

    /// What is to be answered, on any thread, as the property "position".
    KelvoAnswer answer() { return {this, "take(QString,QVariant)"}; }

public Q_SLOTS:
    void take(const QString &, const QVariant &seconds)
    {
        m_answer(seconds.toDouble());
        deleteLater();
    }

private:
    const Engine::PositionAnswer m_answer;
};
