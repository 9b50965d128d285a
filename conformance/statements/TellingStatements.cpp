// SPDX-License-Identifier: MIT
// What is told of the item in play: to whoever chooses the renderer, and each fact once.
#include "StatementGroups.h"
#include "Trial.h"

#include <QMap>
#include <QRegularExpression>

namespace {
using Facts = QMap<QString, QString>;

class TellingStatements : public Trial
{
public:
    using Trial::Trial;

    void tellsAgainWhoeverChoosesIt(KelvoRenderer::State state, bool ofPlaylist);
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

bool TellingStatements::bringInto(KelvoRenderer::State state, bool ofPlaylist)
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

void TellingStatements::choose()
{
    if (heard().state() != Paused)
        heard().expectSameState();
    renderer()->setKelvoProperty(KelvoRenderer::PropertyXid, 0U);
    renderer()->setKelvoProperty(KelvoRenderer::PropertyAutopaint, false);
}

Facts TellingStatements::facts() const
{
    Facts told;
    for (const auto &[key, value] : std::as_const(m_probe->metadataHeard))
        told.insert(key, value.toString());
    return told;
}

void TellingStatements::tellsAgainWhoeverChoosesIt(KelvoRenderer::State state, bool ofPlaylist)
{
    HOLDS(bringInto(state, ofPlaylist));
    settle();
    const Facts before = facts();
    const int at = position();
    heard().clear();
    choose();
    REACHES(!heard().states.isEmpty() && heard().property("policy-override").isValid());
    settle();
    // Whoever asks for the position asks from Playing on.
    SAME(heard().states, state == Paused ? (States{Playing, Paused}) : States{state});
    SAME(heard().property("policy-override"), QVariant(false));
    HOLDS(!heard().playlists.isEmpty() && !heard().playlists.constFirst());
    HOLDS(position() >= at);
    SAME(heard().errors.size(), 0);
    if (state == Stopped) {
        SAME(heard().media.size(), 0);
        SAME(facts(), Facts());
        return;
    }
    SAME(heard().playlists.constLast(), ofPlaylist ? m_playlist : nullptr);
    SAME(heard().media.size(), 1);
    SAME(heard().media.constFirst().index, ofPlaylist ? 1 : -1);
    SAME(heard().media.constFirst().content.url, m_subject.longItem());
    SAME(facts(), before);
    SAME(heard().metadataHeard.size(), before.size());
}

void TellingStatements::whatIsToldAgainComesInOrder()
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

void TellingStatements::goesOnWithItsAddressWhenChosen()
{
    HOLDS(bringInto(Playing, false));
    const int at = position();
    heard().clear();
    choose();
    renderer()->assignPlaylist(m_playlist);
    settle();
    SAME(heard().states, States{Playing});
    SAME(heard().media.size(), 1);
    REACHES(position() > at);
    renderer()->stop();
    REACHES(heard().state() == Stopped);
    renderer()->play();
    REACHES(isPlaying(0));
}

void TellingStatements::tellsEachFactOnceForAnItem()
{
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
    SAME(facts(), Facts());
    // Whoever has chosen it in the meantime knows nothing.
    renderer()->stop();
    REACHES(heard().state() == Stopped);
    choose();
    renderer()->play();
    REACHES(isPlaying(1) && position() >= 1);
    settle();
    SAME(facts(), first);
}

void TellingStatements::tellsTheFactsOfAnItemAgainAfterAnother()
{
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

void TellingStatements::tellsTheFactsOfAnAddressEachTime()
{
    HOLDS(bringInto(Playing, false));
    REACHES(heard().metadataCount("title") == 1);
    renderer()->playUri(m_subject.longItem());
    REACHES(heard().metadataCount("title") == 2);
}
} // namespace

QList<Statement> tellingStatements()
{
    using G = TellingStatements;
    return QList<Statement>{
        statement("telling.when-chosen.item-playing",
            "Chosen while an item is Playing, a renderer tells what is in play, its state and the facts.", {},
            &G::tellsAgainWhoeverChoosesIt, Playing, true),
        statement("telling.when-chosen.item-paused",
            "Chosen while an item is Paused, a renderer tells what is in play, its state and the facts.",
            {Ability::Pause}, &G::tellsAgainWhoeverChoosesIt, Paused, true),
        statement("telling.when-chosen.item-stopped",
            "Chosen after an item was stopped, a renderer tells its state and nothing of the item.", {},
            &G::tellsAgainWhoeverChoosesIt, Stopped, true),
        statement("telling.when-chosen.address-playing",
            "Chosen while an address is Playing, a renderer tells what is in play, its state and the facts.",
            {}, &G::tellsAgainWhoeverChoosesIt, Playing, false),
        statement("telling.when-chosen.address-paused",
            "Chosen while an address is Paused, a renderer tells what is in play, its state and the facts.",
            {Ability::Pause}, &G::tellsAgainWhoeverChoosesIt, Paused, false),
        statement("telling.when-chosen.address-stopped",
            "Chosen after an address was stopped, a renderer tells its state and nothing of the item.", {},
            &G::tellsAgainWhoeverChoosesIt, Stopped, false),
        statement("telling.order", "What is told again comes in order: playlist, item, state, facts, policy.",
            {}, &G::whatIsToldAgainComesInOrder),
        statement("telling.goes-on-with-its-address",
            "A URI goes on playing when the renderer is chosen and given a playlist.", {},
            &G::goesOnWithItsAddressWhenChosen),
        statement("telling.each-fact-once",
            "Each fact about an item is told once, also when it begins again.", {Ability::Metadata},
            &G::tellsEachFactOnceForAnItem),
        statement("telling.again-after-another-item",
            "The facts about an item are told again after another item was announced.", {Ability::Metadata},
            &G::tellsTheFactsOfAnItemAgainAfterAnother),
        statement("telling.of-a-uri-each-time", "The facts about a URI are told each time it is played.",
            {Ability::Metadata}, &G::tellsTheFactsOfAnAddressEachTime),
    };
}
