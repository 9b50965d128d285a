// SPDX-License-Identifier: MIT
// What an engine is told and what is made of what it says. That this makes a renderer is the contract's business.
#include "ItemRenderer.h"
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoTestCase.h"
#include "RendererProbe.h"
#include "ScriptedEngine.h"
#include "TestGroup.h"

#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

namespace {
using enum KelvoRenderer::State;
using States = QList<KelvoRenderer::State>;

const QUrl song("http://media/song");
const QUrl list("http://media/list.pls");
const QList<QUrl> listEntries{QUrl("http://media/a"), QUrl("http://media/b"), QUrl("http://media/c")};

class PlaybackTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void announcedListIsReadFirst();
    void whatIsNoListPlaysAsAMedium();
    void listThatCannotBeReadFails();
    void filesOfOtherMachinesAreToldAsSuch();
    void mediumThatFailsIsLookedInto();
    void mediumThatIsNoListKeepsItsFailure();
    void readingIsCancelled();
    void pauseWhileAListIsRead();
    void entriesThatDoNotPlayArePassedOver();
    void listOfNothingThatPlays();
    void skipsFromEntryToEntry();
    void endThatMeetsAnEditOfItsItem();
    void endThatMeetsAnotherEdit();
    void failureThatMeetsAnEditOfItsItem();
    void speedIsTakenAlong_data();
    void speedIsTakenAlong();
    void speedThatIsNotYetReportedIsTakenAlong();
    void refusesInTheEnginesWords();
    void windowIsOfNoUse();
    void positionCountsAsTheSecondThatItIsCloseTo_data();
    void positionCountsAsTheSecondThatItIsCloseTo();
    void pauseDecidedByTheEngineHoldsForTheNextItem();
    void statusAfterPlayingNothing();
    void statusKeepsTheItemThatPlayedLast();
    void statusAfterAUri();
    void statusAfterAUriAtTheEndOfThePlaylist();

private:
    void flush() { QCoreApplication::processEvents(); }
    void say(KelvoRenderer::State state) { Q_EMIT m_engine->stateReached(m_engine->epoch(), state); }
    void end(bool progressed = true) { Q_EMIT m_engine->ended(m_engine->epoch(), progressed); }
    void fail(KelvoError::Code code)
    {
        Q_EMIT m_engine->failed(m_engine->epoch(), code, QStringLiteral("words"), false);
    }
    void answerList(const QList<QUrl> &found, const KelvoError &problem = {})
    {
        Q_EMIT m_engine->listRead(m_engine->readEpoch, found, problem);
    }
    void assign(int count);
    /// The answer to getStatus(), as "playlist index object", with what the playlist calls itself and its items.
    QString status();

    ScriptedEngine *m_engine = nullptr;
    std::unique_ptr<ItemRenderer> m_renderer;
    std::unique_ptr<RendererProbe> m_heard;
    std::unique_ptr<KelvoGeneralSourcePlaylist> m_playlist;
};

void PlaybackTest::init()
{
    KelvoTestCase::init();
    auto engine = std::make_unique<ScriptedEngine>();
    m_engine = engine.get();
    m_renderer = std::make_unique<ItemRenderer>(std::move(engine), QStringLiteral("uuid"));
    m_heard = std::make_unique<RendererProbe>(*m_renderer);
}

void PlaybackTest::cleanup()
{
    QCOMPARE(m_heard->violations, QStringList());
    m_renderer.reset();
    m_heard.reset();
    m_playlist.reset();
}

void PlaybackTest::assign(int count)
{
    m_playlist = std::make_unique<KelvoGeneralSourcePlaylist>(
        KelvoPlaylist::getNewPlaylistId(), QStringLiteral("list"), QStringLiteral("KelvoTrackerSource"));
    auto *model = new QStandardItemModel(m_playlist.get());
    for (int i = 0; i < count; ++i) {
        model->appendRow({new QStandardItem(QString::number(i)), new QStandardItem(QString::number(i)),
            new QStandardItem(QStringLiteral("http://media/%1").arg(i))});
    }
    m_playlist->setUnderlyingModel(model);
    m_renderer->assignPlaylist(m_playlist.get());
}

