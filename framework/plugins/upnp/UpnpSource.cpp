// SPDX-License-Identifier: MIT
#include "UpnpSource.h"

#include "KelvoCommandListener.h"
#include "KelvoMessageHandler.h"

#include <utility>

namespace {
constexpr QLatin1String searchKey{"supportQuery"};

/// UPnP has no signing in: everybody who reaches a server is in.
QVariant constantProperty(const QString &key)
{
    if (key == QLatin1String("signIn"))
        return false;
    if (key == QLatin1String("signedIn"))
        return true;
    return {};
}
} // namespace

UpnpSource::UpnpSource(const Upnp::Description &description, QObject *parent)
    : KelvoSource(parent)
    , m_description(description)
{
}

UpnpSource::~UpnpSource() = default;

void UpnpSource::setKelvoProperty(const QString &key, const QVariant &value)
{
    KelvoCommandListener::noteCommand(*this, "setKelvoProperty", key, value);
    qCWarning(lcKelvo) << "A media server has no property" << key << "that can be set";
}

bool UpnpSource::kelvoProperty(const QString &key, QObject *receiver, const char *slot)
{
    KelvoCommandListener::noteCommand(*this, "kelvoProperty", key);
    if (key == searchKey) {
        const KelvoAnswer answer(receiver, slot);
        if (m_canSearch)
            answerSearchable(answer);
        else
            m_waiting.push_back(answer);
        return true;
    }
    const QVariant constant = constantProperty(key);
    const QVariant value = constant.isValid() ? constant : m_description.properties.value(key);
    if (!value.isValid())
        return false;
    KelvoCommandListener::noteAnswer(*this, "kelvoProperty", key, value);
    KelvoAnswer(receiver, slot).deliver({key, QVariant::fromValue(value)});
    return true;
}

void UpnpSource::setSearchable(bool canSearch)
{
    m_canSearch = canSearch;
    for (const KelvoAnswer &answer : std::exchange(m_waiting, {}))
        answerSearchable(answer);
}

void UpnpSource::answerSearchable(const KelvoAnswer &answer) const
{
    KelvoCommandListener::noteAnswer(*this, "kelvoProperty", QString(searchKey), *m_canSearch);
    answer.deliver({QString(searchKey), QVariant::fromValue(QVariant(*m_canSearch))});
}
