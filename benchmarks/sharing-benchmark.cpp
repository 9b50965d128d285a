// SPDX-License-Identifier: MIT
// sharing-benchmark [--growth SIZE]
// Reads playlists of 10,000 items that another process (this program again, with --owner) shares over the session
// bus. The reference is the least that handing the same texts over can cost: the owner writes its prepared records
// into shared memory with QDataStream and passes the descriptor, the reader maps it and reads them back. Needs a
// session bus.
// With --growth: points of how it grows, for playlists of SIZE items. One size each time: who shares another size is
// another owner, whose coming would be measured too.
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoRegistry.h"
#include "KelvoShared.h"
#include "Measurement.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>
#include <QSocketNotifier>
#include <QStandardItemModel>
#include <QTimer>

#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
/// What is shared.
struct Shared
{
    explicit Shared(int itemsOfEach)
        : items(itemsOfEach)
        , rounds(itemsOfEach > 10'000 ? 5 : 15) // the owner's models take some 2 kB an item
    {
    }
    int items; ///< of each playlist
    int rounds; ///< a playlist each: what was read once is known
};

double milliseconds(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

/// Milliseconds that one event has kept the event loop.
struct Longest
{
    double time = 0;
    double work = 0; // of the processor; without that of other programs

    void note(const Longest &other)
    {
        time = std::max(time, other.time);
        work = std::max(work, other.work);
    }
};

/// Knows the longest event.
class Application : public QCoreApplication
{
public:
    using QCoreApplication::QCoreApplication;
    bool notify(QObject *receiver, QEvent *event) override
    {
        if (m_depth++ == 0) {
            m_timer.start();
            m_workBefore = Measurement::workOfThread();
        }
        const bool handled = QCoreApplication::notify(receiver, event);
        if (--m_depth == 0)
            m_longest.note({milliseconds(m_timer), Measurement::workOfThread() - m_workBefore});
        return handled;
    }
    Longest takeLongest() { return std::exchange(m_longest, {}); }

private:
    QElapsedTimer m_timer;
    double m_workBefore = 0;
    Longest m_longest;
    int m_depth = 0;
};

struct Record
{
    QString id;
    QString title;
    QString url;
    QString mimeType;
    qint64 duration = -1;
};

QDataStream &operator<<(QDataStream &stream, const Record &record)
{
    return stream << record.id << record.title << record.url << record.mimeType << record.duration;
}

QDataStream &operator>>(QDataStream &stream, Record &record)
{
    return stream >> record.id >> record.title >> record.url >> record.mimeType >> record.duration;
}

QString playlistId(int round)
{
    return QStringLiteral("shared-%1").arg(round);
}

KelvoGeneralSourcePlaylist *makePlaylist(int round, int items)
{
    auto *playlist = new KelvoGeneralSourcePlaylist(playlistId(round), "Shared", "KelvoTrackerSource");
    auto *model = new QStandardItemModel(playlist);
    model->setHorizontalHeaderLabels({"id", "title", "url", "duration", "mimeType"});
    for (int row = 0; row < items; ++row) {
        const QString number = QString::number(row);
        model->appendRow({new QStandardItem(number), new QStandardItem("The title of song " + number),
            new QStandardItem("file:///music/artist/album/song-" + number + ".ogg"),
            new QStandardItem(QString::number(row % 600)), new QStandardItem("audio/ogg")});
    }
    playlist->setUnderlyingModel(model);
    return playlist;
}

QList<Record> recordsOf(const KelvoPlaylist &playlist)
{
    QList<Record> records;
    for (uint index = 0; index < uint(playlist.count()); ++index) {
        const KelvoMediaInfo info = playlist.mediaInfoAt(index);
        records.append({info.uuid(), info.title(), info.url().toString(), info.mimeType(), info.duration()});
    }
    return records;
}

// The reference

void passDescriptor(int socket, int descriptor)
{
    char byte = 'd';
    iovec data{&byte, 1};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr message{};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr *header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
    if (sendmsg(socket, &message, 0) < 0)
        qFatal("The descriptor cannot be passed");
}

int receiveDescriptor(int socket)
{
    char byte = 0;
    iovec data{&byte, 1};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr message{};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    if (recvmsg(socket, &message, 0) < 0)
        qFatal("No descriptor comes");
    int descriptor = -1;
    std::memcpy(&descriptor, CMSG_DATA(CMSG_FIRSTHDR(&message)), sizeof descriptor);
    return descriptor;
}

void handOver(int socket, const QList<Record> &records)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << records;
    const int memory = memfd_create("records", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (write(memory, bytes.constData(), size_t(bytes.size())) != bytes.size())
        qFatal("The records do not fit");
    passDescriptor(socket, memory);
    close(memory);
}

/// Milliseconds for the whole list.
double takeOver(int socket, int items)
{
    QElapsedTimer timer;
    timer.start();
    if (write(socket, "h", 1) != 1)
        qFatal("The owner has gone");
    const int memory = receiveDescriptor(socket);
    struct stat status
    {
    };
    fstat(memory, &status);
    void *mapped = mmap(nullptr, size_t(status.st_size), PROT_READ, MAP_SHARED, memory, 0);
    QDataStream stream(QByteArray::fromRawData(static_cast<const char *>(mapped), status.st_size));
    QList<Record> records;
    stream >> records;
    const double time = milliseconds(timer);
    if (records.size() != items)
        qFatal("Records are missing");
    munmap(mapped, size_t(status.st_size));
    close(memory);
    return time;
}

// The owner

/// Answers on the socket: "h" hands the records over, "l" tells the longest event since the last "l", "p" the
/// longest time that publishing a playlist took, "w" how long this thread has worked.
int runOwner(Application &application, int socket, Shared shared)
{
    KelvoShared::instance()->initTracking(KelvoRegistry::instance());
    double publishing = 0;
    for (int round = 0; round < shared.rounds; ++round) {
        KelvoPlaylist *playlist = makePlaylist(round, shared.items);
        QElapsedTimer timer;
        timer.start();
        KelvoShared::instance()->publishPlaylist(playlist);
        publishing = std::max(publishing, milliseconds(timer));
    }
    const QList<Record> records = recordsOf(*KelvoRegistry::instance()->findPlaylistByUuid(playlistId(0)));
    application.takeLongest();
    QSocketNotifier requests(socket, QSocketNotifier::Read);
    QObject::connect(&requests, &QSocketNotifier::activated, &application, [&] {
        char request = 0;
        if (read(socket, &request, 1) != 1)
            return QCoreApplication::quit();
        if (request == 'h')
            return handOver(socket, records);
        Longest answer{publishing, Measurement::workOfThread()};
        if (request == 'l')
            answer = application.takeLongest();
        if (write(socket, &answer, sizeof answer) != sizeof answer)
            QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}

Longest askOwner(int socket, char question)
{
    Longest answer;
    if (write(socket, &question, 1) != 1 || read(socket, &answer, sizeof answer) != sizeof answer)
        qFatal("The owner has gone");
    return answer;
}

// The reader

struct Reading
{
    double firstPage = 0;
    double whole = 0;
};

Reading readList(KelvoPlaylist *playlist, int items)
{
    Reading reading;
    QElapsedTimer timer;
    QEventLoop loop;
    QObject::connect(playlist, &KelvoPlaylist::contentsChanged, &loop, [&] {
        if (reading.firstPage == 0)
            reading.firstPage = milliseconds(timer);
        if (playlist->count() == items)
            loop.quit();
    });
    timer.start();
    playlist->itemModel();
    loop.exec();
    reading.whole = milliseconds(timer);
    return reading;
}

void waitForPlaylists(int count)
{
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&loop, count] {
        if (KelvoRegistry::instance()->allPlaylists().size() == count)
            loop.quit();
    });
    poll.start(10);
    loop.exec();
}

/// What the reader finds out, in milliseconds.
struct Findings
{
    double publishing = 0;
    std::vector<double> firstPages;
    std::vector<double> lists;
    Longest longestReading;
    Longest longestGiving;
    std::vector<double> references;
    std::vector<double> work; ///< of the processor, at both ends
    std::vector<double> referenceWork;
};

Findings runReader(Application &application, int socket, Shared shared)
{
    KelvoShared::instance()->initTracking(KelvoRegistry::instance());
    waitForPlaylists(shared.rounds);
    Findings found;
    found.publishing = askOwner(socket, 'p').time;
    askOwner(socket, 'l');
    // Of both ends, so far.
    const auto workSoFar = [socket] {
        return Measurement::workOfThread() + askOwner(socket, 'w').work;
    };
    for (int round = 0; round < shared.rounds; ++round) {
        const double before = workSoFar();
        application.takeLongest();
        const Reading reading
            = readList(KelvoRegistry::instance()->findPlaylistByUuid(playlistId(round)), shared.items);
        found.longestReading.note(application.takeLongest());
        found.longestGiving.note(askOwner(socket, 'l'));
        found.firstPages.push_back(reading.firstPage);
        found.lists.push_back(reading.whole);
        const double between = workSoFar();
        found.references.push_back(takeOver(socket, shared.items));
        found.work.push_back(between - before);
        found.referenceWork.push_back(workSoFar() - between);
        askOwner(socket, 'l');
    }
    return found;
}

void showRows(const Findings &found)
{
    using Measurement::median;
    using Measurement::row;
    row("shared playlist of 10,000 items: first page", median(found.firstPages), "ms", "", 0, "at most 5 ms");
    row("- the whole list", median(found.lists), "ms", "shared memory", median(found.references),
        "at most 1.5");
    row("- processor time of it at both ends", median(found.work), "ms", "shared memory",
        median(found.referenceWork));
    row("- reader's longest event", found.longestReading.time, "ms", "", 0, "at most 8 ms");
    row("- most processor time of one event", found.longestReading.work, "ms", "", 0, "at most 16 ms");
    row("- owner's longest event", found.longestGiving.time, "ms", "", 0, "at most 8 ms");
    row("- most processor time of one event", found.longestGiving.work, "ms", "", 0, "at most 16 ms");
    row("- publishing", found.publishing, "ms", "", 0, "at most 16 ms");
}

void showGrowth(const Findings &found, int items)
{
    using Measurement::growth;
    using Measurement::median;
    growth("shared playlist: publishing", items, found.publishing);
    growth("shared playlist: first page", items, median(found.firstPages));
    growth("shared playlist: the whole list", items, median(found.lists));
}
} // namespace

int main(int argc, char *argv[])
{
    qputenv("KELVO_PLUGINS", "");
    Application application(argc, argv);
    if (argc > 3 && QByteArray(argv[1]) == "--owner")
        return runOwner(application, QByteArray(argv[2]).toInt(), Shared(QByteArray(argv[3]).toInt()));
    const std::vector<int> sizes = Measurement::growthSizes(argc, argv);
    const Shared shared(sizes.empty() ? 10'000 : sizes.front());
    int sockets[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, sockets) != 0)
        qFatal("No sockets");
    // The owner ends when this end is closed; a copy of its own would keep it from that.
    fcntl(sockets[0], F_SETFD, FD_CLOEXEC);
    QProcess owner;
    owner.setProcessChannelMode(QProcess::ForwardedChannels);
    owner.start(QCoreApplication::applicationFilePath(),
        {"--owner", QString::number(sockets[1]), QString::number(shared.items)});
    if (!owner.waitForStarted())
        qFatal("The owner does not start");
    close(sockets[1]);
    const Findings found = runReader(application, sockets[0], shared);
    close(sockets[0]);
    owner.waitForFinished();
    if (sizes.empty())
        showRows(found);
    else
        showGrowth(found, shared.items);
    return 0;
}
