// SPDX-License-Identifier: MIT
// What the renderer makes of what others do to its player.
#include "RemoteCase.h"
#include "TestGroup.h"

namespace {
class RemoteOthersTest : public RemoteCase
{
    Q_OBJECT
private Q_SLOTS:
    void stopElsewhereIsNoEnd();
    void goesOnWhenResumedElsewhere();
    void pauseElsewhereIsShown();
    void anotherControllersItemIsShown();
    void anotherControllersAddressMustBeOfMedia_data();
    void anotherControllersAddressMustBeOfMedia();
    void anotherControllersItemEndsOurPlaylist();
    void anotherControllersItemIsDriven();
    void playTakesOurPlaylistUpAgain();
    void playingWithoutAnItemIsShown();
    void previousInAnotherControllersItemBeginsItAgain();
    void whatGoesOnIsToldToWhoeverChoosesIt();
    void ourItemIsToldAgain();
    void onlyTheStateIsToldOfAStoppedPlayer();
};

void RemoteOthersTest::stopElsewhereIsNoEnd()
{
    assign(2);
    m_renderer->play();
    say(Playing);
    say(Stopped);
    flush();
    QCOMPARE(m_heard->states, (States{Transitioning, Playing, Stopped}));
    QCOMPARE(m_heard->completed, 0);
    // Nothing is fought, nothing follows.
    QCOMPARE(m_transport->calls, QStringList{"load http://media/0"});
    QCOMPARE(position(), 0.0);
}

void RemoteOthersTest::goesOnWhenResumedElsewhere()
{
    playing();
    say(Stopped);
    say(Playing);
    flush();
    QCOMPARE(m_heard->states, (States{Stopped, Transitioning, Playing}));
}

void RemoteOthersTest::pauseElsewhereIsShown()
{
    playing();
    say(Paused);
    say(Playing);
    flush();
    QCOMPARE(m_heard->states, (States{Paused, Playing}));
    QCOMPARE(m_transport->calls, QStringList());
}

void RemoteOthersTest::anotherControllersItemIsShown()
{
    playing();
    Q_EMIT m_transport->replaced(KelvoMediaInfo({}, QUrl("http://elsewhere/song")));
    Q_EMIT m_transport->stateReported(0, Paused);
    Q_EMIT m_transport->fact(0, QStringLiteral("title"), {QStringLiteral("Theirs")});
    flush();
    QCOMPARE(m_heard->media.size(), 1);
    QCOMPARE(m_heard->media.constFirst().index, -1);
    QCOMPARE(m_heard->media.constFirst().content.url, QUrl("http://elsewhere/song"));
    QVERIFY(!m_heard->playlists.constLast());
    QCOMPARE(m_heard->states, States{Paused});
    QCOMPARE(m_heard->metadata("title"), QVariant(QStringLiteral("Theirs")));
}

void RemoteOthersTest::anotherControllersAddressMustBeOfMedia_data()
{
    QTest::addColumn<QUrl>("url");
    QTest::addColumn<bool>("isOfMedia");
    QTest::newRow("web") << QUrl("https://elsewhere/song") << true;
    QTest::newRow("file") << QUrl("file:///song") << true;
    QTest::newRow("player's own") << QUrl("radio:7") << true;
    QTest::newRow("script") << QUrl("JAVASCRIPT:alert(1)") << false;
    QTest::newRow("other script") << QUrl("vbscript:x") << false;
    QTest::newRow("content") << QUrl("data:audio/mpeg;base64,AAAA") << false;
    QTest::newRow("relative") << QUrl("song.mp3") << false;
    QTest::newRow("without a scheme") << QUrl("//elsewhere/song") << false;
    QTest::newRow("none") << QUrl() << false;
}

void RemoteOthersTest::anotherControllersAddressMustBeOfMedia()
{
    QFETCH(QUrl, url);
    QFETCH(bool, isOfMedia);
    KelvoMediaInfo item({}, url, QStringLiteral("Theirs"));
    item.setMimeType(QStringLiteral("audio/mpeg"));
    Q_EMIT m_transport->replaced(item);
    flush();
    QCOMPARE(m_heard->media.size(), 1);
    QCOMPARE(m_heard->media.constFirst().content.url, isOfMedia ? url : QUrl());
    QCOMPARE(m_heard->media.constFirst().content.mimeType, QStringLiteral("audio/mpeg"));
}

void RemoteOthersTest::anotherControllersItemEndsOurPlaylist()
{
    assign(3);
    m_renderer->play();
    say(Playing);
    Q_EMIT m_transport->replaced(KelvoMediaInfo({}, QUrl("http://elsewhere/song")));
    Q_EMIT m_transport->stateReported(0, Playing);
    Q_EMIT m_transport->ended(0);
    flush();
    QCOMPARE(m_transport->items.size(), 1);
    QCOMPARE(m_heard->state(), Stopped);
    // Edits of a playlist that is not in play change nothing.
    m_playlist->clear();
    flush();
    QCOMPARE(m_heard->states, (States{Transitioning, Playing, Stopped}));
}

void RemoteOthersTest::anotherControllersItemIsDriven()
{
    Q_EMIT m_transport->replaced(KelvoMediaInfo({}, QUrl("http://elsewhere/song")));
    Q_EMIT m_transport->stateReported(0, Playing);
    Q_EMIT m_transport->durationReported(0, 60);
    m_renderer->pause();
    Q_EMIT m_transport->stateReported(0, Paused);
    m_renderer->resume();
    m_renderer->setPosition(100, KelvoRenderer::SeekAbsolute);
    m_renderer->stop();
    QCOMPARE(m_transport->calls, (QStringList{"pause", "resume", "seek 60", "unload"}));
    flush();
    QCOMPARE(m_heard->states, (States{Transitioning, Playing, Paused, Stopped}));
}

void RemoteOthersTest::playTakesOurPlaylistUpAgain()
{
    assign(3);
    m_renderer->gotoIndex(1);
    say(Playing);
    Q_EMIT m_transport->replaced(KelvoMediaInfo({}, QUrl("http://elsewhere/song")));
    Q_EMIT m_transport->stateReported(0, Playing);
    m_renderer->play();
    say(Playing);
    flush();
    QCOMPARE(m_transport->calls.constLast(), QStringLiteral("load http://media/1"));
    QCOMPARE(m_heard->media.constLast().index, 1);
    QCOMPARE(m_heard->playlists.constLast(), m_playlist.get());
}

void RemoteOthersTest::playingWithoutAnItemIsShown()
{
    Q_EMIT m_transport->stateReported(0, Stopped);
    Q_EMIT m_transport->stateReported(0, Playing);
    flush();
    QCOMPARE(m_heard->states, (States{Transitioning, Playing}));
    QCOMPARE(m_heard->media.size(), 1);
    QCOMPARE(m_heard->media.constFirst().index, -1);
}

void RemoteOthersTest::previousInAnotherControllersItemBeginsItAgain()
{
    Q_EMIT m_transport->replaced(KelvoMediaInfo({}, QUrl("http://elsewhere/song")));
    Q_EMIT m_transport->stateReported(0, Playing);
    m_renderer->previous();
    QCOMPARE(m_transport->calls, QStringList{"seek 0"});
    m_renderer->next();
    QCOMPARE(m_transport->calls.constLast(), QStringLiteral("unload"));
}

void RemoteOthersTest::whatGoesOnIsToldToWhoeverChoosesIt()
{
    Q_EMIT m_transport->replaced(KelvoMediaInfo({}, QUrl("http://elsewhere/song")));
    Q_EMIT m_transport->stateReported(0, Playing);
    for (const char *title : {"First", "Second"})
        Q_EMIT m_transport->fact(0, QStringLiteral("title"), {QString::fromLatin1(title)});
    Q_EMIT m_transport->durationReported(0, 59.6);
    flush();
    m_heard->clear();

    m_heard->expectSameState();
    m_renderer->setKelvoProperty(KelvoRenderer::PropertyXid, 7U);
    m_renderer->setKelvoProperty(KelvoRenderer::PropertyAutopaint, false);
    flush();
    QCOMPARE(m_heard->states, States{Playing});
    QCOMPARE(m_heard->media.size(), 1);
    QCOMPARE(m_heard->media.constFirst().index, -1);
    QCOMPARE(m_heard->media.constFirst().content.url, QUrl("http://elsewhere/song"));
    QCOMPARE(m_heard->metadata("title"), QVariant(QStringLiteral("Second")));
    QCOMPARE(m_heard->metadata("duration"), QVariant(60));
    QVERIFY(m_heard->errors.isEmpty());
}

void RemoteOthersTest::ourItemIsToldAgain()
{
    assign(3);
    m_renderer->gotoIndex(1);
    m_renderer->play();
    say(Playing);
    say(Paused);
    flush();
    m_heard->clear();
    m_renderer->setKelvoProperty(KelvoRenderer::PropertyXid, 7U);
    flush();
    // Whoever asks for the position asks from Playing on.
    QCOMPARE(m_heard->states, (States{Playing, Paused}));
    QCOMPARE(m_heard->media.size(), 1);
    QCOMPARE(m_heard->media.constFirst().index, 1);
}

void RemoteOthersTest::onlyTheStateIsToldOfAStoppedPlayer()
{
    playing();
    Q_EMIT m_transport->fact(m_transport->epoch(), QStringLiteral("title"), {QStringLiteral("Ours")});
    m_renderer->stop();
    flush();
    m_heard->clear();
    m_heard->expectSameState();
    m_renderer->setKelvoProperty(KelvoRenderer::PropertyXid, 7U);
    flush();
    QCOMPARE(m_heard->states, States{Stopped});
    QVERIFY(m_heard->media.isEmpty());
    QVERIFY(!m_heard->metadata("title").isValid());
}
} // namespace

KELVO_TEST(RemoteOthersTest)
#include "RemoteOthersTest.moc"
