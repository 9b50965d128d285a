// SPDX-License-Identifier: MIT
#include "TrackerSource.h"

#include "KelvoAnswer.h"
#include "KelvoCommandListener.h"
#include "KelvoMessageHandler.h"
#include "KelvoTrackerStore.h"

TrackerSource::TrackerSource(QObject *parent)
    : KelvoSource(parent)
    , m_properties{
          {QStringLiteral("deviceType"), QStringLiteral("Local metadata store")},
          {QStringLiteral("manufacturer"), QStringLiteral("Kelvo")},
          {QStringLiteral("modelName"), QStringLiteral("Tracker store")},
          {QStringLiteral("modelNumber"), QStringLiteral(KELVO_VERSION)},
          {QStringLiteral("modelDescription"),
              QStringLiteral("Songs, videos and playlists of this computer, in %1")
                  .arg(KelvoTrackerStore::instance()->folder())},
          {QStringLiteral("supportQuery"), true},
      }
{
}

QString TrackerSource::uuid() const
{
    return QStringLiteral("KelvoTrackerSource");
}

QString TrackerSource::name() const
{
    return QStringLiteral("KelvoTrackerSource");
}

void TrackerSource::setKelvoProperty(const QString &key, const QVariant &value)
{
    KelvoCommandListener::noteCommand(*this, "setKelvoProperty", key, value);
    qCWarning(lcKelvo) << "The tracker source has no property" << key << "that can be set";
}

bool TrackerSource::kelvoProperty(const QString &key, QObject *receiver, const char *slot)
{
    KelvoCommandListener::noteCommand(*this, "kelvoProperty", key);
    const auto property = m_properties.constFind(key);
    if (property == m_properties.constEnd())
        return false;
    KelvoCommandListener::noteAnswer(*this, "kelvoProperty", key, *property);
    KelvoAnswer(receiver, slot).deliver({key, QVariant::fromValue(*property)});
    return true;
}
