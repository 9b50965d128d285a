// SPDX-License-Identifier: MIT
#include "Didl.h"

#include "GupnpHandles.h"
#include "KelvoMessageHandler.h"
#include "UpnpText.h"

#include <QMimeDatabase>

#include <libgupnp-av/gupnp-av.h>

namespace {
using Writer = GlibHandles::Object<GUPnPDIDLLiteWriter>;
using Item = GlibHandles::Object<GUPnPDIDLLiteItem>;
using Resource = GlibHandles::Object<GUPnPDIDLLiteResource>;
using Protocol = GlibHandles::Object<GUPnPProtocolInfo>;

// A text longer than this is no description of one item.
constexpr qsizetype longestDidl = 200'000;
// Seconds. What claims to be longer is not known.
constexpr long longestDuration = 1'000'000'000;

QByteArray utf8(const QString &text)
{
    return UpnpText::cleaned(text).toUtf8();
}

QString text(const char *utf8)
{
    return UpnpText::cleaned(QString::fromUtf8(utf8));
}

QString mimeTypeOf(const KelvoMediaInfo &info, const QString &uri)
{
    if (!info.mimeType().isEmpty())
        return info.mimeType();
    const QMimeType type = QMimeDatabase().mimeTypeForFile(QUrl(uri).path(), QMimeDatabase::MatchExtension);
    return type.isDefault() ? QString() : type.name();
}

const char *classOf(const QString &mimeType)
{
    if (mimeType.startsWith(QLatin1String("video/")))
        return "object.item.videoItem";
    if (mimeType.startsWith(QLatin1String("image/")))
        return "object.item.imageItem.photo";
    return "object.item.audioItem.musicTrack";
}

void addResource(GUPnPDIDLLiteObject *object, const QString &uri, const QString &mimeType, int duration)
{
    const Resource resource(gupnp_didl_lite_object_add_resource(object));
    const Protocol protocol(gupnp_protocol_info_new());
    const bool isHttp = uri.startsWith(QLatin1String("http"));
    gupnp_protocol_info_set_protocol(protocol.get(), isHttp ? "http-get" : "internal");
    gupnp_protocol_info_set_network(protocol.get(), "*");
    gupnp_protocol_info_set_mime_type(
        protocol.get(), mimeType.isEmpty() ? "*" : mimeType.toUtf8().constData());
    gupnp_didl_lite_resource_set_protocol_info(resource.get(), protocol.get());
    gupnp_didl_lite_resource_set_uri(resource.get(), uri.toUtf8().constData());
    if (duration > 0)
        gupnp_didl_lite_resource_set_duration(resource.get(), duration);
}

void readResource(GUPnPDIDLLiteObject *object, Upnp::Track *track)
{
    GList *resources = gupnp_didl_lite_object_get_resources(object);
    if (resources) {
        auto *first = static_cast<GUPnPDIDLLiteResource *>(resources->data);
        const long duration = gupnp_didl_lite_resource_get_duration(first);
        track->duration = duration > 0 && duration <= longestDuration ? double(duration) : -1;
        if (GUPnPProtocolInfo *protocol = gupnp_didl_lite_resource_get_protocol_info(first))
            track->mimeType = text(gupnp_protocol_info_get_mime_type(protocol));
    }
    g_list_free_full(resources, g_object_unref);
}

// The first one counts.
void readObject(GUPnPDIDLLiteParser *, GUPnPDIDLLiteObject *object, void *result)
{
    auto *found = static_cast<std::optional<Upnp::Track> *>(result);
    if (found->has_value())
        return;
    Upnp::Track track;
    track.title = text(gupnp_didl_lite_object_get_title(object));
    track.artist = text(gupnp_didl_lite_object_get_artist(object));
    if (track.artist.isEmpty())
        track.artist = text(gupnp_didl_lite_object_get_creator(object));
    track.album = text(gupnp_didl_lite_object_get_album(object));
    track.genre = text(gupnp_didl_lite_object_get_genre(object));
    track.cover = text(gupnp_didl_lite_object_get_album_art(object));
    readResource(object, &track);
    *found = track;
}
} // namespace

QString Didl::write(const KelvoMediaInfo &info, const QString &uri)
{
    const Writer writer(gupnp_didl_lite_writer_new(nullptr));
    const Item item(gupnp_didl_lite_writer_add_item(writer.get()));
    GUPnPDIDLLiteObject *object = GUPNP_DIDL_LITE_OBJECT(item.get());
    const QString mimeType = mimeTypeOf(info, uri);
    // A file of this computer has another name where the device fetches it.
    const QString name = info.url().isEmpty() ? QUrl(uri).fileName() : info.url().fileName();
    const QString title = info.title().isEmpty() ? name : info.title();
    gupnp_didl_lite_object_set_id(object, "1");
    gupnp_didl_lite_object_set_parent_id(object, "-1");
    gupnp_didl_lite_object_set_restricted(object, TRUE);
    // Some devices refuse an item without a title.
    gupnp_didl_lite_object_set_title(object, title.isEmpty() ? "-" : utf8(title).constData());
    gupnp_didl_lite_object_set_upnp_class(object, classOf(mimeType));
    if (!info.artist().isEmpty()) {
        gupnp_didl_lite_object_set_creator(object, utf8(info.artist()).constData());
        gupnp_didl_lite_object_set_artist(object, utf8(info.artist()).constData());
    }
    if (!info.album().isEmpty())
        gupnp_didl_lite_object_set_album(object, utf8(info.album()).constData());
    addResource(object, uri, mimeType, info.duration());
    const GlibHandles::Text didl(gupnp_didl_lite_writer_get_string(writer.get()));
    return QString::fromUtf8(didl.get());
}

std::optional<Upnp::Track> Didl::parse(const QString &text)
{
    std::optional<Upnp::Track> track;
    if (text.size() > longestDidl)
        qCDebug(lcKelvo) << "Metadata that is too long:" << text.size() << "characters";
    if (text.size() > longestDidl || !text.contains(QLatin1Char('<')))
        return track;
    const GlibHandles::Object<GUPnPDIDLLiteParser> parser(gupnp_didl_lite_parser_new());
    g_signal_connect(parser.get(), "object-available", G_CALLBACK(readObject), &track);
    GlibHandles::Error error;
    if (!gupnp_didl_lite_parser_parse_didl(
            parser.get(), UpnpText::cleaned(text, longestDidl).toUtf8().constData(), error.out()))
        qCDebug(lcKelvo) << "Metadata that cannot be read:" << (error ? error->message : "");
    return track;
}
