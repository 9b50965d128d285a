// SPDX-License-Identifier: MIT
#include "Playlists.h"

#include "Addresses.h"
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoShared.h"

#include <QAction>
#include <QListView>
#include <QStandardItemModel>

namespace {
constexpr const char *editingActions[] = {
    "m_actionShuffle",
    "m_actionShuffle",
    "m_actionRepeat",
    "m_actionRepeat",
    "m_actionAtoZ",
    "m_actionZtoA",
    "m_actionShortToLong",
    "m_actionLongToShort",
    "m_actionRemoveCurrent",
    "m_actionRemoveCurrent",
    "m_actionClear",
    "m_actionDelete",
    "m_actionLoad",
    "m_actionDeletePersistent",
};
constexpr int mostPlaylists = 8;

QStandardItemModel *modelOf(KelvoPlaylist *playlist)
{
    auto *backed = qobject_cast<KelvoGeneralSourcePlaylist *>(playlist);
    return backed ? qobject_cast<QStandardItemModel *>(backed->underlyingModel()) : nullptr;
}

void append(QStandardItemModel *model, int count, Dice &dice)
{
    for (int i = 0; i < count; ++i) {
        const QString address = Addresses::any(dice);
        model->appendRow({new QStandardItem(QStringLiteral("urn:%1").arg(address)),
            new QStandardItem(QStringLiteral("Item %1").arg(dice.below(1000))), new QStandardItem(address),
            new QStandardItem(QString::number(dice.below(500)))});
    }
}
} // namespace

Playlists::Playlists(const Stage &stage)
    : m_stage(stage)
{
}

QList<Deed> Playlists::deeds()
{
    return {
        {8, Deed::AtTheWindow, std::bind_front(&Playlists::trigger, this)},
        {2, Deed::AtTheWindow, std::bind_front(&Playlists::removeSelected, this)},
        {4, Deed::Elsewhere, std::bind_front(&Playlists::publish, this)},
        {2, Deed::Elsewhere, std::bind_front(&Playlists::withdraw, this)},
        {7, Deed::Elsewhere, std::bind_front(&Playlists::fill, this)},
        {4, Deed::Elsewhere, std::bind_front(&Playlists::edit, this)},
    };
}

KelvoPlaylist *Playlists::anyOfOurs(Dice &dice) const
{
    QList<KelvoPlaylist *> ours = m_stage.registry()->allPlaylists();
    ours.removeIf([](KelvoPlaylist *playlist) { return !modelOf(playlist); });
    const int number = dice.below(1000);
    return ours.isEmpty() ? nullptr : ours.at(number % ours.size());
}

void Playlists::trigger(Dice &dice) const
{
    const char *name = dice.oneOf(editingActions);
    m_stage.say(QStringLiteral("menu entry %1").arg(QLatin1String(name)));
    m_stage.find<QAction>(name)->trigger();
}

void Playlists::removeSelected(Dice &dice) const
{
    auto *view = m_stage.find<QListView>("m_music_playlistView");
    const int first = dice.below(1000);
    const int more = dice.below(5);
    const int rows = view->model() ? view->model()->rowCount() : 0;
    if (rows > 0) {
        const int from = first % rows;
        const QItemSelection range(
            view->model()->index(from, 1), view->model()->index(qMin(from + more, rows - 1), 1));
        view->selectionModel()->select(range, QItemSelectionModel::ClearAndSelect);
    }
    m_stage.say(QStringLiteral("remove %1 items of %2").arg(more + 1).arg(rows));
    m_stage.find<QAction>("m_actionRemoveSeveralSelected")->trigger();
}

void Playlists::publish(Dice &dice)
{
    if (m_stage.registry()->allPlaylists().size() >= mostPlaylists)
        return m_stage.say(QStringLiteral("enough playlists"));
    const QString name = QStringLiteral("list %1").arg(++m_published);
    const int count = dice.below(12);
    m_stage.say(QStringLiteral("publish \"%1\" with %2 items").arg(name).arg(count));
    auto *playlist = new KelvoGeneralSourcePlaylist(
        KelvoPlaylist::getNewPlaylistId(), name, QStringLiteral("KelvoTrackerSource"));
    auto *model = new QStandardItemModel(playlist);
    append(model, count, dice);
    playlist->setUnderlyingModel(model);
    if (!KelvoShared::instance()->publishPlaylist(playlist)) {
        delete playlist;
        m_stage.journal.fail(QStringLiteral("the playlist is refused"));
    }
}

void Playlists::withdraw(Dice &dice) const
{
    const KelvoPlaylist *playlist = anyOfOurs(dice);
    if (!playlist)
        return m_stage.say(QStringLiteral("no playlist to withdraw"));
    m_stage.say(QStringLiteral("withdraw \"%1\"").arg(playlist->name()));
    KelvoShared::instance()->unPublishPlaylist(playlist->uuid());
}

void Playlists::fill(Dice &dice) const
{
    KelvoPlaylist *playlist = anyOfOurs(dice);
    const int count = dice.chance(10) ? 300 : dice.between(1, 10);
    if (!playlist)
        return m_stage.say(QStringLiteral("no playlist to fill"));
    m_stage.say(QStringLiteral("append %1 items to \"%2\"").arg(count).arg(playlist->name()));
    append(modelOf(playlist), count, dice);
}

void Playlists::edit(Dice &dice) const
{
    KelvoPlaylist *playlist = anyOfOurs(dice);
    const int deed = dice.below(6);
    const uint from = uint(dice.below(20));
    const uint count = uint(dice.below(6));
    if (!playlist)
        return m_stage.say(QStringLiteral("no playlist to edit"));
    m_stage.say(QStringLiteral("edit %1 of \"%2\" at %3").arg(deed).arg(playlist->name()).arg(from));
    switch (deed) {
    case 0:
        return playlist->removeItem(from);
    case 1:
        return playlist->removeItems(from, from + count);
    case 2:
        return playlist->removeItems(from + count, from);
    case 3:
        return playlist->sort(KelvoPlaylist::SortKeyTitle, KelvoPlaylist::TitleDescending);
    case 4:
        modelOf(playlist)->setRowCount(int(from));
        return;
    default:
        playlist->setRepeatMode(int(from % 3));
    }
}
