// SPDX-License-Identifier: MIT
// What a device of the network tells of itself.
#include "DescriptionXml.h"
#include "DeviceDescription.h"
#include "FuzzSupport.h"

#include <libxml/parser.h>

namespace {
using Device = GlibHandles::Object<GUPnPDeviceInfo>;

/// A device as it was described before; its UDN is that of the seeds.
Device knownDevice()
{
    GlibHandles::Error error;
    const GlibHandles::Object<GUPnPContext> context(
        gupnp_context_new_full("lo", nullptr, 0, GSSDP_UDA_VERSION_1_0, error.out()));
    Fuzz::require(context != nullptr);
    const QByteArray text = "<root><device><UDN>uuid:f</UDN></device></root>";
    xmlDoc *xml = xmlReadMemory(text.constData(), int(text.size()), nullptr, nullptr, XML_PARSE_NONET);
    const GlibHandles::Object<GUPnPXMLDoc> document(gupnp_xml_doc_new(xml));
    const char *location = "http://127.0.0.1:49152/description.xml";
    GUri *base = g_uri_parse(location, G_URI_FLAGS_NONE, nullptr);
    Device device(GUPNP_DEVICE_INFO(
        g_object_new(GUPNP_TYPE_DEVICE_PROXY, "resource-factory", gupnp_resource_factory_get_default(),
            "context", context.get(), "location", location, "udn", "uuid:f", "url-base", base, "document",
            document.get(), "element", xmlDocGetRootElement(xml)->children, nullptr)));
    g_uri_unref(base);
    return device;
}

void readServices(GUPnPDeviceInfo *device)
{
    using Upnp::Service;
    for (const Service kind : {Service::AVTransport, Service::RenderingControl, Service::ContentDirectory,
             Service::ConnectionManager}) {
        if (const auto service = DeviceDescription::service(device, kind)) {
            DeviceDescription::sendsEvents(service.get());
            DeviceDescription::isDescribed(service.get());
        }
    }
}
} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const Device known = knownDevice();
    const Device device = DescriptionXml::device(Fuzz::bytes(data, size), known.get());
    if (!device)
        return 0;
    for (const Upnp::Kind kind : {Upnp::Kind::Renderer, Upnp::Kind::Source}) {
        const Upnp::Description description = DeviceDescription::read(device.get(), kind);
        Fuzz::require(!description.name.isEmpty() && Fuzz::isClean(description.name));
    }
    readServices(device.get());
    return 0;
}
