// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QVariant>

typedef struct _GstTagList GstTagList;

/// The facts known about the item in play. GStreamer repeats and completes its tags many times; what comes
/// out of here is only what is new.
class TagCollector
{
public:
    struct Fact
    {
        QString key;
        QList<QVariant> values; ///< never empty
    };

    /// Forgets everything: another item begins.
    void clear() { m_known.clear(); }
    /// Takes in one tag list and gives the facts that it adds or changes.
    QList<Fact> merge(const GstTagList *tags);
    /// Takes in one fact; empty when it was known already or has no values.
    QList<Fact> set(const QString &key, const QList<QVariant> &values);

private:
    void describeCodecs(QList<Fact> &facts);

    QHash<QString, QList<QVariant>> m_known;
};
