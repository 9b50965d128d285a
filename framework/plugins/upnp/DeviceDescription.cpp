// SPDX-License-Identifier: MIT
#include "DeviceDescription.h"

#include "RemoteUrl.h"
#include "UpnpText.h"

namespace {
QString take(char *text)
{
    const GlibHandles::Text owner(text);
    return UpnpText::cleaned(QString::fromUtf8(text));
}

/// Whoever shows these may open them, so they lead to the web or are left out.
QString web(const QString &url)
{
    return RemoteUrl::isWeb(QUrl(url)) ? url : QString();
}

QString iconUrl(GUPnPDeviceInfo *device)
{
    // The results stay as they are when there is no icon.
    char *mimeType = nullptr;
    int depth = 0;
    int width = 0;
    int height = 0;
    QString url = take(gupnp_device_info_get_icon_url(
        device, nullptr, -1, -1, -1, TRUE, &mimeType, &depth, &width, &height));
    g_free(mimeType);
    return url;
}

QHash<QString, QVariant> sourceProperties(GUPnPDeviceInfo *device)
{
    const QList<QPair<const char *, QString>> texts = {
        {"deviceType", QString::fromUtf8(gupnp_device_info_get_device_type(device))},
        {"manufacturer", take(gupnp_device_info_get_manufacturer(device))},
        {"manufacturerURL", web(take(gupnp_device_info_get_manufacturer_url(device)))},
        {"modelDescription", take(gupnp_device_info_get_model_description(device))},
        {"modelName", take(gupnp_device_info_get_model_name(device))},
        {"modelNumber", take(gupnp_device_info_get_model_number(device))},
        {"modelURL", web(take(gupnp_device_info_get_model_url(device)))},
        {"serialNumber", take(gupnp_device_info_get_serial_number(device))},
        {"presentationURL", web(take(gupnp_device_info_get_presentation_url(device)))},
        {"universalProductCode", take(gupnp_device_info_get_upc(device))},
        {"iconURL", web(iconUrl(device))},
    };
    QHash<QString, QVariant> properties;
    for (const auto &[key, text] : texts) {
        if (!text.isEmpty())
            properties.insert(QLatin1String(key), text);
    }
    return properties;
}

/// GUPnP does not survive an address that libsoup cannot send to.
bool canSend(char *address)
{
    const GlibHandles::Text owner(address);
    const bool isWeb = RemoteUrl::isWeb(QUrl(QString::fromUtf8(address)));
    return isWeb && GlibHandles::Object<SoupMessage>(soup_message_new("POST", address));
}

const char *typeOf(Upnp::Service service)
{
    switch (service) {
    case Upnp::Service::AVTransport:
        return "urn:schemas-upnp-org:service:AVTransport";
    case Upnp::Service::RenderingControl:
        return "urn:schemas-upnp-org:service:RenderingControl";
    case Upnp::Service::ContentDirectory:
        return "urn:schemas-upnp-org:service:ContentDirectory";
    case Upnp::Service::ConnectionManager:
        break;
    }
    return "urn:schemas-upnp-org:service:ConnectionManager";
}
} // namespace

Upnp::Description DeviceDescription::read(GUPnPDeviceInfo *device, Upnp::Kind kind)
{
    Upnp::Description description;
    description.key = {kind, QString::fromUtf8(gupnp_device_info_get_udn(device)).trimmed()};
    description.name = take(gupnp_device_info_get_friendly_name(device));
    if (description.name.isEmpty())
        description.name = take(gupnp_device_info_get_model_name(device));
    if (description.name.isEmpty())
        description.name = description.key.udn;
    description.address = QUrl(QString::fromUtf8(gupnp_device_info_get_location(device)));
    if (kind == Upnp::Kind::Source)
        description.properties = sourceProperties(device);
    return description;
}

GlibHandles::Object<GUPnPServiceProxy> DeviceDescription::service(
    GUPnPDeviceInfo *device, Upnp::Service service)
{
    GUPnPServiceInfo *info = gupnp_device_info_get_service(device, typeOf(service));
    GlibHandles::Object<GUPnPServiceProxy> proxy(info ? GUPNP_SERVICE_PROXY(info) : nullptr);
    return info && canSend(gupnp_service_info_get_control_url(info)) ? std::move(proxy) : nullptr;
}

bool DeviceDescription::sendsEvents(GUPnPServiceProxy *service)
{
    return canSend(gupnp_service_info_get_event_subscription_url(GUPNP_SERVICE_INFO(service)));
}

bool DeviceDescription::isDescribed(GUPnPServiceProxy *service)
{
    return canSend(gupnp_service_info_get_scpd_url(GUPNP_SERVICE_INFO(service)));
}

QString DeviceDescription::authority(GUPnPDeviceInfo *device)
{
    return QUrl(QString::fromUtf8(gupnp_device_info_get_location(device))).authority();
}
