// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QList>
#include <QSet>
#include <QStringList>
#include <QVariant>

typedef struct _GstTagList GstTagList;

/// The facts known about the item in play. GStreamer repeats and completes its tags many times, each stream in its own
/// order: they are collected until somebody takes them, and what comes out then is only what is new.
class TagCollector
{
public:
    struct Fact
    {
        QString key;
        QList<QVariant> values; ///< never empty
    };

    /// Takes in one tag list.
    void merge(const GstTagList *tags);
    /// Takes in one fact; nothing without values.
    void set(const QString &key, const QList<QVariant> &values);
    /// What is new or has changed since the last time: first what people know an item by, whatever the container.
    QList<Fact> takeNews();

private:
    void setText(const QString &key, const QList<QVariant> &values, bool ofContainer);
    void setBitRate(const QString &key, const GstTagList *tags);
    void describeCodecs();

    QHash<QString, QList<QVariant>> m_known;
    QSet<QString> m_ofContainer; ///< keys that the container names, and no stream of its own
    QStringList m_news; ///< keys
    QSet<QString> m_told;
};