QString PlaybackTest::status()
{
    m_heard->statusAnswers.clear();
    m_renderer->getStatus(m_heard.get(), "statusAnswer(QString,uint,int,QString)");
    if (!QTest::qWaitFor([this] { return m_heard->statusAnswers.size() == 1; }))
        return QStringLiteral("no answer");
    const RendererProbe::Status answer = m_heard->statusAnswers.constFirst();
    const QString name = answer.playlistId == m_playlist->uuid() ? m_playlist->name() : answer.playlistId;
    const int object = answer.objectId.isEmpty() ? -1 : m_playlist->indexOf(answer.objectId);
    return QStringLiteral("%1 %2 %3").arg(name).arg(answer.index).arg(object);
}

void PlaybackTest::announcedListIsReadFirst()
{
    QSignalSpy scanning(m_renderer.get(), &KelvoRenderer::scanningInfo);
    m_renderer->playUri(list);
    QCOMPARE(m_engine->calls, (QStringList{"unload", "read http://media/list.pls"}));
    answerList(listEntries);
    QCOMPARE(m_engine->calls.constLast(), QStringLiteral("load http://media/a"));
    QCOMPARE(m_engine->items.constLast().entry, 0);
    flush();
    QCOMPARE(scanning.size(), 1);
    QCOMPARE(scanning.constLast().constFirst().toFloat(), 0.0F);
    say(Playing);
    end();
    QCOMPARE(m_engine->calls.constLast(), QStringLiteral("load http://media/b"));
    QCOMPARE(m_engine->items.constLast().entry, 1);
    flush();
    QCOMPARE(scanning.size(), 2);
    QCOMPARE(scanning.constLast().constFirst().toFloat(), 1.0F);
    QCOMPARE(m_heard->media.constLast().content.url, listEntries.at(1));
    QCOMPARE(m_heard->media.constLast().index, -1);
}

void PlaybackTest::whatIsNoListPlaysAsAMedium()
{
    m_renderer->playUri(list);
    answerList({});
    QCOMPARE(m_engine->calls.constLast(), QStringLiteral("load http://media/list.pls"));
    // It was looked into already.
    fail(KelvoError::UnsupportedType);
    flush();
    QCOMPARE(m_heard->errorsOf(KelvoError::UnsupportedType), 1);
    QCOMPARE(m_heard->state(), Stopped);
}

void PlaybackTest::listThatCannotBeReadFails()
{
    m_renderer->playUri(list);
    answerList({}, {KelvoError::PlaylistTooLarge, QStringLiteral("too large")});
    flush();
    QCOMPARE(m_heard->errors.size(), 1);
    QCOMPARE(m_heard->errors.constFirst().code(), KelvoError::PlaylistTooLarge);
    QCOMPARE(m_heard->errors.constFirst().message(), QStringLiteral("too large"));
    QCOMPARE(m_heard->states, (States{Transitioning, Stopped}));
    QCOMPARE(m_engine->items.size(), 0);
}

void PlaybackTest::filesOfOtherMachinesAreToldAsSuch()
{
    m_renderer->playUri(QUrl("file://cellar/music/song"));
    QTRY_COMPARE(m_heard->errors.size(), 1); // told from the event loop, twice over
    QCOMPARE(m_heard->errors.constFirst().code(), KelvoError::OnAnotherMachine);
    QCOMPARE(m_heard->errors.constFirst().message(), QStringLiteral("file://cellar/music/song"));
    QCOMPARE(m_heard->states, (States{Transitioning, Stopped}));
    QCOMPARE(m_engine->items.size(), 0);
    for (const char *own : {"file:///music/song", "file://localhost/music/song"}) {
        m_renderer->playUri(QUrl(QString::fromLatin1(own)));
        QCOMPARE(m_engine->calls.constLast(), QStringLiteral("load ") + QLatin1String(own));
    }
    flush();
    QCOMPARE(m_heard->errors.size(), 1);
}

void PlaybackTest::mediumThatFailsIsLookedInto()
{
    m_renderer->playUri(song);
    fail(KelvoError::UnsupportedType);
    QCOMPARE(m_engine->calls.constLast(), QStringLiteral("read http://media/song"));
    answerList(listEntries);
    QCOMPARE(m_engine->calls.constLast(), QStringLiteral("load http://media/a"));
    say(Playing);
    flush();
    QCOMPARE(m_heard->errors.size(), 0);
    QCOMPARE(m_heard->states, (States{Transitioning, Playing}));
}

