// SPDX-License-Identifier: MIT
#include "KelvoRegistry.h"
#include "KelvoShared.h"
#include "KelvoTestCase.h"
#include "MinimalObjects.h"
#include "RogueFiles.h"
#include "SharedLists.h"
#include "TestGroup.h"
#include "TestRegistry.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QFile>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <fcntl.h>
#include <sys/stat.h>

namespace {
const QString interface = QStringLiteral("org.kelvo.Playlist1");

/// A list of any length that costs nothing, and may be slow.
class LongList : public MinimalPlaylist
{
public:
    LongList(const QString &id, int items)
        : MinimalPlaylist(id, id)
        , length(items)
    {
    }
    int count() const override { return length; }
    KelvoMediaInfo mediaInfoAt(uint index) const override
    {
        if (onItem)
            onItem(index);
        KelvoMediaInfo info(QString::number(index), QUrl(url), QStringLiteral("Title"), 5);
        info.setMimeType(QStringLiteral("audio/ogg"));
        return info;
    }

    int length;
    QString url = QStringLiteral("http://h/");
    std::function<void(uint index)> onItem;
};

QDBusConnection observer()
{
    return QDBusConnection(QStringLiteral("observer"));
}

QDBusPendingCall begin(const QString &path, const QString &target, const QString &member)
{
    const QString service
        = QStringLiteral("org.kelvo.Playlists.pid%1").arg(QCoreApplication::applicationPid());
    return observer().asyncCall(QDBusMessage::createMethodCall(service, path, target, member), 30'000);
}

/// Asks this process over the bus; its event loop goes on meanwhile.
QDBusMessage answerOf(const QDBusPendingCall &call)
{
    return QTest::qWaitFor([&call] { return call.isFinished(); }, 30'000) ? call.reply() : QDBusMessage();
}

QString pathOf(const QString &id)
{
    const QDBusMessage reply
        = answerOf(begin("/org/kelvo/Playlists", "org.freedesktop.DBus.ObjectManager", "GetManagedObjects"));
    const auto objects = qdbus_cast<WireObjects>(reply.arguments().value(0));
    for (auto object = objects.begin(); object != objects.end(); ++object) {
        if (object.value().value(interface).value("Id") == id)
            return object.key().path();
    }
    return {};
}

QDBusMessage openItems(const QString &id)
{
    return answerOf(begin(pathOf(id), interface, "OpenItems"));
}

int descriptorOf(const QDBusMessage &reply)
{
    return reply.arguments().value(0).value<QDBusUnixFileDescriptor>().fileDescriptor();
}

QByteArray contentOf(const QDBusMessage &reply)
{
    QFile file;
    if (!file.open(dup(descriptorOf(reply)), QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        return "not readable";
    file.seek(0);
    return file.readAll();
}

/// Which file it is, whatever its descriptor.
ino_t fileOf(const QDBusMessage &reply)
{
    struct stat status = {};
    fstat(descriptorOf(reply), &status);
    return status.st_ino;
}

LongList *publishLong(const QString &id, int count)
{
    auto *list = new LongList(id, count);
    return KelvoShared::instance()->publishPlaylist(list) ? list : nullptr;
}
} // namespace

// The files of items that other programs get of this process, asked with a second connection.
class SharedFilesTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        qputenv("KELVO_PLUGINS", "");
        registerWireTypes();
        QVERIFY(QDBusConnection::connectToBus(QDBusConnection::SessionBus, "observer").isConnected());
        QVERIFY(KelvoShared::instance()->initTracking(registry()));
        QVERIFY(KelvoShared::instance()->publishPlaylist(SharedLists::make("first", "First", 0)));
        QTRY_VERIFY(!pathOf("first").isEmpty());
    }

    void cleanup()
    {
        for (KelvoPlaylist *playlist : registry()->allPlaylists())
            KelvoShared::instance()->unPublishPlaylist(playlist->uuid());
    }

    void givesTheWholeList()
    {
        QVERIFY(KelvoShared::instance()->publishPlaylist(SharedLists::make("whole", "Whole", 1234)));
        const QDBusMessage reply = openItems("whole");
        QCOMPARE(reply.signature(), "huu");
        QCOMPARE(reply.arguments().at(1), 1234U);
        QCOMPARE(reply.arguments().at(2), 1U);
        WireItems expected;
        for (uint row = 0; row < 1234; ++row) {
            const KelvoMediaInfo info = find("whole")->mediaInfoAt(row);
            expected.append(
                {info.uuid(), info.title(), info.url().toEncoded(), info.mimeType(), info.duration()});
        }
        QCOMPARE(expected.last().title, "Song 1233");
        QCOMPARE(contentOf(reply), RogueFiles::packed(expected));
    }

    void givesAnEmptyList()
    {
        QVERIFY(publishLong("empty", 0));
        const QDBusMessage reply = openItems("empty");
        QCOMPARE(reply.arguments().value(1), 0U);
        QCOMPARE(contentOf(reply), QByteArray());
        QCOMPARE(fcntl(descriptorOf(reply), F_GET_SEALS), RogueFiles::allSeals);
    }

    void sealsItsFiles()
    {
        QVERIFY(publishLong("sealed", 10));
        const QDBusMessage reply = openItems("sealed");
        const int file = descriptorOf(reply);
        QCOMPARE(fcntl(file, F_GET_SEALS), RogueFiles::allSeals);
        QCOMPARE(pwrite(file, "x", 1, 0), -1);
        QCOMPARE(ftruncate(file, 0), -1);
        QCOMPARE(ftruncate(file, 1'000'000), -1);
    }

    void cutsTextsThatNobodyTakes()
    {
        LongList *list = publishLong("odd", 3);
        QVERIFY(list);
        list->url = "http://h/" + QString(200'000, 'u');
        const QDBusMessage reply = openItems("odd");
        QCOMPARE(contentOf(reply),
            RogueFiles::packed({{"0", "Title", "", "audio/ogg", 5}, {"1", "Title", "", "audio/ogg", 5},
                {"2", "Title", "", "audio/ogg", 5}}));
    }

    void givesOneFileToAllUntilTheListChanges()
    {
        LongList *list = publishLong("same", 500);
        QVERIFY(list);
        const QDBusMessage first = openItems("same");
        const QDBusMessage second = openItems("same");
        QCOMPARE(fileOf(second), fileOf(first));
        list->length = 499;
        Q_EMIT list->contentsChanged(499, 1, 0);
        const QDBusMessage third = openItems("same");
        QVERIFY(fileOf(third) != fileOf(first));
        QCOMPARE(third.arguments().at(1), 499U);
        QCOMPARE(third.arguments().at(2), 2U);
        QCOMPARE(contentOf(first).size(), contentOf(third).size() + 24 + 2 * (3 + 5 + 9 + 9));
    }

    void refusesWhatNoFileHolds_data()
    {
        QTest::addColumn<int>("items");
        QTest::addColumn<int>("characters");
        QTest::addColumn<bool>("given");
        QTest::newRow("most items") << 100'000 << 9 << true;
        QTest::newRow("one more") << 100'001 << 9 << false;
        QTest::newRow("600,000") << 600'000 << 9 << false;
        QTest::newRow("long texts") << 400 << 80'000 << true;
        QTest::newRow("too long texts") << 500 << 80'000 << false;
    }

    void refusesWhatNoFileHolds()
    {
        QFETCH(int, items);
        QFETCH(int, characters);
        LongList *list = publishLong("bounds", items);
        QVERIFY(list);
        list->url = "http://h/" + QString(characters - 9, 'u');
        const QDBusMessage reply = openItems("bounds");
        QTEST(reply.type() == QDBusMessage::ReplyMessage, "given");
        if (reply.type() == QDBusMessage::ErrorMessage)
            QCOMPARE(reply.errorName(), "org.freedesktop.DBus.Error.NotSupported");
        else
            QCOMPARE(reply.arguments().at(1).toInt(), items);
    }

    void doesNotHoldUpTheEventLoop()
    {
        LongList *list = publishLong("slices", 2000);
        QVERIFY(list);
        list->onItem = [](uint) {
            QThread::usleep(100); // 200 ms for all
        };
        int turns = 0;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&turns] { ++turns; });
        const QString path = pathOf("slices");
        timer.start(0);
        const QDBusMessage reply = answerOf(begin(path, interface, "OpenItems"));
        QCOMPARE(reply.arguments().value(1), 2000U);
        QVERIFY2(turns >= 20, qPrintable(QString::number(turns)));
    }

    void saysWhenTheListChangesMeanwhile()
    {
        LongList *list = publishLong("moving", 2000);
        QVERIFY(list);
        list->onItem = [list](uint index) {
            if (index != 1000)
                return;
            QThread::msleep(10); // ends this slice
            list->onItem = nullptr;
            QMetaObject::invokeMethod(
                list, [list] { Q_EMIT list->contentsChanged(0, 1, 1); }, Qt::QueuedConnection);
        };
        QCOMPARE(openItems("moving").errorName(), "org.kelvo.Playlist1.Error.Changed");
        const QDBusMessage reply = openItems("moving");
        QCOMPARE(reply.arguments().value(1), 2000U);
        QCOMPARE(reply.arguments().value(2), 2U);
    }

    void answersWhenTheListGoesMeanwhile()
    {
        LongList *list = publishLong("going", 2000);
        QVERIFY(list);
        list->onItem = [](uint index) {
            if (index != 1000)
                return;
            QThread::msleep(10); // ends this slice
            QMetaObject::invokeMethod(
                KelvoShared::instance(), [] { KelvoShared::instance()->unPublishPlaylist("going"); },
                Qt::QueuedConnection);
        };
        QCOMPARE(openItems("going").errorName(), "org.freedesktop.DBus.Error.UnknownObject");
    }

    void givesPagesWhileItWritesAFile()
    {
        LongList *list = publishLong("busy", 2000);
        QVERIFY(list);
        list->onItem = [](uint) {
            QThread::usleep(500); // a second for all
        };
        const QString path = pathOf("busy");
        const QDBusPendingCall file = begin(path, interface, "OpenItems");
        const QString service
            = QStringLiteral("org.kelvo.Playlists.pid%1").arg(QCoreApplication::applicationPid());
        auto call = QDBusMessage::createMethodCall(service, path, interface, "GetItems");
        call << 0U << 10U;
        QCOMPARE(answerOf(observer().asyncCall(call)).signature(), "a(ssssx)u");
        QVERIFY(!file.isFinished());
        QCOMPARE(answerOf(file).arguments().value(1), 2000U);
    }

    void standsAFloodOfRequests()
    {
        QVERIFY(publishLong("flooded", 2000));
        const QString path = pathOf("flooded");
        QList<QDBusPendingCall> calls;
        for (int number = 0; number < 300; ++number)
            calls.append(begin(path, interface, "OpenItems"));
        int served = 0;
        int refused = 0;
        for (const QDBusPendingCall &call : calls) {
            const QDBusMessage reply = answerOf(call);
            served += reply.signature() == "huu";
            refused += reply.errorName() == "org.freedesktop.DBus.Error.LimitsExceeded";
        }
        QCOMPARE(served + refused, 300);
        QVERIFY(served >= 64);
    }

    void keepsOneFileOpenAtMost()
    {
        const auto before = RogueFiles::openDescriptors();
        for (int number = 0; number < 20; ++number) {
            const QString id = QStringLiteral("many%1").arg(number);
            QVERIFY(publishLong(id, 10));
            QCOMPARE(openItems(id).signature(), "huu");
        }
        QTRY_VERIFY(RogueFiles::openDescriptors() <= before + 1);
    }
};

KELVO_TEST(SharedFilesTest)
#include "SharedFilesTest.moc"
