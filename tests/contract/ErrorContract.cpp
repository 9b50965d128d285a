// SPDX-License-Identifier: MIT
// Items that cannot be played.
#include "ContractCase.h"
#include "ContractSuite.h"

namespace {
class ErrorContract : public ContractCase
{
    Q_OBJECT
public:
    using ContractCase::ContractCase;

private Q_SLOTS:
    void uriGivesOneErrorAndStops();
    void emptyUriIsAnError();
    void uriReplacesWhatPlaysAlsoWhenItFails();
    void playsAgainAfterAnError();
    void badItemIsPassedOver();
    void badItemInTheMiddle();
    void badItemAtTheEnd();
    void badItemInEachRound();
    void badItemAfterNext();
    void allBad_data();
    void allBad();
    void allBadFromTheMiddle();
    void stopsAmongBadItems();

private:
    QList<QUrl> bad(int count) const { return QList<QUrl>(count, m_subject.failingItem()); }
};

void ErrorContract::uriGivesOneErrorAndStops()
{
    NEEDS(FailItems);
    renderer()->playUri(m_subject.failingItem());
    REACHES(!heard().errors.isEmpty() && heard().state() == Stopped);
    settle();
    QCOMPARE(heard().errors.size(), 1);
    HOLDS(heard().errors.constFirst().code() != KelvoError::NoError);
    HOLDS(heard().errors.constFirst().code() != KelvoError::NothingPlayable);
    QCOMPARE(heard().completed, 0);
    QCOMPARE(heard().state(), Stopped);
    HOLDS(!heard().states.contains(Playing));
}

void ErrorContract::emptyUriIsAnError()
{
    renderer()->playUri(QUrl());
    REACHES(!heard().errors.isEmpty());
    settle();
    QCOMPARE(heard().errors.size(), 1);
    QCOMPARE(heard().state(), Stopped);
    QCOMPARE(heard().completed, 0);
}

void ErrorContract::uriReplacesWhatPlaysAlsoWhenItFails()
{
    NEEDS(FailItems);
    startPlaylist(makeLongPlaylist(2));
    renderer()->playUri(m_subject.failingItem());
    REACHES(heard().errors.size() == 1 && heard().state() == Stopped);
    settle();
    QCOMPARE(heard().errors.size(), 1);
    QCOMPARE(heard().state(), Stopped);
}

void ErrorContract::playsAgainAfterAnError()
{
    NEEDS(FailItems);
    for (int i = 0; i < 3; ++i) {
        heard().clear();
        renderer()->playUri(m_subject.failingItem());
        REACHES(heard().errors.size() == 1 && heard().state() == Stopped);
        renderer()->playUri(m_subject.longItem());
        REACHES(heard().state() == Playing);
        QCOMPARE(heard().errors.size(), 1);
    }
}

void ErrorContract::badItemIsPassedOver()
{
    NEEDS(FailItems);
    renderer()->assignPlaylist(makePlaylist(bad(1) + QList<QUrl>{m_subject.longItem()}));
    renderer()->play();
    REACHES(isPlaying(1));
    settle();
    QCOMPARE(heard().errors.size(), 1);
    QCOMPARE(heard().completed, 0);
    QCOMPARE(heard().media.constLast().index, 1);
}

void ErrorContract::badItemInTheMiddle()
{
    NEEDS(FailItems);
    const QList<QUrl> good = m_subject.shortItems();
    renderer()->assignPlaylist(makePlaylist({good.at(0), m_subject.failingItem(), good.at(1)}));
    renderer()->play();
    REACHES(heard().completed == 1);
    QCOMPARE(heard().errors.size(), 1);
    QCOMPARE(heard().media.constLast().index, 2);
    QCOMPARE(int(heard().states.count(Playing)), 2);
}

void ErrorContract::badItemAtTheEnd()
{
    NEEDS(FailItems);
    renderer()->assignPlaylist(makePlaylist({m_subject.shortItems().at(0), m_subject.failingItem()}));
    renderer()->play();
    REACHES(heard().errors.size() == 1);
    REACHES(heard().state() == Stopped);
    settle();
    // The round has brought something that plays.
    QCOMPARE(heard().errorsOf(KelvoError::NothingPlayable), 0);
    QCOMPARE(heard().errors.size(), 1);
}

void ErrorContract::badItemInEachRound()
{
    NEEDS(FailItems);
    KelvoPlaylist *playlist = makePlaylist({m_subject.failingItem(), m_subject.shortItems().at(0)});
    playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
    renderer()->assignPlaylist(playlist);
    renderer()->play();
    REACHES(int(heard().states.count(Playing)) == 2);
    QCOMPARE(heard().errors.size(), 2);
    QCOMPARE(heard().errorsOf(KelvoError::NothingPlayable), 0);
    REACHES(isPlaying(1));
}

void ErrorContract::badItemAfterNext()
{
    NEEDS(FailItems);
    startPlaylist(makePlaylist({m_subject.longItem(), m_subject.failingItem(), m_subject.longItem()}));
    renderer()->next();
    REACHES(isPlaying(2));
    QCOMPARE(heard().errors.size(), 1);
}

void ErrorContract::allBad_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("count");
    QTest::newRow("repeat off") << int(KelvoPlaylist::RepeatOff) << 3;
    QTest::newRow("repeat all") << int(KelvoPlaylist::RepeatAll) << 3;
    QTest::newRow("repeat one") << int(KelvoPlaylist::RepeatOne) << 3;
    QTest::newRow("single item, repeat off") << int(KelvoPlaylist::RepeatOff) << 1;
    QTest::newRow("single item, repeat all") << int(KelvoPlaylist::RepeatAll) << 1;
    QTest::newRow("single item, repeat one") << int(KelvoPlaylist::RepeatOne) << 1;
}

