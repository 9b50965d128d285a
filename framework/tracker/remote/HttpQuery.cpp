// SPDX-License-Identifier: MIT
#include "HttpQuery.h"

#include "CurlLibrary.h"

#include <QUrlQuery>

#include <algorithm>
#include <atomic>

// libcurl: streams, follows, reads netrc files and can be called off from another thread, all without an event loop.

namespace {
using Clock = std::chrono::steady_clock;

constexpr int pollMilliseconds = 1000;
constexpr qsizetype longestReason = 200;

// What a server says of itself: one line, without what would disturb a label.
QString shown(const QByteArray &text)
{
    return QString::fromUtf8(text.left(longestReason)).simplified();
}
} // namespace

struct HttpQuery::Private
{
    explicit Private(const CurlLibrary &library)
        : curl(library)
        , easy(curl.easyInit(), curl.easyCleanup)
        , multi(curl.multiInit(), curl.multiCleanup)
        , headers(nullptr, curl.listFree)
    {
    }

    QUrl endpoint;
    RemoteLimits limits;
    const CurlLibrary &curl;
    // The transfer is taken out of the loop before either ends.
    std::unique_ptr<CURL, decltype(CurlLibrary::easyCleanup)> easy;
    std::unique_ptr<CURLM, decltype(CurlLibrary::multiCleanup)> multi;
    std::unique_ptr<curl_slist, decltype(CurlLibrary::listFree)> headers;
    std::atomic_bool cancelled = false;

    // Of one question.
    const Listener *listener = nullptr;
    QString error;
    QByteArray reason; ///< of the last status line
    qsizetype headBytes = 0;
    bool isBegun = false;
    Clock::time_point waitsSince;
    char words[CURL_ERROR_SIZE] = {};

    void prepare();
    void setAddress(const QByteArray &query);
    QString run();
    QString outcome(CURLcode code);
    QString judgeHead();
    bool takeHead(const QByteArray &line);
    bool takeBody(const QByteArray &bytes);

    static size_t headCame(char *text, size_t size, size_t count, void *data)
    {
        const auto bytes = qsizetype(size) * qsizetype(count);
        const bool goesOn = static_cast<Private *>(data)->takeHead(QByteArray::fromRawData(text, bytes));
        return goesOn ? size * count : 0;
    }
    static size_t bodyCame(char *text, size_t size, size_t count, void *data)
    {
        const auto bytes = qsizetype(size) * qsizetype(count);
        const bool goesOn = static_cast<Private *>(data)->takeBody(QByteArray(text, bytes));
        return goesOn || bytes == 0 ? size * count : 0;
    }
};

HttpQuery::HttpQuery(const QUrl &endpoint, const RemoteLimits &limits)
{
    const CurlLibrary *const curl = CurlLibrary::load(&m_problem);
    if (!curl)
        return;
    d = std::make_unique<Private>(*curl);
    d->endpoint = endpoint;
    d->limits = limits;
    d->prepare();
}

HttpQuery::~HttpQuery() = default;

void HttpQuery::Private::prepare()
{
    CURL *handle = easy.get();
    // The store's own endpoint knows no weights, and gives the second (its XML would be none: it escapes nothing); what
    // gives both gives the first.
    headers.reset(curl.listAppend(nullptr, "Accept: text/csv, application/sparql-results+json"));
    const char *const schemes = endpoint.scheme() == QLatin1String("https") ? "https" : "http,https";
    curl.easySetOption(handle, CURLOPT_HTTPHEADER, headers.get());
    curl.easySetOption(handle, CURLOPT_USERAGENT, "kelvo");
    curl.easySetOption(handle, CURLOPT_PROTOCOLS_STR, schemes);
    curl.easySetOption(handle, CURLOPT_REDIR_PROTOCOLS_STR, schemes);
    curl.easySetOption(handle, CURLOPT_FOLLOWLOCATION, 1L);
    curl.easySetOption(handle, CURLOPT_MAXREDIRS, long(limits.redirections));
    curl.easySetOption(handle, CURLOPT_CONNECTTIMEOUT_MS, long(limits.connecting.count()));
    curl.easySetOption(handle, CURLOPT_NETRC, long(CURL_NETRC_OPTIONAL));
    curl.easySetOption(handle, CURLOPT_HTTPAUTH, long(CURLAUTH_BASIC | CURLAUTH_DIGEST));
    curl.easySetOption(handle, CURLOPT_NOSIGNAL, 1L); // signals belong to the program
    curl.easySetOption(handle, CURLOPT_ERRORBUFFER, words);
    curl.easySetOption(handle, CURLOPT_HEADERFUNCTION, headCame);
    curl.easySetOption(handle, CURLOPT_HEADERDATA, this);
    curl.easySetOption(handle, CURLOPT_WRITEFUNCTION, bodyCame);
    curl.easySetOption(handle, CURLOPT_WRITEDATA, this);
}

