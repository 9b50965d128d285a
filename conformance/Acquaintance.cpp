// SPDX-License-Identifier: MIT
#include "Acquaintance.h"

#include <algorithm>

void Acquaintance::meet(const QList<Media> &offered)
{
    // A copy of its own: the text may lie in the library of the back end, which goes.
    const QString told = m_renderer->name();
    name = QString(told.constData(), told.size());
    isSimulated = ask(QStringLiteral("sim-clock")).isValid();
    if (isSimulated)
        return;
    for (qsizetype i = 0; i < offered.size() && playable < 0; ++i) {
        if (plays(offered.at(i)))
            playable = i;
    }
    if (playable < 0)
        return;
    measure();
    // By now a player of another process has told what it has.
    askForProperties();
}

bool Acquaintance::plays(const Media &media)
{
    heard().clear();
    renderer()->playUri(media.longItem);
    reaches([this] { return heard().state() == Playing || !heard().errors.isEmpty(); });
    const bool plays = heard().state() == Playing
        && reaches([this] { return position() >= 1 || heard().state() != Playing; })
        && heard().state() == Playing;
    if (!plays) {
        renderer()->stop();
        reaches([this] { return heard().state() == Stopped; });
    }
    return plays;
}

/// While it plays.
void Acquaintance::measure()
{
    heard().clear();
    renderer()->pause();
    roundTrip = timeUntil([this] { return heard().state() == Paused || !heard().errors.isEmpty(); });
    if (heard().state() == Paused) {
        renderer()->resume();
        roundTrip = std::max(roundTrip, timeUntil([this] { return heard().state() == Playing; }));
    }
    roundTrip = std::max(roundTrip, timeUntil([this] { return position() >= 0; }));
    renderer()->stop();
    roundTrip = std::max(roundTrip, timeUntil([this] { return heard().state() == Stopped; }));
}

void Acquaintance::askForProperties()
{
    if (!ask(KelvoRenderer::PropertyVolume).isValid())
        refusals.insert(Ability::Volume, QStringLiteral("it answers no volume"));
    // Where video goes elsewhere the window is taken no notice of.
    heard().expectSameState();
    renderer()->setKelvoProperty(KelvoRenderer::PropertyXid, 0U);
    settle();
    if (!ask(KelvoRenderer::PropertyXid).isValid())
        refusals.insert(
            Ability::VideoProperties, QStringLiteral("it answers no xid, so video goes elsewhere"));
}

QVariant Acquaintance::ask(const QString &property)
{
    const qsizetype before = heard().propertyAnswers.size();
    renderer()->kelvoProperty(property, m_probe.get(), "propertyAnswer(QString,QVariant)");
    if (!reaches([&] { return heard().propertyAnswers.size() > before; }))
        return {};
    return heard().propertyAnswers.constLast().second;
}

qint64 Acquaintance::timeUntil(const std::function<bool()> &condition)
{
    const qint64 since = m_subject.time();
    reaches(condition);
    return m_subject.time() - since;
}
