// SPDX-License-Identifier: MIT
#pragma once

#include "TrackerIndexCase.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

/// Base of the tests of results.
class TrackerModelCase : public TrackerIndexCase
{
    Q_OBJECT
protected:
    static constexpr int SongCount = 100;

    /// A model with everything that it tells.
    struct Watched
    {
        explicit Watched(KelvoTrackerModel *watched)
            : model(watched)
            , tester(watched, QAbstractItemModelTester::FailureReportingMode::QtTest)
            , inserted(watched, &QAbstractItemModel::rowsInserted)
            , completed(watched, &KelvoTrackerModel::completed)
            , failed(watched, &KelvoTrackerModel::error)
        {
        }

        QList<int> blocks() const
        {
            QList<int> sizes;
            for (const auto &signal : inserted)
                sizes.append(signal.at(2).toInt() - signal.at(1).toInt() + 1);
            return sizes;
        }

        std::unique_ptr<KelvoTrackerModel> model;
        QAbstractItemModelTester tester;
        QSignalSpy inserted;
        QSignalSpy completed;
        QSignalSpy failed;
    };

    static std::unique_ptr<Watched> start(Type type, int firstBlock, int streamBlock, int id = 0)
    {
        KelvoTrackerModelFactory factory("No album", "No artist", streamBlock);
        return std::make_unique<Watched>(factory.getModel(type, firstBlock, id));
    }

    /// One that closes its cursor as soon as that has nothing to do.
    static std::unique_ptr<Watched> startImpatient(Type type, int firstBlock, int streamBlock)
    {
        KelvoTrackerModelFactory factory(
            "No album", "No artist", streamBlock, nullptr, std::chrono::milliseconds(1));
        return std::make_unique<Watched>(factory.getModel(type, firstBlock, 0));
    }

    bool fill(int count = SongCount)
    {
        std::vector<MediaItem> items;
        for (int i = 0; i < count; ++i)
            items.push_back(song(i));
        return openStore() && writeSongs(items);
    }
};
