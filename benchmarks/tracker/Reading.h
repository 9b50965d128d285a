// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerModelFactory.h"

#include <QElapsedTimer>
#include <QEventLoop>

#include <memory>

/// Reads results as the console does, and tells how long it takes.
namespace Reading {
constexpr int firstBlock = 200; ///< rows
constexpr int streamBlock = 2000; ///< rows
constexpr int rounds = 5;

double milliseconds(const QElapsedTimer &timer);

template <class Sender, class Signal> void waitFor(Sender *sender, Signal signal)
{
    QEventLoop loop;
    QObject::connect(sender, signal, &loop, &QEventLoop::quit);
    loop.exec();
}

/// In milliseconds and bytes.
struct Times
{
    double first = 0;
    double all = 0;
    double longestStall = 0;
    double mostWork = 0; ///< of the GUI thread between two turns of its event loop
    double residentPerRow = 0;
    int rows = 0;
};

/// All songs, block by block, into a model that is given out.
Times readModel(KelvoTrackerModelFactory &factory, std::unique_ptr<KelvoTrackerModel> *kept);

/// Milliseconds until the first block of a query is in the model: the median of some rounds.
double firstBlockOf(KelvoTrackerModelFactory &factory, KelvoTrackerModel::QueryType type, int id);

/// The factory of a store that is open.
class OpenFactory : public KelvoTrackerModelFactory
{
public:
    OpenFactory()
        : KelvoTrackerModelFactory(
            QStringLiteral("Unknown album"), QStringLiteral("Unknown artist"), streamBlock)
    {
        init();
        waitFor(this, &KelvoTrackerModelFactory::initCompleted);
    }
};
} // namespace Reading
