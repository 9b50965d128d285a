// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoMainWindow.h"
#include "KelvoQueryController.h"
#include "TrackerIndexCase.h"

#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

/// The query controller over a store of eight songs, a video and a playlist, with a window that shows its state.
class QueryControllerCase : public TrackerIndexCase
{
    Q_OBJECT
protected:
    static constexpr int SongCount = 8;
    static constexpr int Nameless = 6;
    static constexpr int Patience = 10'000; // milliseconds

    QAbstractItemModel *keep(QAbstractItemModel *model)
    {
        if (model && !m_models.contains(model))
            m_models.append(model);
        return model;
    }
    QAbstractItemModel *query(int index) { return keep(m_controller->query({}, index)); }
    QAbstractItemModel *extend(int row) { return keep(m_controller->extendQuery({}, row)); }
    bool waitUntilIdle() const
    {
        return QTest::qWaitFor(
            [&] { return m_controller->queryState() == KelvoQueryController::Idle; }, Patience);
    }
    static QStringList shown(const QAbstractItemModel *model)
    {
        QStringList list;
        for (int row = 0; row < model->rowCount(); ++row)
            list.append(model->index(row, 1).data().toString());
        return list;
    }
    static QString titles(std::initializer_list<int> numbers)
    {
        QStringList list;
        for (const int number : numbers)
            list.append(song(number).title);
        return list.join(',');
    }
    QToolButton *button(const char *name) const
    {
        return m_window->findChild<QToolButton *>(QLatin1String(name));
    }
    QString caption() const { return button("m_query_executeButton")->text(); }
    bool buttonsEnabled() const
    {
        return button("m_query_executeButton")->isEnabled() && button("m_query_extendButton")->isEnabled();
    }

    QPointer<KelvoMainWindow> m_window;
    std::unique_ptr<KelvoQueryController> m_controller;
    QList<QPointer<QAbstractItemModel>> m_models;

protected Q_SLOTS:
    // One store for all functions: none changes what it holds.
    void initTestCase()
    {
        TrackerIndexCase::initTestCase();
        TrackerIndexCase::init();
        QVERIFY(fill());
        QVERIFY(mark());
    }

    void cleanupTestCase() { TrackerIndexCase::cleanup(); }

    void init()
    {
        KelvoTestCase::init();
        m_window = new KelvoMainWindow(nullptr, nullptr);
        m_controller = std::make_unique<KelvoQueryController>(nullptr, m_window);
        QTRY_VERIFY(buttonsEnabled());
    }

    void cleanup()
    {
        m_controller.reset();
        for (const QPointer<QAbstractItemModel> &model : std::as_const(m_models))
            delete model;
        m_models.clear();
        delete m_window;
    }

private:
    static MediaItem video(int number)
    {
        MediaItem item;
        item.kind = MediaKind::Video;
        item.number = quint64(1000 + number);
        item.path = "/video/" + QByteArray::number(number) + ".mp4";
        item.uri = "file://" + item.path;
        item.stamp = {item.number, 5000 + number, 5};
        item.title = QStringLiteral("Video %1").arg(number);
        item.seconds = 60 + number;
        return item;
    }

    // Songs 0 to 7 of the artists 0 to 5 and the albums 0 to 2; number 6 has neither artist nor album.
    bool fill()
    {
        std::vector<MediaItem> items;
        for (int i = 0; i < SongCount; ++i)
            items.push_back(song(i));
        items[Nameless].tags.artists.clear();
        items[Nameless].tags.albumArtist.clear();
        items[Nameless].tags.album.clear();
        items.push_back(video(1));
        MediaItem playlist;
        playlist.kind = MediaKind::Playlist;
        playlist.number = 2000;
        playlist.path = "/music/list.m3u";
        playlist.uri = "file:///music/list.m3u";
        playlist.title = QStringLiteral("My list");
        playlist.entries = {{song(4).uri, {}}, {song(1).uri, {}}};
        items.push_back(playlist);
        return openStore() && writeSongs(items);
    }

    bool play(int number)
    {
        QSignalSpy counted(&store(), &KelvoTrackerStore::playCounted);
        store().countPlay(QUrl(QString::fromUtf8(song(number).uri)));
        return counted.wait(Patience);
    }

    bool mark()
    {
        QSignalSpy marked(&store(), &KelvoTrackerStore::marked);
        store().setFavorite(QUrl(QString::fromUtf8(song(0).uri)), true);
        store().setDownloaded(QUrl(QString::fromUtf8(song(1).uri)), true);
        return QTest::qWaitFor([&] { return marked.count() == 2; }, Patience) && play(2) && play(2)
            && play(3);
    }
};
