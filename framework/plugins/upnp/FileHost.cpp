// SPDX-License-Identifier: MIT
#include "FileHost.h"

#include "ServerConnections.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QUrl>

#include <array>

namespace {
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
} // namespace

FileHost::~FileHost()
{
    takeBack();
}

QString FileHost::offer(GUPnPContext *context, const QString &url)
{
    const QUrl media(url);
    // Asked for the same again, it keeps its address: the renderer may be reading.
    const bool isOffered = !m_path.isEmpty() && m_context.get() == context && m_url == url;
    if (!isOffered) {
        takeBack();
        if (!media.isLocalFile())
            return url;
        const QString file = media.toLocalFile();
        m_path = '/' + unguessable() + suffixOf(file);
        m_url = url;
        m_context = GlibHandles::share(context);
        gupnp_context_host_path(context, QFile::encodeName(file).constData(), m_path.constData());
        ServerConnections::endWithTheirAnswer(gupnp_context_get_server(context));
    }
    return addressOf(context) + QString::fromLatin1(m_path);
}

void FileHost::takeBack()
{
    if (!m_path.isEmpty())
        gupnp_context_unhost_path(m_context.get(), m_path.constData());
    m_path.clear();
    m_url.clear();
    m_context.reset();
}