void ErrorContract::allBad()
{
    NEEDS(FailItems);
    QFETCH(int, mode);
    QFETCH(int, count);
    KelvoPlaylist *playlist = makePlaylist(bad(count));
    playlist->setRepeatMode(mode);
    renderer()->assignPlaylist(playlist);
    renderer()->play();
    REACHES(heard().errorsOf(KelvoError::NothingPlayable) == 1);
    REACHES(heard().state() == Stopped);
    settle();
    // One for each item and the one for all of them.
    QCOMPARE(heard().errors.size(), count + 1);
    QCOMPARE(heard().errorsOf(KelvoError::NothingPlayable), 1);
    QCOMPARE(heard().errors.constLast().code(), KelvoError::NothingPlayable);
    QCOMPARE(heard().completed, 0);
    QCOMPARE(heard().state(), Stopped);
}

void ErrorContract::allBadFromTheMiddle()
{
    NEEDS(FailItems);
    KelvoPlaylist *playlist = makePlaylist(bad(3));
    playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
    renderer()->assignPlaylist(playlist);
    renderer()->gotoIndex(2);
    REACHES(heard().errorsOf(KelvoError::NothingPlayable) == 1);
    settle();
    QCOMPARE(heard().errors.size(), 4);
    QCOMPARE(heard().state(), Stopped);
}

void ErrorContract::stopsAmongBadItems()
{
    NEEDS(FailItems);
    renderer()->assignPlaylist(makePlaylist(bad(300)));
    renderer()->play();
    REACHES(heard().errors.size() >= 2);
    renderer()->stop();
    REACHES(heard().state() == Stopped);
    settle();
    HOLDS(heard().errors.size() < 300);
    const qsizetype errors = heard().errors.size();
    settle();
    QCOMPARE(heard().errors.size(), errors);
    QCOMPARE(heard().completed, 0);
}
} // namespace

std::unique_ptr<QObject> makeErrorContract(RendererSubject &subject)
{
    return std::make_unique<ErrorContract>(subject);
}

#include "ErrorContract.moc"
