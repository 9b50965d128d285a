// SPDX-License-Identifier: MIT
// What is told of the item in play: to whoever chooses the renderer, and each fact once.
#include "ContractCase.h"
#include "ContractSuite.h"

namespace {
using States = QList<KelvoRenderer::State>;
using Facts = QMap<QString, QString>;

class TellingContract : public ContractCase
{
    Q_OBJECT
public:
    using ContractCase::ContractCase;

private Q_SLOTS:
    void tellsAgainWhoeverChoosesIt_data();
    void tellsAgainWhoeverChoosesIt();
    void whatIsToldAgainComesInOrder();
    void goesOnWithItsAddressWhenChosen();
    void tellsEachFactOnceForAnItem();
    void tellsTheFactsOfAnItemAgainAfterAnother();
    void tellsTheFactsOfAnAddressEachTime();

private:
    bool bringInto(KelvoRenderer::State state, bool ofPlaylist);
    /// As the console does it.
    void choose();
    Facts facts() const;

    KelvoPlaylist *m_playlist = nullptr;
};

bool TellingContract::bringInto(KelvoRenderer::State state, bool ofPlaylist)
{
    m_playlist = makeLongPlaylist(2);
    if (ofPlaylist) {
        renderer()->assignPlaylist(m_playlist);
        renderer()->gotoIndex(1);
    } else {
        renderer()->playUri(m_subject.longItem());
    }
    const bool plays = reaches([this] { return heard().state() == Playing; })
        && reaches([this] { return position() >= 1; });
    if (state == Paused)
        renderer()->pause();
    else if (state == Stopped)
        renderer()->stop();
    return plays && reaches([this, state] { return heard().state() == state; });
}

void TellingContract::choose()
{
    if (heard().state() != Paused)
        heard().expectSameState();
    renderer()->setKelvoProperty(KelvoRenderer::PropertyXid, 0U);
    renderer()->setKelvoProperty(KelvoRenderer::PropertyAutopaint, false);
}

Facts TellingContract::facts() const
{
    Facts told;
    for (const auto &[key, value] : std::as_const(m_probe->metadataHeard))
        told.insert(key, value.toString());
    return told;
}

void TellingContract::tellsAgainWhoeverChoosesIt_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("ofPlaylist");
    QTest::addRow("an item, playing") << int(Playing) << true;
    QTest::addRow("an item, paused") << int(Paused) << true;
    QTest::addRow("an item, stopped") << int(Stopped) << true;
    QTest::addRow("an address, playing") << int(Playing) << false;
    QTest::addRow("an address, paused") << int(Paused) << false;
    QTest::addRow("an address, stopped") << int(Stopped) << false;
}

void TellingContract::tellsAgainWhoeverChoosesIt()
{
    QFETCH(int, state);
    QFETCH(bool, ofPlaylist);
    HOLDS(bringInto(KelvoRenderer::State(state), ofPlaylist));
    settle();
    const Facts before = facts();
    const int at = position();
    heard().clear();
    choose();
    REACHES(!heard().states.isEmpty() && heard().property("policy-override").isValid());
    settle();
    // Whoever asks for the position asks from Playing on.
    QCOMPARE(
        heard().states, state == Paused ? (States{Playing, Paused}) : States{KelvoRenderer::State(state)});
    QCOMPARE(heard().property("policy-override"), QVariant(false));
    HOLDS(!heard().playlists.isEmpty() && !heard().playlists.constFirst());
    HOLDS(position() >= at);
    QCOMPARE(heard().errors.size(), 0);
    if (state == Stopped) {
        QCOMPARE(heard().media.size(), 0);
        QCOMPARE(facts(), Facts());
        return;
    }
    QCOMPARE(heard().playlists.constLast(), ofPlaylist ? m_playlist : nullptr);
    QCOMPARE(heard().media.size(), 1);
    QCOMPARE(heard().media.constFirst().index, ofPlaylist ? 1 : -1);
    QCOMPARE(heard().media.constFirst().content.url, m_subject.longItem());
    QCOMPARE(facts(), before);
    QCOMPARE(heard().metadataHeard.size(), before.size());
}

void TellingContract::whatIsToldAgainComesInOrder()
{
    HOLDS(bringInto(Playing, true));
    settle();
    heard().clear();
    const qsizetype since = heard().events.size();
    choose();
    REACHES(heard().property("policy-override").isValid());
    const QStringList told = heard().events.mid(since);
    HOLDS(told.indexOf("no playlist") < told.indexOf("playlist"));
    HOLDS(told.indexOf("playlist") < told.indexOf("media 1"));
    HOLDS(told.indexOf("media 1") < told.indexOf("Playing"));
    const qsizetype fact = told.indexOf(QRegularExpression(QStringLiteral("^metadata ")));
    HOLDS(fact < 0 || told.indexOf("Playing") < fact);
    HOLDS(told.indexOf("policy-override = false") > fact);
}

void TellingContract::goesOnWithItsAddressWhenChosen()
{
    HOLDS(bringInto(Playing, false));
    const int at = position();
    heard().clear();
    choose();
    renderer()->assignPlaylist(m_playlist);
    settle();
    QCOMPARE(heard().states, States{Playing});
    QCOMPARE(heard().media.size(), 1);
    REACHES(position() > at);
    renderer()->stop();
    REACHES(heard().state() == Stopped);
    renderer()->play();
    REACHES(isPlaying(0));
}

void TellingContract::tellsEachFactOnceForAnItem()
{
    NEEDS(Metadata);
    HOLDS(bringInto(Playing, true));
    REACHES(heard().metadataCount("duration") > 0 && heard().metadataCount("title") > 0);
    settle();
    const Facts first = facts();
    heard().clear();
    renderer()->stop();
    REACHES(heard().state() == Stopped);
    renderer()->play();
    REACHES(isPlaying(1) && position() >= 1);
    renderer()->gotoIndex(1);
    REACHES(heard().media.size() == 2 && isPlaying(1) && position() >= 1);
    settle();
    QCOMPARE(facts(), Facts());
    // Whoever has chosen it in the meantime knows nothing.
    renderer()->stop();
    REACHES(heard().state() == Stopped);
    choose();
    renderer()->play();
    REACHES(isPlaying(1) && position() >= 1);
    settle();
    QCOMPARE(facts(), first);
}

void TellingContract::tellsTheFactsOfAnItemAgainAfterAnother()
{
    NEEDS(Metadata);
    HOLDS(bringInto(Playing, true));
    REACHES(heard().metadataCount("title") == 1);
    renderer()->gotoIndex(0);
    REACHES(heard().metadataCount("title") == 2);
    REACHES(isPlaying(0));
    renderer()->gotoIndex(1);
    REACHES(heard().metadataCount("title") == 3);
    REACHES(isPlaying(1));
    // Also when it was only shown.
    renderer()->stop();
    REACHES(heard().state() == Stopped);
    renderer()->previous();
    renderer()->next();
    renderer()->play();
    REACHES(heard().metadataCount("title") == 4);
}

void TellingContract::tellsTheFactsOfAnAddressEachTime()
{
    NEEDS(Metadata);
    HOLDS(bringInto(Playing, false));
    REACHES(heard().metadataCount("title") == 1);
    renderer()->playUri(m_subject.longItem());
    REACHES(heard().metadataCount("title") == 2);
}
} // namespace

std::unique_ptr<QObject> makeTellingContract(RendererSubject &subject)
{
    return std::make_unique<TellingContract>(subject);
}

#include "TellingContract.moc"
