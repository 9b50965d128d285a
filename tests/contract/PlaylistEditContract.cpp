// SPDX-License-Identifier: MIT
// What happens when the playlist changes while it plays.
#include "ContractCase.h"
#include "ContractSuite.h"

#include <QStandardItemModel>

namespace {
using States = QList<KelvoRenderer::State>;

class PlaylistEditContract : public ContractCase
{
    Q_OBJECT
public:
    using ContractCase::ContractCase;

private Q_SLOTS:
    void playsOnAtItsNewIndex_data();
    void playsOnAtItsNewIndex();
    void followsTheShuffledOrder();
    void removedItemIsReplacedByTheNext();
    void removedLastItem();
    void removedRange();
    void removedWhileStopped();
    void removedWhilePaused();
    void clearedInMidPlay_data();
    void clearedInMidPlay();
    void lastItemRemoved();
    void appendedInMidPlay();
    void deletedInMidPlay_data();
    void deletedInMidPlay();
    void deletedBeforeItPlays();
    void deletedWhileAnotherPlays();

private:
    bool isPlayingItem(const QString &uuid);
};

/// Also that the index that goes with the item is the right one.
bool PlaylistEditContract::isPlayingItem(const QString &uuid)
{
    const RendererProbe::Status now = status();
    return now.state == Playing && now.objectId == uuid
        && int(now.index) == m_playlists.back()->indexOf(uuid);
}

void PlaylistEditContract::playsOnAtItsNewIndex_data()
{
    QTest::addColumn<QString>("edit");
    for (const char *edit : {"shuffle", "unshuffle", "sort by title, down", "sort by title, up",
             "remove before", "remove after", "remove range before"})
        QTest::newRow(edit) << QString(edit);
}

void PlaylistEditContract::playsOnAtItsNewIndex()
{
    QFETCH(QString, edit);
    KelvoPlaylist *playlist = makeLongPlaylist(20);
    if (edit == QLatin1String("unshuffle"))
        playlist->shuffle();
    startPlaylist(playlist, 7);
    const QString uuid = playlist->mediaInfoAt(7).uuid();
    const QHash<QString, std::function<void()>> edits{
        {"shuffle",
            [&] {
                playlist->shuffle();
            }},
        {"unshuffle",
            [&] {
                playlist->unshuffle();
            }},
        {"sort by title, down",
            [&] {
                playlist->sort("title", KelvoPlaylist::TitleDescending);
            }},
        {"sort by title, up",
            [&] {
                playlist->sort("title", KelvoPlaylist::TitleAscending);
            }},
        {"remove before",
            [&] {
                playlist->removeItem(2);
            }},
        {"remove after",
            [&] {
                playlist->removeItem(8);
            }},
        {"remove range before",
            [&] {
                playlist->removeItems(0, 6);
            }},
    };
    edits.value(edit)();
    settle();
    HOLDS(isPlayingItem(uuid));
    QCOMPARE(heard().states, States());
    // Whether or not the move is reported as a media change: what is reported is true.
    for (const RendererProbe::Media &media : std::as_const(heard().media)) {
        QCOMPARE(media.content.uuid, uuid);
        QCOMPARE(media.index, playlist->indexOf(uuid));
    }
}

void PlaylistEditContract::followsTheShuffledOrder()
{
    KelvoPlaylist *playlist = makeLongPlaylist(20);
    startPlaylist(playlist, 7);
    playlist->shuffle();
    settle();
    const uint here = status().index;
    QCOMPARE(playlist->indexOf(playlist->mediaInfoAt(here).uuid()), int(here));
    playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
    const QString following = playlist->mediaInfoAt((here + 1) % 20).uuid();
    renderer()->next();
    REACHES(isPlayingItem(following));
}

void PlaylistEditContract::removedItemIsReplacedByTheNext()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    startPlaylist(playlist, 1);
    const QString following = playlist->mediaInfoAt(2).uuid();
    playlist->removeItem(1);
    REACHES(isPlayingItem(following));
    QCOMPARE(heard().media.constLast().index, 1);
    QCOMPARE(heard().media.constLast().content.uuid, following);
    QCOMPARE(heard().completed, 0);
    QCOMPARE(heard().errors.size(), 0);
}

void PlaylistEditContract::removedLastItem()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    startPlaylist(playlist, 2);
    const QString before = playlist->mediaInfoAt(1).uuid();
    playlist->removeItem(2);
    REACHES(isPlayingItem(before));
}

void PlaylistEditContract::removedRange()
{
    KelvoPlaylist *playlist = makeLongPlaylist(6);
    startPlaylist(playlist, 2);
    const QString following = playlist->mediaInfoAt(4).uuid();
    playlist->removeItems(1, 3);
    REACHES(isPlayingItem(following));
    QCOMPARE(status().index, 1U);
    // Removed again before the first removal has led to anything.
    playlist->removeItem(1);
    playlist->removeItem(1);
    REACHES(isPlayingItem(playlist->mediaInfoAt(0).uuid()));
}

