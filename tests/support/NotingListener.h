// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCommandListener.h"
#include "KelvoPlaylist.h"
#include "KelvoRenderer.h"

#include <QStringList>

#include <utility>

/// Notes "uuid name(arguments)", and answers with "=" in front.
class NotingListener : public KelvoCommandListener
{
public:
    void commandGiven(const QString &uuid, const char *name, const QVariantList &arguments) override
    {
        take({}, uuid, name, arguments);
    }
    void answerGiven(const QString &uuid, const char *name, const QVariantList &arguments) override
    {
        take(QStringLiteral("="), uuid, name, arguments);
    }
    QStringList takeHeard() { return std::exchange(m_heard, {}); }

private:
    static QString words(const QVariant &value)
    {
        if (value.metaType() == QMetaType::fromType<KelvoPlaylist *>()) {
            const auto *playlist = value.value<KelvoPlaylist *>();
            return playlist ? playlist->uuid() : QStringLiteral("none");
        }
        if (value.metaType() == QMetaType::fromType<KelvoRenderer::State>())
            return QStringLiteral("state %1").arg(value.toInt());
        return value.toString();
    }
    void take(const QString &sign, const QString &uuid, const char *name, const QVariantList &arguments)
    {
        QStringList texts;
        for (const QVariant &argument : arguments)
            texts.append(words(argument));
        m_heard.append(QStringLiteral("%1%2 %3(%4)")
                           .arg(sign, uuid, QString::fromLatin1(name), texts.join(QLatin1Char(','))));
    }

    QStringList m_heard;
};
