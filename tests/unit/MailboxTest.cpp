// SPDX-License-Identifier: MIT
#include "Mailbox.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>
#include <QThread>

#include <thread>

/// Calls from other threads to an object that may go at any time.
class MailboxTest : public KelvoTestCase
{
    Q_OBJECT
private:
    QStringList m_calls;
    std::function<void()> noting(const char *call)
    {
        return [this, call] {
            m_calls.append(QString::fromLatin1(call));
        };
    }

private Q_SLOTS:
    void init() { m_calls.clear(); }

    void callsFromTheEventLoopInOrder()
    {
        QObject receiver;
        Mailbox mailbox(&receiver);
        QVERIFY(mailbox.post(noting("first")));
        QVERIFY(mailbox.post(noting("second")));
        QVERIFY(m_calls.isEmpty());
        QCoreApplication::processEvents();
        QCOMPARE(m_calls, (QStringList{QStringLiteral("first"), QStringLiteral("second")}));
    }

    void callsOnTheReceiversThread()
    {
        QObject receiver;
        const auto mailbox = std::make_shared<Mailbox>(&receiver);
        QThread *calledOn = nullptr;
        std::thread other(
            [mailbox, &calledOn] { mailbox->post([&calledOn] { calledOn = QThread::currentThread(); }); });
        other.join();
        QCoreApplication::processEvents();
        QCOMPARE(calledOn, QThread::currentThread());
    }

    void dropsWhatIsOver()
    {
        QObject receiver;
        Mailbox mailbox(&receiver);
        mailbox.post(noting("old"));
        mailbox.beginGeneration();
        mailbox.post(noting("new"));
        QCoreApplication::processEvents();
        QCOMPARE(m_calls, QStringList{QStringLiteral("new")});
    }

    void dropsWhatIsOverWhileItArrives()
    {
        QObject receiver;
        Mailbox mailbox(&receiver);
        mailbox.post([&mailbox] { mailbox.beginGeneration(); });
        mailbox.post(noting("old"));
        QCoreApplication::processEvents();
        QVERIFY(m_calls.isEmpty());
    }

    void takesNothingOnceClosed()
    {
        QObject receiver;
        Mailbox mailbox(&receiver);
        mailbox.post(noting("before"));
        mailbox.close();
        QVERIFY(!mailbox.post(noting("after")));
        QCoreApplication::processEvents();
        QCOMPARE(m_calls, QStringList{QStringLiteral("before")});
    }

    void dropsAllWithTheReceiver()
    {
        auto receiver = std::make_unique<QObject>();
        Mailbox mailbox(receiver.get());
        mailbox.post(noting("call"));
        mailbox.close();
        receiver.reset();
        QCoreApplication::processEvents();
        QVERIFY(m_calls.isEmpty());
    }

    void mayGoBeforeItsCallsArrive()
    {
        QObject receiver;
        auto mailbox = std::make_unique<Mailbox>(&receiver);
        mailbox->post(noting("call"));
        mailbox.reset();
        QCoreApplication::processEvents();
        QCOMPARE(m_calls, QStringList{QStringLiteral("call")});
    }
};

KELVO_TEST(MailboxTest)
#include "MailboxTest.moc"