void PlaylistEditContract::removedWhileStopped()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    renderer()->assignPlaylist(playlist);
    settle();
    playlist->removeItem(0);
    settle();
    QCOMPARE(heard().states, States());
    renderer()->play();
    REACHES(isPlayingItem(playlist->mediaInfoAt(0).uuid()));
}

void PlaylistEditContract::removedWhilePaused()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    startPlaylist(playlist, 1);
    renderer()->pause();
    REACHES(heard().state() == Paused);
    const QString following = playlist->mediaInfoAt(2).uuid();
    playlist->removeItem(1);
    REACHES(status().objectId == following);
    settle();
    REACHES(heard().state() == Paused || heard().state() == Playing);
    renderer()->resume();
    REACHES(isPlayingItem(following));
}

void PlaylistEditContract::clearedInMidPlay_data()
{
    QTest::addColumn<bool>("whilePaused");
    QTest::newRow("Playing") << false;
    QTest::newRow("Paused") << true;
}

void PlaylistEditContract::clearedInMidPlay()
{
    QFETCH(bool, whilePaused);
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    startPlaylist(playlist, 1);
    if (whilePaused) {
        renderer()->pause();
        REACHES(heard().state() == Paused);
    }
    playlist->clear();
    REACHES(heard().state() == Stopped);
    settle();
    QCOMPARE(heard().errors.size(), 0);
    QCOMPARE(status().state, int(Stopped));
    QCOMPARE(status().objectId, QString());
    QCOMPARE(position(), 0);
}

void PlaylistEditContract::lastItemRemoved()
{
    KelvoPlaylist *playlist = makeLongPlaylist(1);
    startPlaylist(playlist);
    playlist->removeItem(0);
    REACHES(heard().state() == Stopped);
    settle();
    QCOMPARE(heard().states, States{Stopped});
    QCOMPARE(heard().errors.size(), 0);
}

void PlaylistEditContract::appendedInMidPlay()
{
    KelvoGeneralSourcePlaylist *playlist = makePlaylist(m_subject.shortItems().mid(0, 1));
    startPlaylist(playlist);
    auto *model = qobject_cast<QStandardItemModel *>(playlist->underlyingModel());
    HOLDS(model);
    model->appendRow({new QStandardItem(QStringLiteral("new")), new QStandardItem(QStringLiteral("New")),
        new QStandardItem(m_subject.longItem().toString())});
    REACHES(isPlaying(1));
    QCOMPARE(heard().completed, 0);
}

void PlaylistEditContract::deletedInMidPlay_data()
{
    QTest::addColumn<int>("state");
    QTest::newRow("Transitioning") << int(KelvoRenderer::Transitioning);
    QTest::newRow("Playing") << int(Playing);
    QTest::newRow("Paused") << int(Paused);
}

void PlaylistEditContract::deletedInMidPlay()
{
    QFETCH(int, state);
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    renderer()->assignPlaylist(playlist);
    renderer()->play();
    const auto first = state == Paused ? Playing : KelvoRenderer::State(state);
    REACHES(heard().states.contains(first));
    if (state == Paused) {
        renderer()->pause();
        REACHES(heard().state() == Paused);
    }
    delete playlist;
    REACHES(heard().state() == Stopped);
    settle();
    QCOMPARE(status().playlistId, QString());
    QCOMPARE(status().state, int(Stopped));
    // It is no longer assigned.
    heard().clear();
    renderer()->play();
    REACHES(heard().errorsOf(KelvoError::NothingToPlay) == 1);
    renderer()->next();
    renderer()->previous();
    settle();
    QCOMPARE(heard().states, States());
}

void PlaylistEditContract::deletedBeforeItPlays()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    renderer()->assignPlaylist(playlist);
    renderer()->play();
    delete playlist;
    settle();
    REACHES(heard().state() == Stopped);
    renderer()->playUri(m_subject.longItem());
    REACHES(heard().state() == Playing);
}
void PlaylistEditContract::deletedWhileAnotherPlays()
{
    KelvoPlaylist *first = makeLongPlaylist(2);
    startPlaylist(first, 1);
    KelvoPlaylist *second = makeLongPlaylist(2);
    renderer()->assignPlaylist(second);
    settle();
    delete second;
    settle();
    QCOMPARE(heard().states, States());
    QCOMPARE(status().playlistId, first->uuid());
    HOLDS(isPlaying(1));
}
} // namespace

std::unique_ptr<QObject> makePlaylistEditContract(RendererSubject &subject)
{
    return std::make_unique<PlaylistEditContract>(subject);
}

#include "PlaylistEditContract.moc"