void HttpQuery::Private::setAddress(const QByteArray &query)
{
    QUrl url = endpoint;
    const QByteArray item = "query=" + QUrl::toPercentEncoding(QString::fromUtf8(query));
    const QString before = url.query(QUrl::FullyEncoded);
    url.setQuery((before.isEmpty() ? QString() : before + QLatin1Char('&')) + QString::fromLatin1(item));
    curl.easySetOption(
        easy.get(), CURLOPT_URL, url.toEncoded(QUrl::FullyEncoded | QUrl::RemoveFragment).constData());
}

QString HttpQuery::ask(const QByteArray &query, const Listener &listener)
{
    if (!d)
        return m_problem;
    d->listener = &listener;
    d->error.clear();
    d->reason.clear();
    d->headBytes = 0;
    d->isBegun = false;
    d->words[0] = '\0';
    d->setAddress(query);
    restartClock();
    d->curl.multiAdd(d->multi.get(), d->easy.get());
    const QString error = d->run();
    d->curl.multiRemove(d->multi.get(), d->easy.get());
    return d->cancelled ? QString() : error;
}

QString HttpQuery::Private::run()
{
    int running = 1;
    while (running > 0 && !cancelled) {
        if (curl.multiPerform(multi.get(), &running) != CURLM_OK)
            return QStringLiteral("it cannot be asked");
        if (running == 0)
            break;
        const auto left
            = std::chrono::duration_cast<std::chrono::milliseconds>(waitsSince + limits.row - Clock::now());
        if (left.count() <= 0)
            return QStringLiteral("it gave no row for %1 s").arg(double(limits.row.count()) / 1000.0);
        curl.multiPoll(
            multi.get(), nullptr, 0, int(std::min<qint64>(left.count(), pollMilliseconds)), nullptr);
    }
    int waiting = 0;
    const CURLMsg *const message = curl.multiReadInfo(multi.get(), &waiting);
    return message && message->msg == CURLMSG_DONE ? outcome(message->data.result) : QString();
}

QString HttpQuery::Private::outcome(CURLcode code)
{
    if (!error.isEmpty())
        return error;
    switch (code) {
    case CURLE_OK:
        return isBegun ? QString() : judgeHead();
    case CURLE_TOO_MANY_REDIRECTS:
        return QStringLiteral("it redirects more than %1 times").arg(limits.redirections);
    case CURLE_UNSUPPORTED_PROTOCOL:
        return QStringLiteral("it redirects to what is no web server, or from https to http");
    case CURLE_PEER_FAILED_VERIFICATION:
        return QStringLiteral("its certificate is not to be trusted: %1").arg(shown(words));
    default:
        return shown(words[0] ? words : curl.easyErrorText(code));
    }
}

bool HttpQuery::Private::takeHead(const QByteArray &line)
{
    headBytes += line.size();
    if (headBytes > limits.headBytes) {
        error = QStringLiteral("the head of its answer is longer than %1 KiB").arg(limits.headBytes / 1024);
        return false;
    }
    if (line.startsWith("HTTP/"))
        reason = line.mid(line.indexOf(' ') + 1).trimmed();
    return true;
}

// Why nothing but the head is of interest; empty: the answer is good so far.
QString HttpQuery::Private::judgeHead()
{
    long status = 0;
    curl.easyGetInfo(easy.get(), CURLINFO_RESPONSE_CODE, &status);
    if (status != 200)
        return QStringLiteral("it answered %1")
            .arg(reason.isEmpty() ? QString::number(status) : shown(reason));
    const char *mediaType = nullptr;
    curl.easyGetInfo(easy.get(), CURLINFO_CONTENT_TYPE, &mediaType);
    isBegun = true;
    return listener->begun(mediaType);
}

bool HttpQuery::Private::takeBody(const QByteArray &bytes)
{
    if (!isBegun)
        error = judgeHead();
    if (error.isEmpty())
        error = listener->came(bytes);
    return error.isEmpty() && !cancelled;
}

void HttpQuery::restartClock()
{
    if (d)
        d->waitsSince = Clock::now();
}

bool HttpQuery::isCancelled() const
{
    return d && d->cancelled;
}

void HttpQuery::cancel()
{
    if (!d)
        return;
    d->cancelled = true;
    d->curl.multiWakeUp(d->multi.get());
}
