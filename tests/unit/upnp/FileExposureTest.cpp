// SPDX-License-Identifier: MIT
// The server of our files, as seen by those who do not mean well.
#include "FileHost.h"
#include "KelvoTestCase.h"
#include "ServerGuard.h"
#include "TestGroup.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <sys/resource.h>
#include <sys/stat.h>

#include <memory>
#include <vector>

namespace {
constexpr int shortPatience = 300; // milliseconds
const QByteArray song = "0123456789abcdef";

struct HttpAnswer
{
    int status = 0;
    QByteArray head;
    QByteArray body;
    bool isEnded = false; ///< the server has closed the connection

    QByteArray header(const QByteArray &name) const
    {
        for (const QByteArray &line : head.split('\n')) {
            if (line.toLower().startsWith(name.toLower() + ':'))
                return line.mid(name.size() + 1).trimmed();
        }
        return {};
    }
};

HttpAnswer answerOf(const QByteArray &text)
{
    HttpAnswer answer;
    const qsizetype end = text.indexOf("\r\n\r\n");
    answer.head = end < 0 ? text : text.left(end);
    answer.body = end < 0 ? QByteArray() : text.mid(end + 4);
    answer.status = answer.head.split(' ').value(1).toInt();
    return answer;
}

int descriptors()
{
    return int(QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::System).size());
}

qint64 residentKilobytes()
{
    QFile status(QStringLiteral("/proc/self/statm"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    return status.readAll().split(' ').value(1).toLongLong() * 4;
}
} // namespace

class FileExposureTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void onlyReads_data();
    void onlyReads();
    void headersHaveNoBody();
    void rangesFollowTheRules_data();
    void rangesFollowTheRules();
    void partIsOfTheFileItBeganWith();
    void nothingBesideTheFile_data();
    void nothingBesideTheFile();
    void otherHostsAreRefused_data();
    void otherHostsAreRefused();
    void turnedLinkLeadsNowhereElse();
    void replacedFileIsTheOldOne();
    void cutFileEndsTheAnswer();
    void onlyFilesAreOpened_data();
    void onlyFilesAreOpened();
    void slowRequestsAreEnded_data();
    void slowRequestsAreEnded();
    void longRequestsAreEnded_data();
    void longRequestsAreEnded();
    void longRequestsOfManyAreEnded();
    void pausedRendererIsWaitedFor();
    void manyTransfersOfOneFileAreBounded();
    void transferOfAnotherTimeEnds();
    void thousandConnections();

private:
    bool openServer(int asking);
    QString pathOf(const char *name) const { return m_folder.filePath(QString::fromLatin1(name)); }
    void write(const char *name, const QByteArray &content) const;
    QUrl offer(const char *name);
    std::unique_ptr<QTcpSocket> connected() const;
    QByteArray address() const { return "127.0.0.1:" + QByteArray::number(m_port); }
    HttpAnswer ask(const QByteArray &request);
    HttpAnswer get(const QUrl &url, const QByteArray &headers = {});

    QTemporaryDir m_folder;
    GlibHandles::Object<GUPnPContext> m_context;
    std::unique_ptr<FileHost> m_host;
    quint16 m_port = 0;
    QTimer m_turn;
};

void FileExposureTest::init()
{
    KelvoTestCase::init();
    QVERIFY(openServer(shortPatience));
    m_host = std::make_unique<FileHost>(shortPatience);
    write("song.mp3", song);
    // The server runs in this thread's GLib context, whatever loop Qt runs on.
    m_turn.callOnTimeout([] {
        for (int i = 0; i < 1000 && g_main_context_iteration(nullptr, FALSE); ++i) { }
    });
    m_turn.start(1);
}

/// @param asking  milliseconds that a request may take
bool FileExposureTest::openServer(int asking)
{
    GlibHandles::Error error;
    // GUPnP takes a port for one protocol and may find it in use for the other.
    for (int attempt = 0; !m_context && attempt < 10; ++attempt)
        m_context.reset(gupnp_context_new_full("lo", nullptr, 0, GSSDP_UDA_VERSION_1_0, error.out()));
    if (!m_context)
        return false;
    ServerGuard::Limits limits;
    limits.asking = asking;
    limits.body = 1'000'000;
    limits.bodies = 4'000'000;
    ServerGuard::keep(m_context.get(), limits);
    m_port = quint16(gupnp_context_get_port(m_context.get()));
    return true;
}

