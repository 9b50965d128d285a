// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTestCase.h"
#include "KelvoTrackerModelFactory.h"
#include "KelvoTrackerStore.h"

#include <QFile>
#include <QTemporaryDir>

#include <memory>

/// Base of the tests of the tracker store: each function gets a store and a media folder of its own.
class TrackerTestCase : public KelvoTestCase
{
    Q_OBJECT
protected:
    using Type = KelvoTrackerModel::QueryType;

    struct Tags
    {
        QString title = {};
        QString artist = {};
        QString album = {};
        int track = 0;
        QString genre = {};
        int year = 0;
    };

    /// What the console asks for videos.
    static inline const QString VideoQuery = QStringLiteral(
        "SELECT ?video nfo:fileName(?video) nie:url(?video) ?length nfo:fileSize(?video)WHERE {    ?video a "
        "nmm:Video .    "
        "OPTIONAL    {      ?video nfo:duration ?length .    } } ORDER BY nfo:fileName(?video)");
    /// Milliseconds after which something is taken to have failed.
    static constexpr int Patience = 30'000;
    /// Milliseconds in which a change of a file has to show in the store.
    static constexpr int Soon = 5000;

    /// As the file system has it.
    static QByteArray local(const QString &path) { return QFile::encodeName(path); }
    /// A file of the generated test media.
    static QString generated(const QString &name);
    /// A path in the media folder; the folders on the way are made.
    QString place(const QString &name) const;
    /// Puts a copy of a generated file into the media folder.
    QString addFile(const QString &name, const QString &original) const;
    /// The same, with these tags.
    QString addSong(const QString &name, const Tags &tags, const QString &original = "short.mp3") const;
    QString addText(const QString &name, const QByteArray &text) const;

    /// Opens the store; false when that fails.
    bool openStore();
    /// Releases the store and waits until its files are closed.
    void closeStore();
    /// Deletes the store's files under whoever reads it and waits until an empty store has taken its place.
    bool replaceStore() const;
    /// Waits for a pass of the indexer that leaves so many files.
    bool waitForFiles(int count, int milliseconds = Patience);

    /// The complete result of a query; null when it fails.
    std::unique_ptr<KelvoTrackerModel> result(Type type, int id = 0);
    static int columnOf(const QAbstractItemModel &model, const QString &key);
    static QVariant value(const QAbstractItemModel &model, int row, const QString &key);
    static QStringList texts(const QAbstractItemModel &model, const QString &key);
    static int rowOf(const QAbstractItemModel &model, const QString &key, const QVariant &wanted);
    QStringList titles(Type type, int id = 0);

    KelvoTrackerStore &store() const { return *KelvoTrackerStore::instance(); }
    QString folder() const { return m_folder->path(); }
    QString mediaFolder() const { return m_folder->filePath("media"); }

protected Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

private:
    void copyEmptyStore() const;

    std::unique_ptr<QTemporaryDir>
        m_emptyStore; ///< copied for each function: to make one takes ten times as long
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QObject> m_user;
};
