// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoAnswer.h"
#include "KelvoSource.h"

#include <QStringList>

/// A source that only writes down what it is told, and knows the properties that a test gives it.
class RecordingSource : public KelvoSource
{
    Q_OBJECT
public:
    RecordingSource(QString uuid, QString name, QStringList knownKeys = {});

    /// "setKelvoProperty(signIn,bool,true)", "kelvoProperty(modelName)" (unknown keys too); cleared when taken.
    QStringList takeCalls();
    /// Answers the oldest request that was not answered yet; false when there is none.
    bool answer(const QVariant &value);

    QString uuid() const override;
    QString name() const override;
    void setKelvoProperty(const QString &key, const QVariant &value) override;
    bool kelvoProperty(const QString &key, QObject *receiver, const char *slot) override;

private:
    QString m_uuid;
    QString m_name;
    QStringList m_knownKeys;
    QStringList m_calls;
    QList<std::pair<QString, KelvoAnswer>> m_answers;
};