void PlaybackTest::mediumThatIsNoListKeepsItsFailure()
{
    m_renderer->playUri(song);
    fail(KelvoError::UnsupportedType);
    answerList({}, {KelvoError::InvalidPlaylist, QStringLiteral("other words")});
    flush();
    QCOMPARE(m_heard->errors.size(), 1);
    QCOMPARE(m_heard->errors.constFirst().code(), KelvoError::UnsupportedType);
    QCOMPARE(m_heard->errors.constFirst().message(), QStringLiteral("words"));
}

void PlaybackTest::readingIsCancelled()
{
    m_renderer->playUri(list);
    m_renderer->stop();
    QVERIFY(m_engine->calls.contains(QStringLiteral("cancel reading")));
    answerList(listEntries);
    flush();
    QCOMPARE(m_engine->items.size(), 0);
    QCOMPARE(m_heard->states, (States{Transitioning, Stopped}));
}

void PlaybackTest::pauseWhileAListIsRead()
{
    m_renderer->playUri(list);
    m_renderer->pause();
    flush();
    QCOMPARE(m_heard->states, (States{Transitioning, Paused}));
    answerList(listEntries);
    QVERIFY(m_engine->items.constLast().paused);
    QVERIFY(!m_engine->calls.contains(QStringLiteral("pause")));
}

void PlaybackTest::entriesThatDoNotPlayArePassedOver()
{
    QSignalSpy scanning(m_renderer.get(), &KelvoRenderer::scanningInfo);
    m_renderer->playUri(list);
    answerList(listEntries);
    fail(KelvoError::NotFound);
    fail(KelvoError::CorruptMedia);
    say(Playing);
    flush();
    QCOMPARE(scanning.size(), 4); // 0, a third, two thirds, 1
    QCOMPARE(m_heard->errors.size(), 1);
    QCOMPARE(m_heard->errors.constFirst().code(), KelvoError::NotFound);
    QCOMPARE(m_heard->errors.constFirst().message(),
        QStringLiteral("2 of 3 entries of http://media/list.pls do not play: words"));
    // From now on each one that does not play is news.
    fail(KelvoError::CorruptMedia);
    flush();
    QCOMPARE(m_heard->errorsOf(KelvoError::CorruptMedia), 1);
    QCOMPARE(m_heard->completed, 1);
}

void PlaybackTest::listOfNothingThatPlays()
{
    m_renderer->playUri(list);
    answerList(listEntries);
    for (qsizetype i = 0; i < listEntries.size(); ++i)
        fail(KelvoError::NotFound);
    flush();
    QCOMPARE(m_heard->errors.size(), 1);
    QCOMPARE(m_heard->errors.constFirst().code(), KelvoError::NothingPlayable);
    QCOMPARE(m_heard->errors.constFirst().message(), QStringLiteral("http://media/list.pls: words"));
    QCOMPARE(m_heard->state(), Stopped);
    QCOMPARE(m_heard->completed, 0);
}

void PlaybackTest::skipsFromEntryToEntry()
{
    m_renderer->playUri(list);
    answerList(listEntries);
    say(Playing);
    m_renderer->next();
    QCOMPARE(m_engine->items.constLast().uri, listEntries.at(1));
    m_renderer->previous();
    QCOMPARE(m_engine->items.constLast().uri, listEntries.at(0));
    // Before the first one: the list from its beginning.
    m_renderer->previous();
    QCOMPARE(m_engine->calls.constLast(), QStringLiteral("read http://media/list.pls"));
    answerList(listEntries);
    m_renderer->next();
    m_renderer->next();
    m_renderer->next();
    flush();
    QCOMPARE(m_heard->state(), Stopped);
}

void PlaybackTest::endThatMeetsAnEditOfItsItem()
{
    assign(3);
    m_renderer->play();
    say(Playing);
    flush();
    m_playlist->removeItem(0);
    end();
    // The item that took its place, which has not played yet.
    QCOMPARE(m_engine->items.constLast().uri, QUrl("http://media/1"));
    flush();
    QCOMPARE(m_heard->media.constLast().index, 0);
    QCOMPARE(m_heard->completed, 0);
}

