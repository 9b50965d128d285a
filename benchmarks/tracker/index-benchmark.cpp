// SPDX-License-Identifier: MIT
// index-benchmark FOLDER SONG [--growth COUNT...]
// Indexes 10,000 copies of the file SONG, made once in FOLDER, with and without their contents in the page cache,
// looks through them again, and indexes as many in one folder. The reference reads every file once.
// With --growth: points of how indexing COUNT files and looking through them grows.
#include "KelvoTrackerStore.h"
#include "Measurement.h"
#include "index/MediaIndexing.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>

#include <fcntl.h>
#include <unistd.h>

namespace {
constexpr int fileCount = 10'000;

template <class Sender, class Signal> void waitFor(Sender *sender, Signal signal)
{
    QEventLoop loop;
    QObject::connect(sender, signal, &loop, &QEventLoop::quit);
    loop.exec();
}

bool makeFiles(const QString &media, const QString &song, int filesPerFolder, int count = fileCount)
{
    QFile complete(media + QLatin1String("/complete"));
    if (complete.exists())
        return true;
    for (int i = 0; i < count; ++i) {
        const QString album = QStringLiteral("%1/album %2").arg(media).arg(i / filesPerFolder);
        QDir().mkpath(album);
        QFile::copy(song, QStringLiteral("%1/%2.mp3").arg(album).arg(i));
    }
    ::sync(); // only what is on the disk can be dropped from the cache
    return complete.open(QIODevice::WriteOnly);
}

double readAll(const QString &media)
{
    QElapsedTimer timer;
    timer.start();
    QDirIterator files(media, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (file.open(QIODevice::ReadOnly))
            file.readAll();
    }
    return double(timer.elapsed());
}

void dropFromCache(const QString &media)
{
    QDirIterator files(media, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const int fd = ::open(QFile::encodeName(files.next()).constData(), O_RDONLY | O_CLOEXEC);
        ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
        ::close(fd);
    }
}

/// Holds the store open and indexes one media folder.
class Indexing
{
public:
    explicit Indexing(const QString &media)
        : m_laterFolder(media + QLatin1String(" later"))
    {
        QDir().rmdir(m_laterFolder);
        qputenv("KELVO_MEDIA_DIRS", QFile::encodeName(media + QLatin1Char(':') + m_laterFolder));
        QObject::connect(m_store, &KelvoTrackerStore::indexed, &m_user,
            [this](const KelvoIndexReport &pass) { m_report = pass; });
        m_store->startIndexing(std::make_shared<MediaIndexing>());
        m_store->hold(&m_user);
        waitFor(m_store, &KelvoTrackerStore::indexed);
    }
    ~Indexing()
    {
        m_store->stopIndexing();
        m_store->release(&m_user);
        waitFor(m_store, &KelvoTrackerStore::closed);
    }
    Q_DISABLE_COPY_MOVE(Indexing)

    /// Everything is looked through when a folder that was missing comes, within two seconds.
    void lookAgain()
    {
        QDir().mkdir(m_laterFolder);
        waitFor(m_store, &KelvoTrackerStore::indexed);
    }
    const KelvoIndexReport &report() const { return m_report; }

private:
    const QString m_laterFolder;
    KelvoTrackerStore *const m_store = KelvoTrackerStore::instance();
    QObject m_user;
    KelvoIndexReport m_report;
};

void measure(const QString &folder, const QString &song)
{
    const QString data = folder + QLatin1String("/data");
    const QString media = folder + QLatin1String("/media");
    const QString oneFolder = folder + QLatin1String("/one folder");
    qputenv("XDG_DATA_HOME", QFile::encodeName(data));
    if (!makeFiles(media, song, 10) || !makeFiles(oneFolder, song, fileCount))
        return;
    using Measurement::row;
    const auto indexed
        = [](const std::string &name, const Indexing &indexing, double reference, const char *goal) {
              const double taken = indexing.report().milliseconds;
              row(name, taken, "ms", "reading them", reference, goal);
              row("- files per second", indexing.report().added * 1000.0 / taken, "files/s");
          };
    dropFromCache(media);
    const double cold = readAll(media);
    dropFromCache(media);
    QDir(data).removeRecursively();
    indexed("10,000 files indexed, none in the page cache", Indexing(media), cold, "at most 2");
    const double warm = readAll(media);
    QDir(data).removeRecursively();
    {
        Indexing indexing(media);
        indexed("10,000 files indexed, all in the page cache", indexing, warm, "at most 1.5");
        indexing.lookAgain();
        row("10,000 unchanged files looked through again", indexing.report().milliseconds, "ms", "", 0,
            "at most 2000 ms");
    }
    // What is known comes from the store.
    row("- after a restart", Indexing(media).report().milliseconds, "ms", "", 0, "at most 2000 ms");
    const double warmFolder = readAll(oneFolder);
    QDir(data).removeRecursively();
    indexed("10,000 files in one folder indexed", Indexing(oneFolder), warmFolder, "at most 1.5");
}

/// All in the page cache: how fast the disk is tells nothing of growth.
bool measureGrowth(const QString &folder, const QString &song, int count)
{
    const QString data = folder + QLatin1String("/data");
    const QString media = QStringLiteral("%1/media %2").arg(folder).arg(count);
    qputenv("XDG_DATA_HOME", QFile::encodeName(data));
    if (!makeFiles(media, song, 10, count))
        return false;
    readAll(media);
    QDir(data).removeRecursively();
    constexpr double noise = 1; // a report tells whole milliseconds
    Indexing indexing(media);
    if (int(indexing.report().added) != count)
        return false;
    Measurement::growth("files: indexed", count, indexing.report().milliseconds, noise);
    indexing.lookAgain();
    Measurement::growth(
        "files: unchanged, looked through again", count, indexing.report().milliseconds, noise);
    return true;
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (argc < 3)
        return 2;
    const QString folder = QDir(QFile::decodeName(argv[1])).absolutePath();
    const QString song = QFileInfo(QFile::decodeName(argv[2])).absoluteFilePath();
    const std::vector<int> sizes = Measurement::growthSizes(argc, argv, 3);
    for (const int size : sizes) {
        if (!measureGrowth(folder, song, size))
            return 1;
    }
    if (sizes.empty())
        measure(folder, song);
    return 0;
}
