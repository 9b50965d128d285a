// SPDX-License-Identifier: MIT
#include "LastChange.h"

#include "Didl.h"
#include "GupnpHandles.h"
#include "KelvoMessageHandler.h"
#include "UpnpText.h"

#include <libgupnp-av/gupnp-av.h>

#include <array>

namespace {
// Bytes. An event that is longer says nothing that would be worth its time.
constexpr qsizetype longestEvent = 300'000;
} // namespace

Upnp::Report LastChange::parse(const QByteArray &xml)
{
    if (xml.size() > longestEvent) {
        qCDebug(lcKelvo) << "A renderer's event is too long:" << xml.size() << "bytes";
        Upnp::Report unread;
        unread.isUnreadable = true;
        return unread;
    }
    const GlibHandles::Object<GUPnPLastChangeParser> parser(gupnp_last_change_parser_new());
    constexpr std::array names = {"TransportState", "TransportStatus", "AVTransportURI", "CurrentTrackURI",
        "CurrentTrackDuration", "CurrentTransportActions", "TransportPlaySpeed", "Volume", "Mute"};
    std::array<char *, names.size()> texts = {};
    char *metadata = nullptr;
    GlibHandles::Error error;
    static_assert(names.size() == 9);
    const bool isRead
        = gupnp_last_change_parser_parse_last_change(parser.get(), 0, xml.constData(), error.out(), names[0],
            G_TYPE_STRING, &texts[0], names[1], G_TYPE_STRING, &texts[1], names[2], G_TYPE_STRING, &texts[2],
            names[3], G_TYPE_STRING, &texts[3], names[4], G_TYPE_STRING, &texts[4], names[5], G_TYPE_STRING,
            &texts[5], names[6], G_TYPE_STRING, &texts[6], names[7], G_TYPE_STRING, &texts[7], names[8],
            G_TYPE_STRING, &texts[8], "CurrentTrackMetaData", G_TYPE_STRING, &metadata, nullptr);
    Upnp::Report report;
    report.isUnreadable = !isRead;
    for (size_t i = 0; i < names.size(); ++i) {
        if (texts[i])
            report.values.insert(names[i], UpnpText::cleaned(QString::fromUtf8(texts[i])));
        g_free(texts[i]);
    }
    if (metadata)
        report.track = Didl::parse(QString::fromUtf8(metadata));
    g_free(metadata);
    if (!isRead)
        qCDebug(lcKelvo) << "A renderer's event cannot be read:" << (error ? error->message : "");
    return report;
}
