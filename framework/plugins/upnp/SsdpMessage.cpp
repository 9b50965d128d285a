// SPDX-License-Identifier: MIT
#include "SsdpMessage.h"

SsdpMessage SsdpMessage::of(SoupMessageHeaders *headers)
{
    const auto header = [headers](const char *name) {
        return QByteArray(soup_message_headers_get_one(headers, name)).trimmed();
    };
    const QByteArray name = header("USN");
    const QByteArray subtype = header("NTS");
    SsdpMessage message;
    message.udn = QString::fromUtf8(name.left(name.indexOf("::"))).trimmed();
    if (subtype == "ssdp:byebye")
        message.type = Byebye;
    else if (subtype == "ssdp:update")
        message.type = Update;
    if (message.type != Byebye)
        message.location = QString::fromUtf8(header("Location"));
    message.bootId = header("BOOTID.UPNP.ORG");
    message.configId = header("CONFIGID.UPNP.ORG");
    return message;
}