void PlaybackTest::endThatMeetsAnotherEdit()
{
    assign(3);
    m_renderer->gotoIndex(1);
    say(Playing);
    flush();
    m_playlist->removeItem(0);
    end();
    QCOMPARE(m_engine->items.constLast().uri, QUrl("http://media/2"));
    flush();
    QCOMPARE(m_heard->media.constLast().index, 1);
}

void PlaybackTest::failureThatMeetsAnEditOfItsItem()
{
    assign(1);
    m_renderer->play();
    flush();
    m_playlist->removeItem(0);
    fail(KelvoError::NotFound);
    flush();
    QCOMPARE(m_heard->errors.size(), 0);
    QCOMPARE(m_heard->state(), Stopped);
}

void PlaybackTest::speedIsTakenAlong_data()
{
    QTest::addColumn<double>("speed");
    QTest::addColumn<double>("rate");
    QTest::newRow("fast") << 2.0 << 2.0;
    QTest::newRow("backwards leads nowhere") << -2.0 << 1.0;
}

void PlaybackTest::speedIsTakenAlong()
{
    QFETCH(double, speed);
    QFETCH(double, rate);
    m_renderer->setKelvoProperty("playback-speed", speed);
    m_renderer->playUri(song);
    flush();
    QCOMPARE(m_engine->items.constLast().rate, rate);
    QCOMPARE(m_heard->property("playback-speed"), QVariant(rate));
    QCOMPARE(m_heard->properties.size(), speed == rate ? 1 : 2);
}

void PlaybackTest::speedThatIsNotYetReportedIsTakenAlong()
{
    m_engine->reportsProperties = true;
    m_renderer->setKelvoProperty("playback-speed", 2.0);
    flush();
    QCOMPARE(m_heard->properties.size(), 0);
    m_renderer->playUri(song);
    QCOMPARE(m_engine->items.constLast().rate, 2.0);
    // What the engine could not do it does not do from the next item on.
    m_renderer->setKelvoProperty("playback-speed", 4.0);
    Q_EMIT m_engine->troubled(KelvoError::NotSeekable, QString());
    m_renderer->playUri(song);
    QCOMPARE(m_engine->items.constLast().rate, 2.0);
}

void PlaybackTest::refusesInTheEnginesWords()
{
    m_engine->refused = 7U;
    m_renderer->setKelvoProperty("volume", 7);
    m_renderer->setKelvoProperty("volume", 100);
    m_renderer->setKelvoProperty("colorkey", 1U);
    flush();
    QCOMPARE(m_heard->errors.size(), 3);
    QCOMPARE(m_heard->errors.at(0).code(), KelvoError::NotSupported);
    QCOMPARE(m_heard->errors.at(0).message(), QStringLiteral("refused in my own words"));
    QCOMPARE(m_heard->errors.at(1).code(), KelvoError::InvalidValue);
    QCOMPARE(m_heard->errors.at(1).message(), QStringLiteral("volume = 100"));
    QCOMPARE(m_heard->errors.at(2).code(), KelvoError::NotSupported);
    QCOMPARE(m_heard->errors.at(2).message(), QStringLiteral("colorkey"));
    QCOMPARE(m_engine->calls, QStringList());
    QCOMPARE(m_heard->properties.size(), 0);
}

void PlaybackTest::windowIsOfNoUse()
{
    m_engine->hasWindow = false;
    m_heard->expectSameState();
    m_renderer->setKelvoProperty("xid", 5U);
    m_renderer->setKelvoProperty("autopaint", true);
    m_renderer->setKelvoProperty("render-rectangle", QStringLiteral("no rectangle"));
    flush();
    QCOMPARE(m_engine->calls, QStringList());
    QCOMPARE(m_heard->errors.size(), 0);
    QVERIFY(!m_heard->property("xid").isValid());
    // But that it was chosen, it takes from it.
    QCOMPARE(m_heard->states, States{Stopped});
    QCOMPARE(m_heard->property("policy-override"), QVariant(false));
}

