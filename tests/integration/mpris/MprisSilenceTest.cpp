// SPDX-License-Identifier: MIT
#include "LogRecorder.h"
#include "MprisCase.h"
#include "TestGroup.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>

#include <csignal>

// Players that do not answer. A question may take 300 ms, by the environment; only here, because a player that answers
// as fast as it can may be late by as much on a busy machine.
class MprisSilenceTest : public MprisCase
{
    Q_OBJECT
private Q_SLOTS:
    void commandWithoutAnAnswer()
    {
        FakeMprisPlayer player;
        player.onCall = [](const QDBusMessage &call) {
            return call.member() == u"Pause";
        };
        player.appear();
        QVERIFY(listen());
        QVERIFY(playing());
        m_renderer->pause();
        QTRY_COMPARE(m_heard->errorsOf(KelvoError::Timeout), 1);
        const QString message = m_heard->errors.constFirst().message();
        QVERIFY2(message.contains("Pause of Fake"), qPrintable(message));
        QCOMPARE(m_heard->states.size(), 0);
    }

    void itemWithoutAnAnswer()
    {
        FakeMprisPlayer player;
        player.onCall = [](const QDBusMessage &call) {
            return call.member() == u"OpenUri";
        };
        player.appear();
        QVERIFY(listen());
        m_renderer->playUri(QUrl("http://media/song"));
        QTRY_COMPARE(m_heard->errorsOf(KelvoError::Timeout), 1);
        QVERIFY(m_heard->errors.constFirst().message().contains("OpenUri of Fake"));
        QTRY_COMPARE(m_heard->state(), Stopped);
    }

    void frozenOneIsTakenOutAndComesBack()
    {
        const QString script = QStringLiteral("/usr/lib/mpv-mpris/mpris.so");
        if (QStandardPaths::findExecutable(QStringLiteral("mpv")).isEmpty() || !QFile::exists(script))
            QSKIP("mpv or its script for MPRIS is not installed");
        QProcess player;
        player.start("mpv",
            {"--no-config", "--script=" + script, "--ao=null", "--vo=null", "--idle=yes", "--no-terminal"});
        QTRY_VERIFY_WITH_TIMEOUT(find("mpv"), 20'000);
        LogRecorder log;
        ::kill(pid_t(player.processId()), SIGSTOP);
        QTRY_VERIFY(!find("mpv"));
        QCOMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().constFirst().contains("mpv does not answer any more"));
        ::kill(pid_t(player.processId()), SIGCONT);
        QTRY_VERIFY(find("mpv"));
        player.kill();
        QTRY_VERIFY(!find("mpv"));
        player.waitForFinished();
    }
};

KELVO_TEST(MprisSilenceTest)
#include "MprisSilenceTest.moc"
