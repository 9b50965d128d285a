// SPDX-License-Identifier: MIT
#pragma once

#include "ConsoleFixture.h"
#include "KelvoPlaylist.h"
#include "KelvoPlaylistController.h"
#include "KelvoRegistry.h"
#include "KelvoShared.h"
#include "KelvoSourceController.h"
#include "LogRecorder.h"
#include "RecordingSource.h"
#include "TrackerIndexCase.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QListView>
#include <QTest>
#include <QTextEdit>
#include <QToolButton>

/// The source controller in a console with three sources and a store of six songs.
class SourceControllerCase : public TrackerIndexCase
{
    Q_OBJECT
protected:
    enum QueryIndex { AllSongs = 0, AllAlbums = 4, AllArtists = 5, AllPlaylists = 6, AllVideos = 10 };
    static constexpr int SongCount = 6;

    static inline const QStringList PropertyKeys{"signIn", "signedIn", "deviceType", "manufacturer",
        "manufacturerURL", "modelDescription", "modelName", "modelNumber", "modelURL", "serialNumber",
        "presentationURL", "universalProductCode", "iconURL", "supportQuery"};

    template <typename T> T *find(const char *name) const { return m_console->find<T>(name); }
    void click(const char *name) const { find<QToolButton>(name)->click(); }
    void choose(int query) const { find<QComboBox>("m_query_queryCombo")->setCurrentIndex(query); }
    QString caption() const { return find<QToolButton>("m_query_executeButton")->text(); }
    QString propertiesText() const { return find<QTextEdit>("m_propertiesField")->toPlainText(); }
    QAbstractItemModel *shown() const { return find<QListView>("m_query_resultsView")->model(); }
    void select(int row) const
    {
        auto *view = find<QListView>("m_query_resultsView");
        view->setCurrentIndex(view->model()->index(row, 1));
    }
    void execute(int query)
    {
        choose(query);
        click("m_query_executeButton");
        m_models.append(m_controller->queryModel());
        QTRY_COMPARE(caption(), QStringLiteral("Execute\nquery"));
    }
    // An empty playlist of its own, made current.
    KelvoPlaylist *makePlaylist() const
    {
        KelvoPlaylistController *playlists = m_console->application()->playlists();
        playlists->createPlaylist("mine", "my list", nullptr);
        playlists->playlistChanged("mine");
        return playlists->currentPlaylist();
    }
    // Opens the select-sources dialog, checks these boxes only and answers.
    QList<bool> chooseSources(const QList<bool> &checks, ModalCloser::Answer answer)
    {
        QList<bool> before;
        ModalCloser closer(answer);
        closer.whenOpen = [&](QWidget *dialog) {
            const QList<QCheckBox *> boxes = dialog->findChildren<QCheckBox *>();
            for (qsizetype i = 0; i < boxes.size(); ++i) {
                before.append(boxes.at(i)->isChecked());
                boxes.at(i)->setChecked(checks.value(i));
            }
        };
        find<QAction>("m_actionSelectSources")->trigger();
        return before;
    }
    static void enter(const QString &source, KelvoSourceController *controller)
    {
        QVERIFY(QMetaObject::invokeMethod(controller, "invokeGetProperties", Q_ARG(QString, source)));
    }

    std::unique_ptr<RecordingSource> m_first;
    std::unique_ptr<RecordingSource> m_second;
    std::unique_ptr<RecordingSource> m_third;
    std::unique_ptr<ConsoleFixture> m_console;
    KelvoSourceController *m_controller = nullptr;
    QList<QPointer<QAbstractItemModel>> m_models;

protected Q_SLOTS:
    // One store for all functions: none changes what it holds.
    void initTestCase()
    {
        TrackerIndexCase::initTestCase();
        TrackerIndexCase::init();
        std::vector<MediaItem> items;
        for (int i = 0; i < SongCount; ++i)
            items.push_back(song(i));
        QVERIFY(openStore());
        QVERIFY(writeSongs(items));
    }

    void cleanupTestCase() { TrackerIndexCase::cleanup(); }

    void init()
    {
        KelvoTestCase::init();
        m_first
            = std::make_unique<RecordingSource>("s1", "first", QStringList({"deviceType", "supportQuery"}));
        m_second = std::make_unique<RecordingSource>("s2", "second", PropertyKeys);
        m_third = std::make_unique<RecordingSource>("s3", "third");
        for (RecordingSource *source : {m_first.get(), m_second.get(), m_third.get()})
            KelvoRegistry::instance()->addSource(source);
        m_console = std::make_unique<ConsoleFixture>();
        m_controller = m_console->application()->sources();
    }

    void cleanup()
    {
        m_console.reset();
        const QList<KelvoPlaylist *> playlists = KelvoRegistry::instance()->allPlaylists();
        for (const KelvoPlaylist *playlist : playlists)
            KelvoShared::instance()->unPublishPlaylist(playlist->uuid());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        for (const QPointer<QAbstractItemModel> &model : std::as_const(m_models))
            delete model;
        m_models.clear();
        m_first.reset();
        m_second.reset();
        m_third.reset();
    }
};
