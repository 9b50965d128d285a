// SPDX-License-Identifier: MIT
#include "FileHost.h"

#include "FileTransfer.h"
#include "OpenFile.h"
#include "ServerGuard.h"

#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QUrl>

#include <libsoup/soup.h>

#include <algorithm>
#include <array>

namespace {
constexpr size_t maxTransfers = 16; // of one file at a time

QByteArray unguessable()
{
    std::array<quint32, 4> bits = {};
    QRandomGenerator::system()->fillRange(bits.data(), qsizetype(bits.size()));
    return QByteArray(reinterpret_cast<const char *>(bits.data()), sizeof bits).toHex();
}

/// Players tell media apart by it; what is no plain word would need escaping.
QByteArray suffixOf(const QString &file)
{
    static const QRegularExpression word(QStringLiteral("^[A-Za-z0-9]{1,8}$"));
    const QString suffix = QFileInfo(file).suffix();
    return word.match(suffix).hasMatch() ? '.' + suffix.toLatin1() : QByteArray();
}

QString addressOf(GUPnPContext *context)
{
    const QString host = QString::fromUtf8(gssdp_client_get_host_ip(GSSDP_CLIENT(context)));
    return QStringLiteral("http://%1:%2").arg(host).arg(gupnp_context_get_port(context));
}

QByteArray requestHeader(SoupServerMessage *message, const char *name)
{
    return QByteArray(soup_message_headers_get_one(soup_server_message_get_request_headers(message), name));
}

/// The part is of no use to who wants to go on with another state of the file.
ByteRange rangeOf(SoupServerMessage *message, const OpenFile &file)
{
    const QByteArray state = requestHeader(message, "If-Range");
    const bool isForThis = state.isNull() || state == file.mark();
    const bool isGet = qstrcmp(soup_server_message_get_method(message), "GET") == 0;
    return ByteRange::of(isGet && isForThis ? requestHeader(message, "Range") : QByteArray(), file.size());
}

void describe(SoupMessageHeaders *headers, const OpenFile &file, const ByteRange &range)
{
    soup_message_headers_replace(headers, "Accept-Ranges", "bytes");
    if (range.kind == ByteRange::Beyond) {
        const QByteArray all = "bytes */" + QByteArray::number(file.size());
        soup_message_headers_replace(headers, "Content-Range", all.constData());
        soup_message_headers_set_content_length(headers, 0);
        return;
    }
    soup_message_headers_replace(headers, "ETag", file.mark().constData());
    soup_message_headers_set_content_type(headers, file.type().constData(), nullptr);
    soup_message_headers_set_content_length(headers, range.length);
    if (range.kind == ByteRange::Part)
        soup_message_headers_set_content_range(
            headers, range.from, range.from + range.length - 1, file.size());
}

guint statusOf(const ByteRange &range)
{
    switch (range.kind) {
    case ByteRange::Part:
        return SOUP_STATUS_PARTIAL_CONTENT;
    case ByteRange::Beyond:
        return SOUP_STATUS_REQUESTED_RANGE_NOT_SATISFIABLE;
    case ByteRange::Whole:
        break;
    }
    return SOUP_STATUS_OK;
}
} // namespace

/// What is there under the address. Shared by the server's handler; transfers go on when it is taken back.
struct FileHost::Offer
{
    QString url;
    QByteArray path; // of the server
    std::shared_ptr<const OpenFile> file; // null: there is none
    std::shared_ptr<FileTransfer::Group> transfers = std::make_shared<FileTransfer::Group>();

    void answer(SoupServerMessage *message, const char *asked) const;
    void makeRoom() const;
};

void FileHost::Offer::answer(SoupServerMessage *message, const char *asked) const
{
    // The server asks here for all that begins like the path, too.
    if (path != asked || !file) {
        soup_server_message_set_status(message, SOUP_STATUS_NOT_FOUND, nullptr);
        return;
    }
    const QByteArray method = soup_server_message_get_method(message);
    SoupMessageHeaders *headers = soup_server_message_get_response_headers(message);
    if (method != "GET" && method != "HEAD") {
        soup_message_headers_replace(headers, "Allow", "GET, HEAD");
        soup_server_message_set_status(message, SOUP_STATUS_METHOD_NOT_ALLOWED, nullptr);
        return;
    }
    const ByteRange range = rangeOf(message, *file);
    // Else libsoup would cut out what is asked for once more.
    soup_message_headers_remove(soup_server_message_get_request_headers(message), "Range");
    describe(headers, *file, range);
    soup_server_message_set_status(message, statusOf(range), nullptr);
    if (method == "HEAD" || range.length == 0)
        return;
    makeRoom();
    FileTransfer::begin(message, file, range, transfers);
}

/// A renderer has a few at a time; one that forgets to end them loses those that it has forgotten for longest.
void FileHost::Offer::makeRoom() const
{
    if (transfers->size() < maxTransfers)
        return;
    const auto idlest = std::min_element(transfers->cbegin(), transfers->cend(),
        [](const FileTransfer *one, const FileTransfer *other) { return one->movedAt() < other->movedAt(); });
    FileTransfer *transfer = *idlest;
    // No longer counted; its end is not waited for.
    transfers->erase(idlest);
    transfer->end();
}

FileHost::FileHost(int patience)
    : m_patience(patience)
{
}

FileHost::~FileHost()
{
    takeBack();
}

QString FileHost::offer(GUPnPContext *context, const QString &url)
{
    const QUrl media(url);
    // Asked for the same again, it keeps its address: the renderer may be reading. Its file may be there only now.
    const bool isOffered = m_offer && m_offer->file && m_context.get() == context && m_offer->url == url;
    if (!isOffered) {
        takeBack();
        if (!media.isLocalFile())
            return url;
        const QString file = media.toLocalFile();
        m_offer
            = std::make_shared<Offer>(Offer{url, '/' + unguessable() + suffixOf(file), OpenFile::open(file)});
        m_context = GlibHandles::share(context);
        ServerGuard::keep(context);
        soup_server_add_handler(gupnp_context_get_server(context), m_offer->path.constData(), asked,
            new std::shared_ptr<const Offer>(m_offer),
            [](void *data) { delete static_cast<std::shared_ptr<const Offer> *>(data); });
    }
    return addressOf(context) + QString::fromLatin1(m_offer->path);
}

void FileHost::asked(SoupServer *, SoupServerMessage *message, const char *path, GHashTable *, void *data)
{
    const auto offer = *static_cast<std::shared_ptr<const Offer> *>(data);
    offer->answer(message, path);
}

/// What is being sent goes on: the renderer may play it until it is told the next one.
void FileHost::takeBack()
{
    if (m_offer) {
        soup_server_remove_handler(gupnp_context_get_server(m_context.get()), m_offer->path.constData());
        for (FileTransfer *transfer : *m_offer->transfers)
            transfer->endWhenIdle(m_patience);
    }
    m_offer.reset();
    m_context.reset();
}
