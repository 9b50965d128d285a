// SPDX-License-Identifier: MIT
#include "TrackerTestCase.h"

#include "store/StoreSession.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>

#include <fileref.h>
#include <tag.h>

namespace {
TagLib::String tagText(const QString &text)
{
    return {text.toStdString(), TagLib::String::UTF8};
}
} // namespace

void TrackerTestCase::initTestCase()
{
    m_emptyStore = std::make_unique<QTemporaryDir>();
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_emptyStore->path()));
    QVERIFY(openStore());
    closeStore();
}

void TrackerTestCase::init()
{
    KelvoTestCase::init();
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QVERIFY(QDir(m_folder->path()).mkdir("media"));
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder->filePath("data")));
    copyEmptyStore();
    qputenv("KELVO_MEDIA_DIRS", QFile::encodeName(mediaFolder()));
    qunsetenv("KELVO_TRACKER");
}

void TrackerTestCase::copyEmptyStore() const
{
    const QDir original(m_emptyStore->filePath("kelvo/tracker"));
    QVERIFY(QDir().mkpath(store().folder()));
    const QStringList files = original.entryList(QDir::Files | QDir::Hidden);
    for (const QString &file : files)
        QVERIFY(QFile::copy(original.filePath(file), store().folder() + '/' + file));
}

void TrackerTestCase::cleanup()
{
    closeStore();
    m_folder.reset();
}

QString TrackerTestCase::generated(const QString &name)
{
    return QStringLiteral(KELVO_TEST_MEDIA "/") + name;
}

QString TrackerTestCase::place(const QString &name) const
{
    const QString path = mediaFolder() + '/' + name;
    QDir().mkpath(QFileInfo(path).path());
    return path;
}

QString TrackerTestCase::addFile(const QString &name, const QString &original) const
{
    const QString path = place(name);
    return QFile::copy(generated(original), path) ? path : QString();
}

// Tagged before it gets its name, so that the indexer never meets it half done.
QString TrackerTestCase::addSong(const QString &name, const Tags &tags, const QString &original) const
{
    const QString hidden = m_folder->filePath("new." + QFileInfo(original).suffix());
    QFile::remove(hidden);
    if (!QFile::copy(generated(original), hidden))
        return {};
    {
        TagLib::FileRef file(QFile::encodeName(hidden).constData());
        file.tag()->setTitle(tagText(tags.title));
        file.tag()->setArtist(tagText(tags.artist));
        file.tag()->setAlbum(tagText(tags.album));
        file.tag()->setTrack(uint(tags.track));
        file.tag()->setGenre(tagText(tags.genre));
        file.tag()->setYear(uint(tags.year));
        file.save();
    }
    const QString path = place(name);
    QFile::remove(path);
    return QFile::rename(hidden, path) ? path : QString();
}

QString TrackerTestCase::addText(const QString &name, const QByteArray &text) const
{
    QFile file(place(name));
    if (!file.open(QIODevice::WriteOnly))
        return {};
    file.write(text);
    return file.fileName();
}

bool TrackerTestCase::openStore()
{
    m_user = std::make_unique<QObject>();
    QSignalSpy opened(&store(), &KelvoTrackerStore::opened);
    store().hold(m_user.get());
    return opened.wait(Patience) && store().state() == KelvoTrackerStore::Open;
}

void TrackerTestCase::closeStore()
{
    store().stopIndexing();
    QSignalSpy closed(&store(), &KelvoTrackerStore::closed);
    const bool open = store().state() != KelvoTrackerStore::Closed;
    m_user.reset();
    if (open)
        QVERIFY(closed.wait(Patience));
}

bool TrackerTestCase::replaceStore() const
{
    QSignalSpy rebuilt(&store(), &KelvoTrackerStore::rebuilt);
    const QStringList files = QDir(store().folder()).entryList({"*.db*"}, QDir::Files);
    for (const QString &file : files)
        QFile::remove(store().folder() + '/' + file);
    store().session()->report(store().session()->checkFiles());
    return rebuilt.wait(Patience);
}

bool TrackerTestCase::waitForFiles(int count, int milliseconds)
{
    int files = -1;
    const auto connection = connect(&store(), &KelvoTrackerStore::indexed, this,
        [&files](const KelvoIndexReport &report) { files = report.files; });
    const bool reached = QTest::qWaitFor([&] { return files == count; }, milliseconds);
    disconnect(connection);
    return reached;
}

std::unique_ptr<KelvoTrackerModel> TrackerTestCase::result(Type type, int id)
{
    KelvoTrackerModelFactory factory("No album", "No artist", 50);
    std::unique_ptr<KelvoTrackerModel> model(factory.getModel(type, 0, id));
    QSignalSpy completed(model.get(), &KelvoTrackerModel::completed);
    QSignalSpy failed(model.get(), &KelvoTrackerModel::error);
    if (!completed.wait(Patience) || !failed.isEmpty()) {
        qWarning() << "The query failed:" << failed;
        model.reset();
    }
    return model;
}

int TrackerTestCase::columnOf(const QAbstractItemModel &model, const QString &key)
{
    for (int column = 0; column < model.columnCount(); ++column) {
        if (model.headerData(column, Qt::Horizontal).toString() == key)
            return column;
    }
    return -1;
}

QVariant TrackerTestCase::value(const QAbstractItemModel &model, int row, const QString &key)
{
    return model.index(row, columnOf(model, key)).data();
}

QStringList TrackerTestCase::texts(const QAbstractItemModel &model, const QString &key)
{
    QStringList list;
    for (int row = 0; row < model.rowCount(); ++row)
        list.append(value(model, row, key).toString());
    return list;
}

int TrackerTestCase::rowOf(const QAbstractItemModel &model, const QString &key, const QVariant &wanted)
{
    for (int row = 0; row < model.rowCount(); ++row) {
        if (value(model, row, key) == wanted)
            return row;
    }
    return -1;
}

QStringList TrackerTestCase::titles(Type type, int id)
{
    const auto model = result(type, id);
    QStringList list;
    for (int row = 0; model && row < model->rowCount(); ++row)
        list.append(model->index(row, 1).data().toString());
    return list;
}
