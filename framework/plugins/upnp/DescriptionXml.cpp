// SPDX-License-Identifier: MIT
#include "DescriptionXml.h"

#include <libxml/parser.h>

namespace {
QByteArray textOf(const xmlNode *node)
{
    xmlChar *text = xmlNodeGetContent(node);
    QByteArray copy = QByteArray(reinterpret_cast<const char *>(text)).trimmed();
    xmlFree(text);
    return copy;
}

bool isElement(const xmlNode *node, const char *name)
{
    return node->type == XML_ELEMENT_NODE && xmlStrEqual(node->name, reinterpret_cast<const xmlChar *>(name));
}

bool isDevice(const xmlNode *node, const QByteArray &udn)
{
    if (!isElement(node, "device"))
        return false;
    for (const xmlNode *child = node->children; child; child = child->next) {
        if (isElement(child, "UDN"))
            return textOf(child) == udn;
    }
    return false;
}

/// Devices may hold devices; libxml2 limits how deep.
xmlNode *findDevice(xmlNode *first, const QByteArray &udn)
{
    for (xmlNode *node = first; node; node = node->next) {
        if (isDevice(node, udn))
            return node;
        if (xmlNode *inner = node->type == XML_ELEMENT_NODE ? findDevice(node->children, udn) : nullptr)
            return inner;
    }
    return nullptr;
}
} // namespace

GlibHandles::Object<GUPnPDeviceInfo> DescriptionXml::device(const QByteArray &text, GUPnPDeviceInfo *known)
{
    xmlDoc *xml = xmlReadMemory(text.constData(), int(text.size()), nullptr, nullptr, XML_PARSE_NONET);
    if (!xml)
        return nullptr;
    const GlibHandles::Object<GUPnPXMLDoc> document(gupnp_xml_doc_new(xml)); // takes the XML over
    const char *udn = gupnp_device_info_get_udn(known);
    xmlNode *element = findDevice(xmlDocGetRootElement(xml), QByteArray(udn).trimmed());
    if (!element)
        return nullptr;
    return GlibHandles::Object<GUPnPDeviceInfo>(
        GUPNP_DEVICE_INFO(g_object_new(GUPNP_TYPE_DEVICE_PROXY, "resource-factory",
            gupnp_resource_factory_get_default(), "context", gupnp_device_info_get_context(known), "location",
            gupnp_device_info_get_location(known), "udn", udn, "url-base",
            gupnp_device_info_get_url_base(known), "document", document.get(), "element", element, nullptr)));
}
