// SPDX-License-Identifier: MIT
#include "Reading.h"

#include "Measurement.h"

#include <QFile>
#include <QTimer>

#include <malloc.h>
#include <unistd.h>

namespace {
double residentBytes()
{
    malloc_trim(0);
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toDouble() * double(sysconf(_SC_PAGESIZE));
}
} // namespace

double Reading::milliseconds(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

Reading::Times Reading::readModel(KelvoTrackerModelFactory &factory, std::unique_ptr<KelvoTrackerModel> *kept)
{
    Times times;
    const double before = residentBytes();
    QEventLoop loop;
    QElapsedTimer timer;
    QElapsedTimer sinceTick;
    double workBefore = Measurement::workOfThread();
    QTimer tick;
    tick.setInterval(1);
    QObject::connect(&tick, &QTimer::timeout, &tick, [&] {
        times.longestStall = std::max(times.longestStall, milliseconds(sinceTick));
        sinceTick.start();
        const double work = Measurement::workOfThread();
        times.mostWork = std::max(times.mostWork, work - std::exchange(workBefore, work));
    });
    timer.start();
    sinceTick.start();
    tick.start();
    std::unique_ptr<KelvoTrackerModel> model(factory.getModel(KelvoTrackerModel::AllSongs, firstBlock, 0));
    QObject::connect(model.get(), &QAbstractItemModel::rowsInserted, &loop, [&] {
        if (times.first == 0) {
            times.first = milliseconds(timer);
            model->fetchRest();
        }
    });
    QObject::connect(model.get(), &KelvoTrackerModel::completed, &loop, &QEventLoop::quit);
    loop.exec();
    times.all = milliseconds(timer);
    times.rows = model->rowCount();
    times.residentPerRow = (residentBytes() - before) / times.rows;
    *kept = std::move(model);
    return times;
}

double Reading::firstBlockOf(KelvoTrackerModelFactory &factory, KelvoTrackerModel::QueryType type, int id)
{
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round) {
        QElapsedTimer timer;
        timer.start();
        const std::unique_ptr<KelvoTrackerModel> model(factory.getModel(type, firstBlock, id));
        QEventLoop loop;
        QObject::connect(model.get(), &QAbstractItemModel::rowsInserted, &loop, &QEventLoop::quit);
        QObject::connect(model.get(), &KelvoTrackerModel::completed, &loop, &QEventLoop::quit); // without any
        loop.exec();
        if (model->rowCount() == 0)
            qFatal("A query has no rows");
        times.push_back(milliseconds(timer));
    }
    return Measurement::median(times);
}
