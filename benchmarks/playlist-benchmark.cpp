// SPDX-License-Identifier: MIT
// playlist-benchmark [--growth SIZE...]
// What a playlist of 10,000 and of 100,000 items costs, with a play queue and a marked row that follow it. The
// reference is the same work on a plain vector of records, without names, signals or a model to follow.
// With --growth: points of how some of it grows with the number of items.
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoPlayQueue.h"
#include "Measurement.h"

#include <QAbstractTableModel>
#include <QCollator>
#include <QElapsedTimer>
#include <QRandomGenerator>

#include <malloc.h>

#include <memory>
#include <numeric>

namespace {
constexpr int rounds = 5;
constexpr size_t blockSize = 2000; // Rows that a running query delivers at once.

struct Record
{
    QString id;
    QString title;
    QUrl url;
    QString artist;
    QString album;
    int duration = -1;
};

Record makeRecord(int i)
{
    const auto mixed = int(qint64(i) * 7919 % 1'000'003);
    const QString number = QString::number(mixed);
    return {number, "The title of song " + number, QUrl("file:///music/artist/album/song-" + number + ".ogg"),
        "Artist " + QString::number(mixed % 500), "Album " + QString::number(mixed % 2000), mixed % 600};
}

class RecordModel : public QAbstractTableModel
{
public:
    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : int(m_rows.size());
    }
    int columnCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : 6; }
    QVariant headerData(int section, Qt::Orientation, int role) const override
    {
        static const char *const names[]
            = {"songId", "songTitle", "songUri", "songLength", "artistName", "albumName"};
        return role == Qt::DisplayRole ? QVariant(names[section]) : QVariant();
    }
    QVariant data(const QModelIndex &index, int role) const override
    {
        if (role != Qt::DisplayRole)
            return {};
        const Row &row = m_rows[size_t(index.row())];
        return index.column() == 3 ? QVariant(row.duration) : QVariant(row.texts[index.column()]);
    }
    void append(const std::vector<Record> &records, size_t from, size_t count)
    {
        beginInsertRows({}, rowCount(), rowCount() + int(count) - 1);
        for (size_t i = from; i < from + count; ++i) {
            const Record &r = records[i];
            m_rows.push_back({{r.id, r.title, r.url.toString(), {}, r.artist, r.album}, r.duration});
        }
        endInsertRows();
    }

private:
    struct Row
    {
        QString texts[6];
        int duration;
    };
    std::vector<Row> m_rows;
};

template <typename Work> double milliseconds(Work work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) / 1e6;
}

template <typename Work> double bytesOf(Work work)
{
    const size_t before = mallinfo2().uordblks;
    work();
    return double(mallinfo2().uordblks) - double(before);
}

