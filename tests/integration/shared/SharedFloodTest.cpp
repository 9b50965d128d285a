// SPDX-License-Identifier: MIT
// Who calls the objects of a program as fast as the bus lets him, and with as much: the program goes on.
#include "BusFlood.h"
#include "KelvoTestCase.h"
#include "PeerProcess.h"
#include "TestGroup.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QFile>
#include <QTest>

#include <atomic>
#include <thread>
#include <unistd.h>

namespace {
constexpr int floodCalls = 25'000; // of each of four kinds
// Milliseconds that the other program's GUI thread may work before it sees to something else. One that takes in every call at
// once works for a second and more. It is not the time that passes, as the flood itself keeps the machine busy.
constexpr qint64 longestWork = 60;
constexpr qint64 mostMemory = 64 * 1024; // kilobytes

const auto floodedRoot = QStringLiteral("/org/kelvo/Playlists");
const auto floodedPath = QStringLiteral("/org/kelvo/Playlists/p0");
const auto floodedInterface = QStringLiteral("org.kelvo.Playlist1");
const auto propertiesOfBus = QStringLiteral("org.freedesktop.DBus.Properties");

qint64 memoryOf(qint64 process)
{
    QFile statistics(QStringLiteral("/proc/%1/statm").arg(process));
    return statistics.open(QIODevice::ReadOnly) ? statistics.readAll().split(' ').value(1).toLongLong() * 4
                                                : -1;
}

/// Milliseconds that the process's first thread has worked so far.
qint64 workOf(qint64 process)
{
    QFile status(QStringLiteral("/proc/%1/task/%1/stat").arg(process));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray text = status.readAll();
    const QList<QByteArray> values = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return (values.value(11).toLongLong() + values.value(12).toLongLong()) * 1000 / ::sysconf(_SC_CLK_TCK);
}

class SharedFloodTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void goesOnWhileItIsCalled_data();
    void goesOnWhileItIsCalled();
    void goesOnWhenItIsSentMuch();
    void answersAfterwards();

private:
    QDBusMessage call(const QString &path, const QString &target, const QString &member) const
    {
        return QDBusMessage::createMethodCall(
            QStringLiteral("org.kelvo.Playlists.pid%1").arg(m_peer.pid()), path, target, member);
    }
    /// What the other program is asked by the way, by its standard input, until the flood is over.
    void watch(const QDBusMessage &message);

    PeerProcess m_peer;
    qint64 m_longest = 0; // milliseconds of work for one answer, and all that came before it
    int m_calls = 0;
    qint64 m_grown = 0; // kilobytes
};

void SharedFloodTest::initTestCase()
{
    QCOMPARE(m_peer.tell("publish flooded 2000 Flooded"), "published");
    QTRY_VERIFY(QDBusConnection::sessionBus()
                    .call(call(floodedPath, propertiesOfBus, "GetAll") << floodedInterface)
                    .type()
        == QDBusMessage::ReplyMessage);
}

void SharedFloodTest::watch(const QDBusMessage &message)
{
    std::atomic<bool> isOver = false;
    int sent = 0;
    std::thread sender([&] {
        sent = BusFlood::send(message, floodCalls);
        isOver = true;
    });
    const qint64 before = memoryOf(m_peer.pid());
    qint64 longest = 0;
    int afterwards = 0;
    while (afterwards < 5) {
        const qint64 worked = workOf(m_peer.pid());
        if (m_peer.tell("names").isNull())
            break;
        longest = qMax(longest, workOf(m_peer.pid()) - worked);
        m_grown = qMax(m_grown, memoryOf(m_peer.pid()) - before);
        afterwards += isOver ? 1 : 0;
    }
    sender.join();
    QCOMPARE(sent, floodCalls);
    QCOMPARE(afterwards, 5);
    m_calls += sent;
    m_longest = qMax(m_longest, longest);
    QVERIFY2(longest <= longestWork, qPrintable(QString::number(longest)));
    QVERIFY2(m_grown <= mostMemory, qPrintable(QString::number(m_grown)));
}

void SharedFloodTest::goesOnWhileItIsCalled_data()
{
    QTest::addColumn<QDBusMessage>("message");
    QTest::newRow("for pages") << (call(floodedPath, floodedInterface, "GetItems") << 0U << 1000U);
    QTest::newRow("for properties") << (call(floodedPath, propertiesOfBus, "GetAll") << floodedInterface);
    QTest::newRow("for all objects") << call(
        floodedRoot, "org.freedesktop.DBus.ObjectManager", "GetManagedObjects");
    QTest::newRow("for what is not there") << call(floodedPath, floodedInterface, "Nothing");
}

void SharedFloodTest::goesOnWhileItIsCalled()
{
    QFETCH(QDBusMessage, message);
    watch(message);
    qInfo("reliability: exposure-bus-rate: %d calls, %lld ms of work at a time, %lld KB more", m_calls,
        m_longest, m_grown);
}

void SharedFloodTest::goesOnWhenItIsSentMuch()
{
    QDBusMessage message = call(floodedPath, floodedInterface, "GetItems");
    message << 0U << 1000U << QByteArray(60'000'000, 'x');
    const qint64 before = memoryOf(m_peer.pid());
    qint64 most = 0;
    for (int i = 0; i < 5; ++i) {
        const QDBusPendingCall answer = QDBusConnection::sessionBus().asyncCall(message, 30'000);
        while (!answer.isFinished()) {
            const qint64 worked = workOf(m_peer.pid());
            QVERIFY(!m_peer.tell("names").isNull());
            most = qMax(most, workOf(m_peer.pid()) - worked);
        }
        QCOMPARE(answer.reply().errorName(), "org.freedesktop.DBus.Error.UnknownMethod");
    }
    QVERIFY2(most <= longestWork, qPrintable(QString::number(most)));
    const qint64 grown = memoryOf(m_peer.pid()) - before;
    // One such message is kept as room for the next.
    QVERIFY2(grown < 200 * 1024, qPrintable(QString::number(grown)));
    qInfo("reliability: exposure-bus-size: 5 messages of 60 MB, %lld ms of work for one, %lld KB more", most,
        grown);
}

void SharedFloodTest::answersAfterwards()
{
    const QDBusPendingCall answer = QDBusConnection::sessionBus().asyncCall(
        call(floodedPath, floodedInterface, "GetItems") << 0U << 10U);
    QTRY_VERIFY(answer.isFinished());
    QCOMPARE(answer.reply().signature(), "a(ssssx)u");
}
} // namespace

KELVO_TEST(SharedFloodTest)
#include "SharedFloodTest.moc"
