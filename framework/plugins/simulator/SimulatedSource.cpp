// SPDX-License-Identifier: MIT
#include "SimulatedSource.h"

#include "KelvoAnswer.h"
#include "KelvoCommandListener.h"
#include "KelvoMessageHandler.h"

namespace {
const QLatin1String signIn("signIn");
const QLatin1String signedIn("signedIn");

QHash<QString, QVariant> description(const QString &name)
{
    return {
        {QStringLiteral("deviceType"), QStringLiteral("urn:schemas-upnp-org:device:MediaServer:1")},
        {QStringLiteral("manufacturer"), QStringLiteral("Simulator")},
        {QStringLiteral("manufacturerURL"), QStringLiteral("http://manufacturer.invalid/")},
        {QStringLiteral("modelDescription"), QStringLiteral("A source without content")},
        {QStringLiteral("modelName"), name},
        {QStringLiteral("modelNumber"), QStringLiteral("1")},
        {QStringLiteral("modelURL"), QStringLiteral("http://manufacturer.invalid/model")},
        {QStringLiteral("serialNumber"), QStringLiteral("0000001")},
        {QStringLiteral("presentationURL"), QStringLiteral("http://device.invalid/")},
        {QStringLiteral("universalProductCode"), QStringLiteral("000000000000")},
        {QStringLiteral("iconURL"), QStringLiteral("http://device.invalid/icon.png")},
        {QStringLiteral("supportQuery"), false},
        {signIn, true},
        {signedIn, false},
    };
}
} // namespace

SimulatedSource::SimulatedSource(
    const QString &uuid, const QString &name, const QStringList &refused, QObject *parent)
    : KelvoSource(parent)
    , m_uuid(uuid)
    , m_name(name)
    , m_properties(description(name))
{
    for (const QString &key : refused)
        m_properties.remove(key);
}

void SimulatedSource::setKelvoProperty(const QString &key, const QVariant &value)
{
    KelvoCommandListener::noteCommand(*this, "setKelvoProperty", key, value);
    if (key != signIn || value.typeId() != QMetaType::Bool) {
        qCWarning(lcKelvo) << "source" << m_name << "cannot set" << key << "to" << value;
        return;
    }
    m_properties[signedIn] = value;
}

bool SimulatedSource::kelvoProperty(const QString &key, QObject *receiver, const char *slot)
{
    KelvoCommandListener::noteCommand(*this, "kelvoProperty", key);
    const auto property = m_properties.constFind(key);
    if (property == m_properties.cend())
        return false;
    KelvoCommandListener::noteAnswer(*this, "kelvoProperty", key, *property);
    KelvoAnswer(receiver, slot).deliver({key, *property});
    return true;
}