void sortByTitle(std::vector<Record> &records)
{
    QCollator collator;
    if (collator.locale().language() == QLocale::C)
        collator.setLocale(QLocale(QLocale::English));
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::vector<std::pair<QCollatorSortKey, quint32>> keys;
    keys.reserve(records.size());
    for (const Record &record : records)
        keys.emplace_back(collator.sortKey(record.title), quint32(keys.size()));
    std::stable_sort(
        keys.begin(), keys.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    std::vector<Record> sorted;
    sorted.reserve(records.size());
    for (const auto &key : keys)
        sorted.push_back(std::move(records[key.second]));
    records = std::move(sorted);
}

/// A playlist with what usually follows it.
struct Playing
{
    explicit Playing(QAbstractItemModel *model)
        : list("id", "name", "source")
    {
        list.setUnderlyingModel(model);
        queue.setPlaylist(&list);
        queue.setIndex(list.count() / 2);
        marked = list.itemModel()->index(list.count() / 3, KelvoPlaylist::TitleColumn);
    }

    KelvoGeneralSourcePlaylist list;
    KelvoPlayQueue queue;
    QPersistentModelIndex marked;
};

class Comparison
{
public:
    explicit Comparison(int count)
        : m_count(count)
        , m_name(QLocale(QLocale::English).toString(count).toStdString() + " items: ")
        , m_goal(count <= 10'000 ? "at most 16 ms" : "")
    {
        for (int i = 0; i < count; ++i)
            m_records.push_back(makeRecord(i));
        m_model.append(m_records, 0, size_t(count));
    }

    void run()
    {
        showAppending();
        measure(
            "set as model", [](Playing &) {}, [](auto &) {}, true);
        measureSorting();
        measure(
            "sort by duration", [](Playing &p) { p.list.sort("duration", 4); },
            [](std::vector<Record> &records) {
                std::stable_sort(records.begin(), records.end(),
                    [](const Record &a, const Record &b) { return a.duration < b.duration; });
            });
        measureShuffling();
        measureRemoving();
        measureReading();
        Measurement::row(m_name + "find 10,000 uuids", timeOfFinding(), "ms", "", 0, m_goal);
        Measurement::row(m_name + "longest single step", m_longest, "ms", "", 0, m_goal);
        measureMemory();
    }

    /// What is worth a curve.
    void runForGrowth()
    {
        m_isGrowth = true;
        std::vector<double> appending, finding;
        for (int round = 0; round < rounds; ++round) {
            appending.push_back(append().all);
            finding.push_back(timeOfFinding());
        }
        grow("append in blocks of 2,000", appending);
        measureSorting();
        measureShuffling();
        measureRemoving();
        grow("find 10,000 uuids", finding);
    }

private:
    void grow(const std::string &name, const std::vector<double> &times)
    {
        Measurement::growth("playlist: " + name, m_count, Measurement::median(times));
    }

    void measureSorting()
    {
        measure(
            "sort by title", [](Playing &p) { p.list.sort("title", 0); }, sortByTitle);
    }

    void measureShuffling()
    {
        measure(
            "shuffle", [](Playing &p) { p.list.shuffle(); },
            [](std::vector<Record> &records) {
                std::shuffle(records.begin(), records.end(), *QRandomGenerator::global());
            });
    }

    void measureRemoving()
    {
        const int half = m_count / 2;
        measure(
            "remove the first half", [half](Playing &p) { p.list.removeItems(0, uint(half - 1)); },
            [half](std::vector<Record> &records) { records.erase(records.begin(), records.begin() + half); });
    }

    template <typename Edit, typename Reference>
    void measure(const std::string &name, Edit edit, Reference reference, bool withSetup = false)
    {
        std::vector<double> times, references;
        for (int round = 0; round < rounds; ++round) {
            std::unique_ptr<Playing> playing;
            const double setup = milliseconds([&] { playing = std::make_unique<Playing>(&m_model); });
            const double editing = milliseconds([&] { edit(*playing); });
            times.push_back(withSetup ? setup : editing);
            if (m_isGrowth)
                continue; // A curve needs no reference.
            std::vector<Record> records;
            const double copying = milliseconds([&] { records = m_records; });
            const double work = milliseconds([&] { reference(records); });
            references.push_back(withSetup ? copying : work);
        }
        if (m_isGrowth)
            grow(name, times);
        else
            show(name, times, references);
    }

    void show(
        const std::string &name, const std::vector<double> &times, const std::vector<double> &references)
    {
        m_longest = std::max(m_longest, Measurement::maximum(times));
        Measurement::row(m_name + name, Measurement::median(times), "ms", "vector",
            Measurement::median(references), m_goal);
    }

    struct Appending
    {
        double all = 0;
        double longestBlock = 0;
        double reference = 0;
    };

    // As a query result grows: block by block. The model's own share is in the reference too.
    Appending append() const
    {
        RecordModel alone, followed;
        Playing playing(&followed);
        Appending times;
        for (size_t from = 0; from < m_records.size(); from += blockSize) {
            const size_t count = std::min(blockSize, m_records.size() - from);
            const double step = milliseconds([&] { followed.append(m_records, from, count); });
            times.all += step;
            times.longestBlock = std::max(times.longestBlock, step);
            times.reference += milliseconds([&] { alone.append(m_records, from, count); });
        }
        return times;
    }

    void showAppending() const
    {
        const Appending times = append();
        Measurement::row(
            m_name + "append in blocks of 2,000, in all", times.all, "ms", "model alone", times.reference);
        Measurement::row(m_name + "append in blocks of 2,000, longest block", times.longestBlock, "ms", "", 0,
            "at most 16 ms");
    }

    void measureReading()
    {
        Playing playing(&m_model);
        playing.list.shuffle();
        qint64 sum = 0;
        const double time = milliseconds([&] {
            for (uint i = 0; i < 10'000; ++i)
                sum += playing.list.mediaInfoAt(i).duration();
        });
        const double reference = milliseconds([&] {
            for (size_t i = 0; i < 10'000; ++i)
                sum += Record(m_records[i]).duration;
        });
        Measurement::row(m_name + "read 10,000 items", time, "ms", "vector", reference, m_goal);
        if (sum == 0) // Never; keeps the loops.
            std::puts("nothing read");
    }

    /// Milliseconds for 10,000 times the last one of a shuffled list.
    double timeOfFinding()
    {
        Playing playing(&m_model);
        playing.list.shuffle();
        const QString last = playing.list.mediaInfoAt(uint(m_count - 1)).uuid();
        qint64 sum = 0;
        const double time = milliseconds([&] {
            for (int i = 0; i < 10'000; ++i)
                sum += playing.list.indexOf(last);
        });
        if (sum == 0) // Never; keeps the loop.
            std::puts("nothing found");
        return time;
    }

    void measureMemory()
    {
        auto model = std::make_unique<RecordModel>();
        const double modelBytes = bytesOf([&] { model->append(m_records, 0, m_records.size()); });
        KelvoGeneralSourcePlaylist list("id", "name", "source");
        const double bytes = bytesOf([&] { list.setUnderlyingModel(model.get()); });
        std::vector<Record> copy;
        const double reference = bytesOf([&] { copy = m_records; });
        const auto perItem = [this](double all) {
            return all / m_count;
        };
        Measurement::row(
            m_name + "memory of one item, model alive", perItem(bytes), "B", "vector", perItem(reference));
        const double freed = bytesOf([&] { model.reset(); });
        Measurement::row(m_name + "memory of one item, model gone", perItem(bytes + modelBytes + freed), "B",
            "model", perItem(modelBytes));
    }

    int m_count;
    std::string m_name;
    std::string m_goal;
    std::vector<Record> m_records;
    RecordModel m_model;
    double m_longest = 0;
    bool m_isGrowth = false;
};
} // namespace

int main(int argc, char *argv[])
{
    const std::vector<int> sizes = Measurement::growthSizes(argc, argv);
    for (int count : sizes)
        Comparison(count).runForGrowth();
    if (!sizes.empty())
        return 0;
    for (int count : {10'000, 100'000})
        Comparison(count).run();
    return 0;
}