void FileExposureTest::cleanup()
{
    m_host.reset();
    m_context.reset();
}

void FileExposureTest::write(const char *name, const QByteArray &content) const
{
    QFile file(pathOf(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

QUrl FileExposureTest::offer(const char *name)
{
    return QUrl(
        m_host->offer(m_context.get(), QUrl::fromLocalFile(pathOf(name)).toString(QUrl::FullyEncoded)));
}

std::unique_ptr<QTcpSocket> FileExposureTest::connected() const
{
    auto socket = std::make_unique<QTcpSocket>();
    socket->connectToHost(QStringLiteral("127.0.0.1"), m_port);
    const bool isThere = QTest::qWaitFor([&] { return socket->state() == QAbstractSocket::ConnectedState; });
    return isThere ? std::move(socket) : nullptr;
}

/// All that comes until the server closes.
HttpAnswer FileExposureTest::ask(const QByteArray &request)
{
    const auto socket = connected();
    if (!socket)
        return {};
    socket->write(request);
    QByteArray text;
    const bool isEnded = QTest::qWaitFor([&] {
        text += socket->readAll();
        return socket->state() == QAbstractSocket::UnconnectedState;
    });
    HttpAnswer answer = answerOf(text + socket->readAll());
    answer.isEnded = isEnded;
    return answer;
}

HttpAnswer FileExposureTest::get(const QUrl &url, const QByteArray &headers)
{
    return ask("GET " + url.path(QUrl::FullyEncoded).toLatin1() + " HTTP/1.1\r\nHost: " + address() + "\r\n"
        + headers + "\r\n");
}

void FileExposureTest::onlyReads_data()
{
    QTest::addColumn<QByteArray>("method");
    for (const char *method :
        {"POST", "PUT", "DELETE", "PATCH", "OPTIONS", "TRACE", "CONNECT", "PROPFIND", "get"})
        QTest::newRow(method) << QByteArray(method);
}

void FileExposureTest::onlyReads()
{
    QFETCH(QByteArray, method);
    const QByteArray path = offer("song.mp3").path().toLatin1();
    const HttpAnswer answer
        = ask(method + ' ' + path + " HTTP/1.1\r\nHost: " + address() + "\r\nContent-Length: 3\r\n\r\nnew");
    QVERIFY(answer.isEnded);
    QVERIFY2(answer.status >= 400 && answer.status < 600, answer.head.constData());
    QVERIFY(!answer.body.contains(song));
    if (answer.status == 405)
        QCOMPARE(answer.header("Allow"), "GET, HEAD");
    QFile file(pathOf("song.mp3"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), song);
}

void FileExposureTest::headersHaveNoBody()
{
    const QByteArray path = offer("song.mp3").path().toLatin1();
    const HttpAnswer answer = ask("HEAD " + path + " HTTP/1.1\r\nHost: " + address() + "\r\n\r\n");
    QCOMPARE(answer.status, 200);
    QCOMPARE(answer.header("Content-Length"), QByteArray::number(song.size()));
    QCOMPARE(answer.header("Accept-Ranges"), "bytes");
    QCOMPARE(answer.body, QByteArray());
}

// RFC 9110, 14: what makes no sense, or asks for several parts, is passed over.
void FileExposureTest::rangesFollowTheRules_data()
{
    QTest::addColumn<QByteArray>("range");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("told"); // Content-Range
    const auto part = [](const char *range, const char *body, const char *told) {
        QTest::newRow(range) << QByteArray(range) << 206 << QByteArray(body) << QByteArray(told);
    };
    part("bytes=0-0", "0", "bytes 0-0/16");
    part("bytes=3-5", "345", "bytes 3-5/16");
    part("bytes=10-", "abcdef", "bytes 10-15/16");
    part("bytes=15-15", "f", "bytes 15-15/16");
    part("bytes=10-99999999999", "abcdef", "bytes 10-15/16");
    part("bytes=-2", "ef", "bytes 14-15/16");
    part("bytes=-99", "0123456789abcdef", "bytes 0-15/16");
    for (const char *range : {"bytes=16-", "bytes=16-20", "bytes=-0", "bytes=99999999999999999-",
             "bytes=18446744073709551617-18446744073709551618"})
        QTest::newRow(range) << QByteArray(range) << 416 << QByteArray() << QByteArray("bytes */16");
    for (const char *range :
        {"bytes=5-3", "bytes=x", "bytes=", "items=0-3", "bytes=0-1,4-5", "bytes=--1", "0-3", "bytes=0x1-3"})
        QTest::newRow(range) << QByteArray(range) << 200 << song << QByteArray();
}

void FileExposureTest::rangesFollowTheRules()
{
    QFETCH(QByteArray, range);
    const HttpAnswer answer = get(offer("song.mp3"), "Range: " + range + "\r\n");
    QTEST(answer.status, "status");
    QTEST(answer.header("Content-Range"), "told");
    if (answer.status != 416)
        QTEST(answer.body, "body");
    QCOMPARE(answer.header("Content-Length"), QByteArray::number(answer.body.size()));
}

void FileExposureTest::partIsOfTheFileItBeganWith()
{
    const QUrl url = offer("song.mp3");
    const QByteArray mark = get(url).header("ETag");
    QVERIFY(mark.size() > 2 && mark.startsWith('"') && mark.endsWith('"'));
    QCOMPARE(get(url, "Range: bytes=3-5\r\nIf-Range: " + mark + "\r\n").status, 206);
    QCOMPARE(get(url, "Range: bytes=3-5\r\nIf-Range: \"other\"\r\n").body, song);
}

void FileExposureTest::nothingBesideTheFile_data()
{
    QTest::addColumn<QByteArray>("target"); // P: the path of the file
    QTest::addColumn<QByteArray>("headers");
    for (const char *target : {"P/", "P/../secret", "P/%2e%2e/song.mp3.bak", "P.bak", "Px", "P%00", "/",
             "/song.mp3", "/../song.mp3.bak", "//etc/passwd", "/%2fetc/passwd", "http://127.0.0.1/etc/passwd",
             "*", "P\\..\\secret"})
        QTest::newRow(target) << QByteArray(target) << QByteArray();
    // Files beside it that are called like a translation of it.
    QTest::newRow("another language") << QByteArray("P") << QByteArray("Accept-Language: bak\r\n");
    QTest::newRow("another agent") << QByteArray("P") << QByteArray("User-Agent: bak\r\n");
}

void FileExposureTest::nothingBesideTheFile()
{
    QFETCH(QByteArray, target);
    QFETCH(QByteArray, headers);
    write("song.mp3.bak", "SECRET");
    write("secret", "SECRET");
    target.replace("P", offer("song.mp3").path().toLatin1());
    const HttpAnswer answer
        = ask("GET " + target + " HTTP/1.1\r\nHost: " + address() + "\r\n" + headers + "\r\n");
    QVERIFY(answer.isEnded);
    QVERIFY2(!answer.body.contains("SECRET") && !answer.body.contains("root:"), answer.body.constData());
    QVERIFY2(answer.status >= 400 || answer.body == song, answer.head.constData());
}

void FileExposureTest::otherHostsAreRefused_data()
{
    QTest::addColumn<QByteArray>("host"); // the line; A: the right address
    QTest::addColumn<QByteArray>("version");
    QTest::addColumn<bool>("isServed");
    const QByteArray now = "HTTP/1.1";
    QTest::newRow("ours") << QByteArray("Host: A\r\n") << now << true;
    QTest::newRow("ours without a port") << QByteArray("Host: 127.0.0.1\r\n") << now << true;
    QTest::newRow("none, of old") << QByteArray() << QByteArray("HTTP/1.0") << true;
    QTest::newRow("none") << QByteArray() << now << false;
    QTest::newRow("empty") << QByteArray("Host:\r\n") << now << false;
    QTest::newRow("a name") << QByteArray("Host: rebound.example\r\n") << now << false;
    QTest::newRow("a name, of old") << QByteArray("Host: rebound.example\r\n") << QByteArray("HTTP/1.0")
                                    << false;
    QTest::newRow("a name with the port") << QByteArray("Host: rebound.example:80\r\n") << now << false;
    QTest::newRow("a name that begins like it")
        << QByteArray("Host: 127.0.0.1.rebound.example\r\n") << now << false;
    QTest::newRow("another address") << QByteArray("Host: 10.0.0.1\r\n") << now << false;
    QTest::newRow("two") << QByteArray("Host: rebound.example\r\nHost: A\r\n") << now << false;
}

void FileExposureTest::otherHostsAreRefused()
{
    QFETCH(QByteArray, host);
    QFETCH(QByteArray, version);
    QFETCH(bool, isServed);
    const QByteArray path = offer("song.mp3").path().toLatin1();
    const HttpAnswer answer
        = ask("GET " + path + ' ' + version + "\r\n" + host.replace("A", address()) + "\r\n");
    QCOMPARE(answer.status == 200, isServed);
    QCOMPARE(answer.body.contains(song), isServed);
}

void FileExposureTest::turnedLinkLeadsNowhereElse()
{
    write("secret", "SECRET");
    QVERIFY(QFile::link(pathOf("song.mp3"), pathOf("link.mp3")));
    const QUrl url = offer("link.mp3");
    QCOMPARE(get(url).body, song);
    QVERIFY(QFile::remove(pathOf("link.mp3")));
    QVERIFY(QFile::link(pathOf("secret"), pathOf("link.mp3")));
    QCOMPARE(get(url).body, song);
}

void FileExposureTest::replacedFileIsTheOldOne()
{
    const QUrl url = offer("song.mp3");
    write("new", "SECRET");
    QVERIFY(QFile::remove(pathOf("song.mp3")));
    QVERIFY(QFile::rename(pathOf("new"), pathOf("song.mp3")));
    QCOMPARE(get(url).body, song);
}

void FileExposureTest::cutFileEndsTheAnswer()
{
    constexpr qint64 size = 64 * 1024 * 1024;
    QVERIFY(QFile::resize(pathOf("song.mp3"), size));
    const QUrl url = offer("song.mp3");
    const auto socket = connected();
    QVERIFY(socket);
    socket->setReadBufferSize(64 * 1024); // does not read on by itself
    socket->write("GET " + url.path().toLatin1() + " HTTP/1.1\r\nHost: " + address() + "\r\n\r\n");
    QTRY_VERIFY(socket->bytesAvailable() > 0);
    QVERIFY(QFile::resize(pathOf("song.mp3"), 10));
    qint64 got = 0;
    socket->setReadBufferSize(0);
    QTRY_VERIFY((got += socket->readAll().size(), socket->state() == QAbstractSocket::UnconnectedState));
    QVERIFY2(got < size, qPrintable(QString::number(got)));
    QCOMPARE(get(url).body.size(), 10);
}

void FileExposureTest::onlyFilesAreOpened_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::newRow("folder") << QByteArray("/etc");
    QTest::newRow("device") << QByteArray("/dev/zero");
    QTest::newRow("pipe") << QByteArray("P");
    QTest::newRow("missing") << QByteArray("/nonexistent/file");
    QTest::newRow("below a file") << QByteArray("/etc/passwd/x");
}

void FileExposureTest::onlyFilesAreOpened()
{
    QFETCH(QByteArray, path);
    const QByteArray pipe = QFile::encodeName(pathOf("pipe"));
    QVERIFY(::mkfifo(pipe.constData(), 0600) == 0 || errno == EEXIST);
    path.replace("P", pipe);
    const QUrl url(m_host->offer(m_context.get(), "file://" + QString::fromLatin1(path)));
    QCOMPARE(get(url).status, 404);
}

void FileExposureTest::slowRequestsAreEnded_data()
{
    QTest::addColumn<QByteArray>("begin");
    QTest::addColumn<QByteArray>("drop");
    QTest::newRow("says nothing") << QByteArray() << QByteArray();
    QTest::newRow("first line") << QByteArray("GET /") << QByteArray("a");
    QTest::newRow("headers") << QByteArray("GET / HTTP/1.1\r\nHost: A\r\n") << QByteArray("X: y\r\n");
    QTest::newRow("body") << QByteArray("POST / HTTP/1.1\r\nHost: A\r\nContent-Length: 100000\r\n\r\n")
                          << QByteArray("a");
    QTest::newRow("body in pieces") << QByteArray(
        "POST / HTTP/1.1\r\nHost: A\r\nTransfer-Encoding: chunked\r\n\r\n")
                                    << QByteArray("1\r\na\r\n");
}

void FileExposureTest::slowRequestsAreEnded()
{
    QFETCH(QByteArray, begin);
    QFETCH(QByteArray, drop);
    const auto socket = connected();
    QVERIFY(socket);
    QElapsedTimer time;
    time.start();
    socket->write(begin.replace("A", address()));
    QTimer drops;
    drops.callOnTimeout([&] { socket->write(drop); });
    drops.start(20);
    QTRY_COMPARE(socket->state(), QAbstractSocket::UnconnectedState);
    drops.stop();
    QVERIFY2(time.elapsed() >= shortPatience, qPrintable(QString::number(time.elapsed())));
    qInfo("reliability: exposure-slow: closed after %lld ms of %d", time.elapsed(), shortPatience);
}

void FileExposureTest::longRequestsAreEnded_data()
{
    QTest::addColumn<QByteArray>("begin");
    QTest::addColumn<bool>("isInPieces");
    QTest::newRow("first line") << QByteArray("GET /") << false;
    QTest::newRow("header") << QByteArray("GET / HTTP/1.1\r\nHost: A\r\nX: ") << false;
    QTest::newRow("body") << QByteArray("POST / HTTP/1.1\r\nHost: A\r\nContent-Length: 10000000000\r\n\r\n")
                          << false;
    QTest::newRow("body of an event")
        << QByteArray("NOTIFY / HTTP/1.1\r\nHost: A\r\nContent-Length: 10000000000\r\n\r\n") << false;
    QTest::newRow("body in pieces") << QByteArray(
        "POST / HTTP/1.1\r\nHost: A\r\nTransfer-Encoding: chunked\r\n\r\n")
                                    << true;
    QTest::newRow("body without a length") << QByteArray("POST / HTTP/1.0\r\nHost: A\r\n\r\n") << false;
}

// As fast as the server reads: it must not take in what it has no use for.
void FileExposureTest::longRequestsAreEnded()
{
    QFETCH(QByteArray, begin);
    QFETCH(bool, isInPieces);
    const QByteArray much(64 * 1024, 'x');
    const QByteArray piece = isInPieces ? "10000\r\n" + much + "\r\n" : much;
    const qint64 before = residentKilobytes();
    const auto socket = connected();
    QVERIFY(socket);
    socket->write(begin.replace("A", address()));
    qint64 sent = 0;
    QTimer more;
    more.callOnTimeout([&] {
        while (socket->state() == QAbstractSocket::ConnectedState && socket->bytesToWrite() < 1'000'000) {
            socket->write(piece);
            sent += piece.size();
            if (!socket->flush())
                break;
        }
    });
    more.start(0);
    QTRY_COMPARE(socket->state(), QAbstractSocket::UnconnectedState);
    more.stop();
    const qint64 grown = residentKilobytes() - before;
    QVERIFY2(grown < 32 * 1024, qPrintable(QStringLiteral("%1 KB for %2 bytes").arg(grown).arg(sent)));
    qInfo("reliability: exposure-long: %lld KB more memory at most", grown);
}

// None of them is too long by itself.
void FileExposureTest::longRequestsOfManyAreEnded()
{
    m_context.reset();
    QVERIFY(openServer(1'000'000)); // so slow may they be
    std::vector<std::unique_ptr<QTcpSocket>> sockets;
    for (int i = 0; i < 10; ++i) {
        sockets.push_back(connected());
        QVERIFY(sockets.back());
        sockets.back()->write("POST / HTTP/1.1\r\nHost: " + address() + "\r\nContent-Length: 950000\r\n\r\n"
            + QByteArray(900'000, 'x'));
    }
    QTRY_VERIFY(std::any_of(sockets.cbegin(), sockets.cend(),
        [](const auto &socket) { return socket->state() == QAbstractSocket::UnconnectedState; }));
}

void FileExposureTest::pausedRendererIsWaitedFor()
{
    constexpr qint64 size = 64 * 1024 * 1024;
    QVERIFY(QFile::resize(pathOf("song.mp3"), size));
    const QUrl url = offer("song.mp3");
    const auto socket = connected();
    QVERIFY(socket);
    socket->setReadBufferSize(1024);
    socket->write("GET " + url.path().toLatin1() + " HTTP/1.1\r\nHost: " + address() + "\r\n\r\n");
    QTRY_VERIFY(socket->bytesAvailable() > 0);
    const qint64 before = residentKilobytes();
    // What comes after is slower than every limit here.
    const auto slow = connected();
    QTRY_COMPARE(slow->state(), QAbstractSocket::UnconnectedState);
    QCOMPARE(socket->state(), QAbstractSocket::ConnectedState);
    QVERIFY(residentKilobytes() - before < 16 * 1024);
    socket->setReadBufferSize(0);
    qint64 got = 0;
    QTRY_VERIFY_WITH_TIMEOUT(
        (got += socket->readAll().size(), socket->state() == QAbstractSocket::UnconnectedState), 20'000);
    QVERIFY(got > size);
}

void FileExposureTest::manyTransfersOfOneFileAreBounded()
{
    QVERIFY(QFile::resize(pathOf("song.mp3"), 64 * 1024 * 1024));
    const QUrl url = offer("song.mp3");
    std::vector<std::unique_ptr<QTcpSocket>> sockets;
    for (int i = 0; i < 40; ++i) {
        auto socket = connected();
        QVERIFY(socket);
        socket->setReadBufferSize(1024);
        socket->write("GET " + url.path().toLatin1() + " HTTP/1.1\r\nHost: " + address() + "\r\n\r\n");
        QTRY_VERIFY(socket->bytesAvailable() > 0);
        sockets.push_back(std::move(socket));
    }
    const auto isOpen = [](const std::unique_ptr<QTcpSocket> &socket) {
        socket->setReadBufferSize(0);
        return socket->state() == QAbstractSocket::ConnectedState;
    };
    // The last one is served; of the others those that came last.
    QTRY_VERIFY(!isOpen(sockets.front()));
    QVERIFY(isOpen(sockets.back()));
}

void FileExposureTest::transferOfAnotherTimeEnds()
{
    QVERIFY(QFile::resize(pathOf("song.mp3"), 64 * 1024 * 1024));
    write("other.mp3", "other");
    const QUrl url = offer("song.mp3");
    const auto socket = connected();
    QVERIFY(socket);
    socket->setReadBufferSize(1024);
    socket->write("GET " + url.path().toLatin1() + " HTTP/1.1\r\nHost: " + address() + "\r\n\r\n");
    QTRY_VERIFY(socket->bytesAvailable() > 0);
    const int before = descriptors();
    QCOMPARE(get(offer("other.mp3")).body, "other");
    QCOMPARE(socket->state(), QAbstractSocket::ConnectedState);
    // Its end of the connection, and its file; "other.mp3" is open now.
    QTRY_COMPARE(descriptors(), before - 1);
}

void FileExposureTest::thousandConnections()
{
    struct rlimit limit = {};
    QCOMPARE(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    const struct rlimit usual = limit;
    limit.rlim_cur = limit.rlim_max;
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    const QUrl url = offer("song.mp3");
    const int before = descriptors();
    int most = 0;
    int slowest = 0;
    {
        std::vector<std::unique_ptr<QTcpSocket>> sockets;
        for (int i = 0; i < 1000; ++i) {
            sockets.push_back(connected());
            QVERIFY(sockets.back());
            sockets.back()->write("GET /");
            if (i % 100 == 99) {
                QElapsedTimer time;
                time.start();
                QCOMPARE(get(url).body, song);
                slowest = qMax(slowest, int(time.elapsed()));
                const auto open = std::count_if(sockets.cbegin(), sockets.cend(),
                    [](const auto &socket) { return socket->state() != QAbstractSocket::UnconnectedState; });
                most = qMax(most, int(descriptors() - before - open));
            }
        }
    }
    QVERIFY2(most <= 300, qPrintable(QString::number(most)));
    QTRY_VERIFY(descriptors() <= before + 2);
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &usual), 0);
    qInfo("reliability: exposure-http: %d of 1000 connections held, a file within %d ms meanwhile", most,
        slowest);
}

KELVO_TEST(FileExposureTest)
#include "FileExposureTest.moc"