void PlaybackTest::positionCountsAsTheSecondThatItIsCloseTo_data()
{
    QTest::addColumn<double>("exact");
    QTest::addColumn<uint>("told");
    QTest::newRow("at it") << 3.0 << 3U;
    QTest::newRow("just before it") << 2.995 << 3U;
    QTest::newRow("before it") << 2.98 << 2U;
    QTest::newRow("at the beginning") << 0.0 << 0U;
}

void PlaybackTest::positionCountsAsTheSecondThatItIsCloseTo()
{
    QFETCH(double, exact);
    QFETCH(uint, told);
    m_renderer->playUri(song);
    say(Playing);
    m_engine->position = exact;
    m_renderer->getPosition(m_heard.get(), "positionAnswer(uint)");
    m_renderer->kelvoProperty("position", m_heard.get(), "propertyAnswer(QString,QVariant)");
    QTRY_COMPARE(m_heard->positionAnswers, QList<uint>{told});
    QTRY_COMPARE(m_heard->propertyAnswers.size(), 1);
    QCOMPARE(m_heard->propertyAnswers.constFirst().second, QVariant(exact));
    m_renderer->stop();
    m_renderer->getPosition(m_heard.get(), "positionAnswer(uint)");
    QTRY_COMPARE(m_heard->positionAnswers.size(), 2);
    QCOMPARE(m_heard->positionAnswers.constLast(), 0U);
}

void PlaybackTest::pauseDecidedByTheEngineHoldsForTheNextItem()
{
    assign(2);
    m_renderer->play();
    say(Playing);
    Q_EMIT m_engine->intentChanged(m_engine->epoch(), true);
    say(Paused);
    m_renderer->next();
    QVERIFY(m_engine->items.constLast().paused);
    // Standing still because of something else says nothing of the next one.
    m_renderer->resume();
    say(Playing);
    say(Paused);
    m_renderer->previous();
    QVERIFY(!m_engine->items.constLast().paused);
    flush();
}

void PlaybackTest::statusAfterPlayingNothing()
{
    m_renderer->play();
    assign(2);
    m_renderer->getStatus(m_heard.get(), "statusAnswer(QString,uint,int,QString)");
    QTRY_COMPARE(m_heard->statusAnswers.size(), 1);
    QCOMPARE(m_heard->errorsOf(KelvoError::NothingToPlay), 1);
    QCOMPARE(m_heard->statusAnswers.constFirst().playlistId, m_playlist->uuid());
}

void PlaybackTest::statusKeepsTheItemThatPlayedLast()
{
    assign(3);
    QCOMPARE(status(), QStringLiteral("list 0 0"));
    m_renderer->gotoIndex(1);
    say(Playing);
    m_renderer->stop();
    QCOMPARE(status(), QStringLiteral("list 1 1"));
    m_renderer->next();
    QCOMPARE(status(), QStringLiteral("list 2 2"));
    m_renderer->next(); // behind the last one
    QCOMPARE(status(), QStringLiteral("list 2 2"));
    m_renderer->play();
    say(Playing);
    end();
    flush();
    QCOMPARE(m_heard->completed, 1);
    QCOMPARE(status(), QStringLiteral("list 2 2"));
    m_renderer->previous();
    QCOMPARE(status(), QStringLiteral("list 1 1"));
}

void PlaybackTest::statusAfterAUri()
{
    assign(3);
    m_renderer->playUri(song);
    say(Playing);
    QCOMPARE(status(), QStringLiteral(" 0 -1"));
    m_renderer->stop();
    QCOMPARE(status(), QStringLiteral(" 0 -1"));
    m_renderer->next();
    QCOMPARE(status(), QStringLiteral("list 1 1"));
    m_renderer->playUri(song);
    say(Playing);
    m_renderer->stop();
    m_renderer->previous();
    QCOMPARE(status(), QStringLiteral("list 0 0"));
}

void PlaybackTest::statusAfterAUriAtTheEndOfThePlaylist()
{
    assign(1);
    m_renderer->playUri(song);
    say(Playing);
    m_renderer->stop();
    m_renderer->next();
    QCOMPARE(status(), QStringLiteral(" 0 -1"));
    m_renderer->previous();
    QCOMPARE(status(), QStringLiteral("list 0 0"));
}
} // namespace

KELVO_TEST(PlaybackTest)
#include "PlaybackTest.moc"
