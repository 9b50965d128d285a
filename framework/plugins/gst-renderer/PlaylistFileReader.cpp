// SPDX-License-Identifier: MIT
#include "PlaylistFileReader.h"

#include "PlaylistFileParser.h"
#include "PlaylistParser.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

namespace {
using PlaylistFile::Contents;
using PlaylistFile::Format;

/// Code of a failed transfer; none when the pipeline may have more luck, for instance with a server that does
/// not speak proper HTTP.
KelvoError::Code codeOf(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::ContentNotFoundError:
    case QNetworkReply::ContentGoneError:
        return KelvoError::NotFound;
    case QNetworkReply::AuthenticationRequiredError:
    case QNetworkReply::ContentAccessDenied:
    case QNetworkReply::ProxyAuthenticationRequiredError:
        return KelvoError::AccessDenied;
    case QNetworkReply::ConnectionRefusedError:
    case QNetworkReply::HostNotFoundError:
        return KelvoError::NetworkFailed;
    case QNetworkReply::OperationCanceledError:
    case QNetworkReply::TimeoutError:
        return KelvoError::Stalled;
    case QNetworkReply::InternalServerError:
    case QNetworkReply::ServiceUnavailableError:
    case QNetworkReply::UnknownServerError:
        return KelvoError::ServerError;
    default:
        return KelvoError::NoError;
    }
}
} // namespace

PlaylistFileReader::PlaylistFileReader(int networkTimeout)
    : m_networkTimeout(networkTimeout)
{
}

PlaylistFileReader::~PlaylistFileReader()
{
    cancel();
}

void PlaylistFileReader::read(quint64 ticket, const QUrl &uri, const QString &contentType)
{
    cancel();
    m_ticket = ticket;
    m_uri = uri;
    m_announced = PlaylistFile::announced(uri, contentType);
    m_format = Format::None;
    if (uri.isLocalFile())
        // Whatever cannot be read gives its error when it is played.
        finish(PlaylistFileParser::parseFile(uri, m_announced));
    else if (uri.scheme() == QLatin1String("http") || uri.scheme() == QLatin1String("https"))
        readRemote(uri);
    else
        finish({});
}

void PlaylistFileReader::cancel()
{
    m_text = {};
    if (!m_reply)
        return;
    m_reply->disconnect(this);
    m_reply->abort();
    m_reply->deleteLater();
    m_reply = nullptr;
}

void PlaylistFileReader::readRemote(const QUrl &uri)
{
    if (!m_network)
        m_network = new QNetworkAccessManager(this);
    QNetworkRequest request(uri);
    request.setTransferTimeout(m_networkTimeout * 1000);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    m_reply = m_network->get(request);
    // What was not asked for by readyRead() stays in the socket, not in memory.
    m_reply->setReadBufferSize(1 << 20);
    connect(m_reply, &QNetworkReply::readyRead, this, &PlaylistFileReader::takeMore);
    connect(m_reply, &QNetworkReply::finished, this, &PlaylistFileReader::takeEnd);
}

void PlaylistFileReader::takeMore()
{
    m_text += m_reply->readAll();
    const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status >= 400 || m_text.size() < PlaylistFile::headSize)
        return;
    if (m_format == Format::None && !recognise())
        finish({});
    else if (m_text.size() > PlaylistFile::maximumSize)
        finish(Contents::tooLarge(m_uri));
}

void PlaylistFileReader::takeEnd()
{
    if (m_reply->error() != QNetworkReply::NoError) {
        const KelvoError::Code code = codeOf(m_reply->error());
        finish(code == KelvoError::NoError ? Contents{} : Contents::unusable(code, m_reply->errorString()));
        return;
    }
    m_text += m_reply->readAll();
    // Resolved against where it was found in the end, after any redirection.
    finish(recognise() ? PlaylistParser::parse(m_text, m_format, m_reply->url()) : Contents{});
}

bool PlaylistFileReader::recognise()
{
    PlaylistFile::Formats announced = m_announced;
    if (m_reply)
        announced |= PlaylistFile::announced(
            m_reply->url(), m_reply->header(QNetworkRequest::ContentTypeHeader).toString());
    m_format = PlaylistFile::recognised(m_text.left(PlaylistFile::headSize), announced);
    return m_format != Format::None;
}

void PlaylistFileReader::finish(const PlaylistFile::Contents &contents)
{
    cancel();
    Q_EMIT finished(m_ticket, contents);
}
