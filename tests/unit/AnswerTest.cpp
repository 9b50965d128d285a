// SPDX-License-Identifier: MIT
#include "KelvoAnswer.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QRegularExpression>
#include <QTest>
#include <QThread>

namespace {
class Receiver : public QObject
{
    Q_OBJECT
public:
    QList<QVariantList> calls;
    QThread *thread = nullptr;

public Q_SLOTS:
    void status(QString playlistId, uint index, int state, const QString &objectId)
    {
        thread = QThread::currentThread();
        calls.append(QVariantList{playlistId, index, state, objectId});
    }
    void property(QString &key, QVariant &value) { calls.append(QVariantList{key, value}); }
    void position(uint seconds) { calls.append(QVariantList{seconds}); }
};
} // namespace

class AnswerTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void arrivesFromTheEventLoopOnly()
    {
        Receiver receiver;
        const KelvoAnswer answer(&receiver, "position(uint)");
        answer.deliver({7u});
        QVERIFY(receiver.calls.isEmpty());
        QTRY_COMPARE(receiver.calls, (QList<QVariantList>{{7u}}));
    }

    void toleratesBlanksAndConstReferences_data()
    {
        QTest::addColumn<QByteArray>("slot");
        QTest::newRow("plain") << QByteArray("status(QString,uint,int,QString)");
        QTest::newRow("blanks") << QByteArray(" status( QString, uint , int,  QString )");
        QTest::newRow("const reference") << QByteArray("status(const QString &, uint, int, const QString&)");
    }

    void toleratesBlanksAndConstReferences()
    {
        QFETCH(QByteArray, slot);
        Receiver receiver;
        KelvoAnswer(&receiver, slot.constData()).deliver({"list", 3u, 1, "item"});
        QTRY_COMPARE(receiver.calls, (QList<QVariantList>{{"list", 3u, 1, "item"}}));
    }

    void callsSlotsWithPlainReferences()
    {
        Receiver receiver;
        KelvoAnswer(&receiver, "property(QString&,QVariant&)").deliver({"signedIn", true});
        QTRY_COMPARE(receiver.calls, (QList<QVariantList>{{"signedIn", true}}));
    }

    void arrivesOnce()
    {
        Receiver receiver;
        const KelvoAnswer answer(&receiver, "position(uint)");
        const KelvoAnswer copy = answer;
        answer.deliver({1u});
        copy.deliver({2u});
        answer.deliver({3u});
        KelvoAnswer(&receiver, "position(uint)").deliver({9u}); // behind them in the queue
        QTRY_COMPARE(receiver.calls, (QList<QVariantList>{{1u}, {9u}}));
    }

    void convertsNumbers()
    {
        Receiver receiver;
        KelvoAnswer(&receiver, "position(uint)").deliver({42});
        QTRY_COMPARE(receiver.calls, (QList<QVariantList>{{42u}}));
    }

    void warnsOfAnAnswerThatDoesNotFit()
    {
        Receiver receiver;
        LogRecorder log;
        KelvoAnswer(&receiver, "position(uint)").deliver({QStringList{"no", "number"}});
        QTRY_COMPARE(
            log.warnings(), QStringList("An answer for position(uint) does not fit its parameter 0"));
        KelvoAnswer(&receiver, "position(uint)").deliver({});
        QCOMPARE(log.warnings().last(), "An answer for position(uint) has 0 values");
        QVERIFY(receiver.calls.isEmpty());
    }

    void warnsOfAMissingSlotAtOnce()
    {
        Receiver receiver;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^No such slot .*Receiver::nothing\\(int\\)$"));
        const KelvoAnswer answer(&receiver, "nothing(int)");
        answer.deliver({1});
    }

    void forgetsAReceiverThatIsGone()
    {
        auto receiver = std::make_unique<Receiver>();
        const KelvoAnswer answer(receiver.get(), "position(uint)");
        answer.deliver({1u});
        receiver.reset();
        Receiver later;
        KelvoAnswer(&later, "position(uint)").deliver({2u});
        QTRY_COMPARE(later.calls.size(), 1);
    }

    void comesToTheGuiThreadFromAnyThread()
    {
        Receiver receiver;
        const KelvoAnswer answer(&receiver, "status(QString,uint,int,QString)");
        const std::unique_ptr<QThread> thread(QThread::create([answer] { answer.deliver({"", 0u, 0, ""}); }));
        thread->start();
        QTRY_COMPARE(receiver.calls.size(), 1);
        QCOMPARE(receiver.thread, QThread::currentThread());
        thread->wait();
    }

    void nobodyWaits()
    {
        Receiver receiver;
        KelvoAnswer(nullptr, "position(uint)").deliver({1u});
        KelvoAnswer(&receiver, nullptr).deliver({2u});
        KelvoAnswer(&receiver, "position(uint)").deliver({3u}); // behind them in the queue
        QTRY_COMPARE(receiver.calls, (QList<QVariantList>{{3u}}));
    }
};

KELVO_TEST(AnswerTest)
#include "AnswerTest.moc"
