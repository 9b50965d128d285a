// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <libsoup/soup.h>

/// What a device sends to all by SSDP (NOTIFY), or answers to a search. Empty texts: not said.
struct SsdpMessage
{
    enum Type {
        Alive, ///< ssdp:alive, or the answer to a search
        Update, ///< ssdp:update: tells of a coming change
        Byebye, ///< ssdp:byebye
    };

    Type type = Alive;
    QString udn = {};
    QString location = {}; ///< of its description; empty in a byebye
    QByteArray bootId = {}; ///< BOOTID.UPNP.ORG: another one after each start
    QByteArray configId = {}; ///< CONFIGID.UPNP.ORG: another one with each change of the description

    /// Without a UDN when the message names none.
    static SsdpMessage of(SoupMessageHeaders *headers);
};
