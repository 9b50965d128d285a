// SPDX-License-Identifier: MIT
#include "FileTransfer.h"

#include "MonotonicTime.h"
#include "OpenFile.h"

#include <libsoup/soup.h>

#include <algorithm>

namespace {
constexpr char transferMark[] = "kelvo-file-transfer";
constexpr qint64 pieceSize = 128 * 1024; // bytes
constexpr guint transferInterval = 100; // milliseconds
} // namespace

void FileTransfer::begin(SoupServerMessage *message, std::shared_ptr<const OpenFile> file,
    const ByteRange &part, std::shared_ptr<Group> group)
{
    auto *self = new FileTransfer(message, std::move(file), part, std::move(group));
    g_object_set_data_full(
        G_OBJECT(message), transferMark, self, [](void *data) { delete static_cast<FileTransfer *>(data); });
    g_signal_connect(message, "wrote-chunk", G_CALLBACK(wrote), self);
    self->sendNext();
}

FileTransfer::FileTransfer(SoupServerMessage *message, std::shared_ptr<const OpenFile> file,
    const ByteRange &part, std::shared_ptr<Group> group)
    : m_message(message)
    , m_socket(GlibHandles::share(soup_server_message_get_socket(message)))
    , m_file(std::move(file))
    , m_group(std::move(group))
    , m_at(part.from)
    , m_left(part.length)
    , m_movedAt(monotonicTime())
{
    m_group->push_back(this);
    // What was sent is not kept.
    soup_message_body_set_accumulate(soup_server_message_get_response_body(message), FALSE);
}

FileTransfer::~FileTransfer()
{
    if (m_ticks)
        g_source_destroy(m_ticks.get());
    m_group->remove(this);
}

void FileTransfer::wrote(SoupServerMessage *, void *self)
{
    auto *transfer = static_cast<FileTransfer *>(self);
    transfer->m_movedAt = monotonicTime();
    transfer->sendNext();
}

void FileTransfer::sendNext()
{
    SoupMessageBody *body = soup_server_message_get_response_body(m_message);
    if (m_left == 0) {
        soup_message_body_complete(body);
        return;
    }
    const QByteArray piece = m_file->read(m_at, std::min(m_left, pieceSize));
    if (piece.isEmpty()) {
        // It has become shorter than was promised.
        end();
        return;
    }
    soup_message_body_append(body, SOUP_MEMORY_COPY, piece.constData(), gsize(piece.size()));
    m_at += piece.size();
    m_left -= piece.size();
}

void FileTransfer::end()
{
    g_socket_shutdown(m_socket.get(), TRUE, TRUE, nullptr);
}

void FileTransfer::endWhenIdle(int patience)
{
    m_patience = patience;
    m_ticks.reset(g_timeout_source_new(transferInterval));
    g_source_set_callback(m_ticks.get(), ticked, this, nullptr);
    g_source_attach(m_ticks.get(), g_main_context_get_thread_default());
}

int FileTransfer::ticked(void *self)
{
    auto *transfer = static_cast<FileTransfer *>(self);
    if (monotonicTime() - transfer->m_movedAt >= transfer->m_patience)
        transfer->end();
    return G_SOURCE_CONTINUE;
}
