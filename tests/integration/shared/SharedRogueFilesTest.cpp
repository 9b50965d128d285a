// SPDX-License-Identifier: MIT
#include "KelvoPlaylist.h"
#include "LogRecorder.h"
#include "RogueFiles.h"
#include "RogueListCase.h"
#include "TestGroup.h"
#include "TestRegistry.h"

#include <QAbstractItemModel>
#include <QAbstractItemModelTester>
#include <QPointer>
#include <QSet>
#include <QSignalSpy>
#include <QTest>

#include <unistd.h>

using namespace RogueFiles;
using MakeFile = std::function<QDBusUnixFileDescriptor()>;

namespace {
constexpr int listed = 150; // more than the first page shows

QByteArray right()
{
    return packed(RoguePeer::numbered(listed));
}

/// As long as a file of so many items, with these bytes at one place.
QByteArray withBytesAt(qsizetype place, const QByteArray &bytes)
{
    return right().replace(place, bytes.size(), bytes);
}

MakeFile memory(const QByteArray &bytes, int seals = allSeals)
{
    return [bytes, seals] {
        return inMemory(bytes, seals);
    };
}
} // namespace

// A playlist of another process whose items come in files, right and wrong ones. The first page is always right.
class SharedRogueFilesTest : public RogueListCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        RogueListCase::init();
        m_rogue->items = RoguePeer::numbered(listed);
    }

    void readsAFile()
    {
        m_rogue->items = RoguePeer::numbered(1800);
        m_rogue->items[1500]
            = {"odd", QString("a") + QChar(0xd800) + QChar(0) + "b", "not a url \x01", QString(), -7};
        m_rogue->items[1700].duration = 1LL << 60;
        m_rogue->onFile = giveList();
        KelvoPlaylist *playlist = offer(1800);
        LogRecorder log;
        QAbstractItemModelTester tester(
            playlist->itemModel(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        const QSignalSpy changes(playlist, &KelvoPlaylist::contentsChanged);
        QTRY_COMPARE(playlist->count(), 1800);
        QCOMPARE(changes.first(), QVariantList({0U, 0U, 100U})); // the first rows do not wait for the rest
        QVERIFY(changes.size() > 3); // slice by slice
        for (uint row = 0; row < 1800; ++row) {
            if (row != 1500)
                QCOMPARE(playlist->mediaInfoAt(row).title(), "Song " + QString::number(row));
        }
        QCOMPARE(playlist->mediaInfoAt(1799).url(), QUrl("http://h/1799"));
        QCOMPARE(playlist->mediaInfoAt(1799).mimeType(), "audio/mpeg");
        QCOMPARE(playlist->mediaInfoAt(1799).duration(), 1799);
        QCOMPARE(playlist->mediaInfoAt(1500).title(), m_rogue->items.at(1500).title);
        QCOMPARE(playlist->mediaInfoAt(1500).mimeType(), QString());
        QCOMPARE(playlist->mediaInfoAt(1500).duration(), -1);
        QCOMPARE(playlist->mediaInfoAt(1700).duration(), std::numeric_limits<int>::max());
        QCOMPARE(m_rogue->pages, 1);
        QCOMPARE(m_rogue->files, 1);
        QCOMPARE(log.warnings(), QStringList());
    }

    void asksForNoFileOfAShortList()
    {
        m_rogue->items = RoguePeer::numbered(99);
        KelvoPlaylist *playlist = offer(99);
        playlist->itemModel();
        QTRY_COMPARE(playlist->count(), 99);
        QTRY_COMPARE(m_rogue->pages, 2);
        QCOMPARE(m_rogue->files, 0);
    }

    void asksForPagesWhereAFileIsNotPossible()
    {
        m_rogue->onFile = [this](const QDBusMessage &call) {
            m_rogue->refuse(call, "Too long for a file", QDBusError::NotSupported);
        };
        KelvoPlaylist *playlist = offer(listed);
        LogRecorder log;
        playlist->itemModel();
        QTRY_COMPARE(playlist->count(), listed);
        QTRY_COMPARE(m_rogue->pages, 3);
        QCOMPARE(log.warnings(), QStringList());
        m_rogue->items.removeFirst();
        m_rogue->change(0, 2);
        QTRY_COMPARE(playlist->count(), listed - 1);
        QCOMPARE(m_rogue->files, 1);
    }

    void saysWhenItRefuses()
    {
        m_rogue->onFile = [this](const QDBusMessage &call) {
            m_rogue->refuse(call, "No\nfiles today");
        };
        KelvoPlaylist *playlist = offer(listed);
        LogRecorder log;
        playlist->itemModel();
        QTRY_COMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().first().contains("No files today"));
        QCOMPARE(playlist->count(), 100);
        QCOMPARE(m_rogue->files, 1);
    }

    void dropsAListOfOtherTypes_data()
    {
        QTest::addColumn<QVariantList>("answer");
        QTest::newRow("nothing") << QVariantList();
        QTest::newRow("a text") << QVariantList{"items", 150U, 1U};
        QTest::newRow("a number for the file") << QVariantList{3U, 150U, 1U};
        QTest::newRow("bytes") << QVariantList{right(), 150U, 1U};
        QTest::newRow("plain items") << QVariantList{QVariant::fromValue(WireItems()), 1U};
    }

    void dropsAListOfOtherTypes()
    {
        QFETCH(QVariantList, answer);
        dropsTheListFor(answer, "of the type");
    }

    void dropsAListOfFilesOfOtherTypes_data()
    {
        QTest::addColumn<QVariantList>("rest");
        QTest::newRow("no count and revision") << QVariantList();
        QTest::newRow("no revision") << QVariantList{150U};
        QTest::newRow("count is a text") << QVariantList{"150", 1U};
        QTest::newRow("count is negative") << QVariantList{-150, 1U};
        QTest::newRow("one too many") << QVariantList{150U, 1U, 1U};
    }

    void dropsAListOfFilesOfOtherTypes()
    {
        QFETCH(QVariantList, rest);
        dropsTheListFor(QVariantList{QVariant::fromValue(inMemory(right()))} + rest, "of the type");
    }

    void dropsAListOfWrongFiles_data()
    {
        QTest::addColumn<MakeFile>("make");
        QTest::addColumn<uint>("claimed");
        QTest::addColumn<QString>("warning");
        const auto add
            = [](const char *name, const MakeFile &make, const QString &warning, uint claimed = listed) {
                  QTest::newRow(name) << make << claimed << warning;
              };
        const QString changeable = "can still be changed";
        add("not sealed", memory(right(), 0), changeable);
        add("may be written", memory(right(), 0x7), changeable);
        add("may grow", memory(right(), 0xb), changeable);
        add("may shrink", memory(right(), 0xd), changeable);
        add("may be sealed further", memory(right(), 0xe), changeable);

        const QString elsewhere = "in no file in memory";
        const auto disk = [](const char *path) {
            return [path] {
                return onDisk(path);
            };
        };
        add("an ordinary file", disk("/proc/self/exe"), elsewhere);
        add("a folder", disk("/"), elsewhere);
        add("nothing for ever", disk("/dev/zero"), elsewhere);
        add("a pipe", endOfPipe, elsewhere);

        const QString size = "bytes";
        const auto hollowOf = [](qint64 bytes) {
            return [bytes] {
                return hollow(bytes);
            };
        };
        add("empty", memory({}), size);
        add("more than is taken", hollowOf(80'000'000), size);
        add("more than can be mapped", hollowOf(1LL << 45), size);
        add("claims 600,000 items", memory(right()), size, 600'000);
        add("claims 4,294,967,295 items", memory(right()), size, 4'294'967'295);

        const QString other = "holds something else";
        add("a byte too few", memory(right().chopped(1)), other);
        add("a number too few", memory(right().chopped(8)), other);
        add("half of it", memory(right().first(right().size() / 2)), other);
        add("a byte too many", memory(right() + '\0'), other);
        add("holds more than it claims", memory(right()), other, listed - 1);
        add("claims more than it holds", memory(right()), other, listed + 1);
        add("claims none", memory(right()), other, 0);
        add("garbage", memory(QByteArray(100'000, 'g')), other);
        add("ones", memory(QByteArray(100'000, '\xff')), other);
        add("a text longer than the file", memory(withBytesAt(0, "\xff\xff\xff\x0f")), other);
        add("a text of all there can be", memory(withBytesAt(0, "\xfe\xff\xff\xff")), other);
        add("a text of no size", memory(withBytesAt(0, "\xff\xff\xff\xff")), other);
        add("half a character", memory(withBytesAt(0, QByteArray("\x09\0\0\0", 4))), other);
    }

    void dropsAListOfWrongFiles()
    {
        QFETCH(MakeFile, make);
        QFETCH(uint, claimed);
        QFETCH(QString, warning);
        dropsTheListFor({QVariant::fromValue(make()), claimed, 1U}, warning);
    }

    /// It is not looked at what it does: the seals must be there.
    void dropsAListInAFileThatGrows()
    {
        const QDBusUnixFileDescriptor growing = inMemory(right(), 0xb);
        m_rogue->onFile = [&](const QDBusMessage &call) {
            m_rogue->reply(call, {QVariant::fromValue(growing), uint(listed), 1U});
            QCOMPARE(write(growing.fileDescriptor(), "more", 4), -1); // sealed against that
            QCOMPARE(ftruncate(growing.fileDescriptor(), 1'000'000), 0);
        };
        offer(listed)->itemModel();
        LogRecorder log;
        QTRY_VERIFY(!find("list"));
        QCOMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().first().contains("can still be changed"));
    }

    void takesAFileThatItsOwnerHasClosed()
    {
        m_rogue->onFile = [this](const QDBusMessage &call) {
            QDBusUnixFileDescriptor file = inMemory(right());
            m_rogue->reply(call, {QVariant::fromValue(file), uint(listed), 1U});
            file = {};
        };
        KelvoPlaylist *playlist = offer(listed);
        playlist->itemModel();
        QTRY_COMPARE(playlist->count(), listed);
        QCOMPARE(playlist->mediaInfoAt(listed - 1).title(), "Song 149");
    }

    void cutsAFileOf600000Items()
    {
        m_rogue->items = RoguePeer::numbered(600'000);
        // Made before it is asked for: to make it takes longer than it is waited for.
        const QVariantList answer{QVariant::fromValue(inMemory(packed(m_rogue->items))), 600'000U, 1U};
        m_rogue->onFile = [&](const QDBusMessage &call) {
            m_rogue->reply(call, answer);
        };
        KelvoPlaylist *playlist = offer(600'000);
        LogRecorder log;
        QCOMPARE(playlist->count(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(log.warnings().size(), 1, 60'000);
        QVERIFY(log.warnings().first().contains("only the first 100000 items"));
        QCOMPARE(playlist->count(), 100'000);
        QCOMPARE(playlist->mediaInfoAt(99'999).title(), "Song 99999");
        QCOMPARE(m_rogue->files, 1);
    }

    void cutsAFileOfEndlessTexts()
    {
        const WireItem heavy{"id", QString(300'000, 't'), "http://h/" + QString(300'000, 'u'), "a/b", 1};
        m_rogue->items = RoguePeer::numbered(100) + WireItems(57, heavy);
        m_rogue->onFile = giveList();
        KelvoPlaylist *playlist = offer(157);
        LogRecorder log;
        playlist->itemModel();
        QTRY_COMPARE_WITH_TIMEOUT(log.warnings().size(), 1, 60'000);
        QVERIFY(log.warnings().first().contains("too long"));
        QVERIFY(playlist->count() > 120);
        QVERIFY(playlist->count() < 157);
        QCOMPARE(playlist->mediaInfoAt(110).title().size(), 4096);
    }

    void saysWhenTheCountWasWrong()
    {
        m_rogue->onFile = giveList();
        KelvoPlaylist *playlist = offer(600'000);
        LogRecorder log;
        playlist->itemModel();
        QTRY_COMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().first().contains("announced 600000 items and gave 150"));
        QCOMPARE(playlist->count(), listed);
    }

    void givesEveryItemAnIdOfItsOwn()
    {
        for (int row = 90; row < listed; ++row)
            m_rogue->items[row].id = row % 2 == 0 ? "same" : "";
        m_rogue->onFile = giveList();
        KelvoPlaylist *playlist = offer(listed);
        playlist->itemModel();
        QTRY_COMPARE(playlist->count(), listed);
        QSet<QString> uuids;
        for (uint index = 0; index < listed; ++index)
            uuids.insert(playlist->mediaInfoAt(index).uuid());
        QCOMPARE(uuids.size(), listed);
        QVERIFY(!uuids.contains(QString()));
    }

    void beginsAgainWhenTheListChanges_data()
    {
        QTest::addColumn<bool>("owned");
        QTest::newRow("between page and file") << false;
        QTest::newRow("while its owner writes the file") << true;
    }

    void beginsAgainWhenTheListChanges()
    {
        QFETCH(bool, owned);
        m_rogue->onFile = [this, owned](const QDBusMessage &call) {
            if (m_rogue->files == 1) {
                m_rogue->items.removeFirst();
                ++m_rogue->revision;
            }
            if (m_rogue->files == 1 && owned)
                m_rogue->fail(call, "org.kelvo.Playlist1.Error.Changed");
            else
                m_rogue->replyFile(call, m_rogue->items, m_rogue->revision);
        };
        KelvoPlaylist *playlist = offer(listed);
        LogRecorder log;
        QAbstractItemModelTester tester(
            playlist->itemModel(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        QTRY_COMPARE(playlist->count(), listed - 1);
        for (uint row = 0; row < listed - 1; ++row)
            QCOMPARE(playlist->mediaInfoAt(row).title(), "Song " + QString::number(row + 1));
        QCOMPARE(m_rogue->files, 2);
        QCOMPARE(log.warnings(), QStringList());
    }

    void readsAgainWhatChangesWhileItReads()
    {
        m_rogue->items = RoguePeer::numbered(20'000);
        m_rogue->onFile = giveList();
        KelvoPlaylist *playlist = offer(20'000);
        QSignalSpy changes(playlist, &KelvoPlaylist::contentsChanged);
        playlist->itemModel();
        QTRY_VERIFY(changes.size() > 2); // in the middle of the file
        m_rogue->items = m_rogue->items.mid(0, 19'999);
        m_rogue->change(0, 2);
        QTRY_COMPARE_WITH_TIMEOUT(playlist->count(), 19'999, 30'000);
        QCOMPARE(m_rogue->files, 2);
    }

    void dropsAListWhoseRevisionGoesBack_data()
    {
        QTest::addColumn<bool>("inSignal");
        QTest::newRow("in the signal, while the file is read") << true;
        QTest::newRow("in the answer") << false;
    }

    void dropsAListWhoseRevisionGoesBack()
    {
        QFETCH(bool, inSignal);
        m_rogue->revision = 9;
        m_rogue->items = RoguePeer::numbered(20'000);
        m_rogue->onFile = [this, inSignal](const QDBusMessage &call) {
            m_rogue->replyFile(call, m_rogue->items, inSignal ? 9 : 8);
            if (inSignal)
                m_rogue->change(0, 8);
        };
        offer(20'000)->itemModel();
        LogRecorder log;
        QTRY_VERIFY(!find("list"));
        QCOMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().first().contains("revision went back"));
    }

    void vanishesInTheMiddleOfAFile_data()
    {
        QTest::addColumn<bool>("withdrawn");
        QTest::newRow("the process") << false;
        QTest::newRow("the list") << true;
    }

    void vanishesInTheMiddleOfAFile()
    {
        QFETCH(bool, withdrawn);
        m_rogue->items = RoguePeer::numbered(20'000);
        m_rogue->onFile = giveList();
        QPointer<KelvoPlaylist> playlist = offer(20'000);
        QSignalSpy changes(playlist, &KelvoPlaylist::contentsChanged);
        LogRecorder log;
        playlist->itemModel();
        QTRY_VERIFY(changes.size() > 2);
        if (withdrawn)
            m_rogue->withdraw(0);
        else
            m_rogue.reset();
        QTRY_VERIFY(!find("list"));
        QTRY_VERIFY(!playlist);
        QCOMPARE(log.warnings(), QStringList());
    }

    void leavesNoDescriptorsOpen()
    {
        const qsizetype before = openDescriptors();
        m_rogue->onFile = giveList();
        KelvoPlaylist *playlist = offer(listed);
        playlist->itemModel();
        QTRY_COMPARE(playlist->count(), listed);
        for (int round = 0; round < 20; ++round) {
            m_rogue->items.removeLast();
            m_rogue->change(0, m_rogue->revision + 1);
            QTRY_COMPARE(playlist->count(), int(m_rogue->items.size()));
        }
        QTRY_COMPARE(openDescriptors(), before);
    }

private:
    RoguePeer::Handler giveList()
    {
        return [this](const QDBusMessage &call) {
            m_rogue->replyFile(call, m_rogue->items, m_rogue->revision);
        };
    }

    void dropsTheListFor(const QVariantList &answer, const QString &warning)
    {
        m_rogue->onFile = [&](const QDBusMessage &call) {
            m_rogue->reply(call, answer);
        };
        QPointer<KelvoPlaylist> playlist = offer(listed);
        LogRecorder log;
        playlist->itemModel();
        QTRY_VERIFY(!find("list"));
        QTRY_VERIFY(!playlist);
        QCOMPARE(log.warnings().size(), 1);
        QVERIFY2(log.warnings().first().contains(warning), qPrintable(log.warnings().first()));
        QCOMPARE(m_rogue->pages, 1);
        QCOMPARE(m_rogue->files, 1);
    }
};

KELVO_TEST(SharedRogueFilesTest)
#include "SharedRogueFilesTest.moc"
