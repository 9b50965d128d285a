// SPDX-License-Identifier: MIT
#include "KelvoTestCase.h"
#include "KelvoTrackerModelFactory.h"
#include "KelvoTrackerStore.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

/// A system without the library of the store, which is loaded when the store is opened.
class TrackerAbsentTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void saysThatTheLibraryCannotBeUsed()
    {
        const QTemporaryDir data;
        qputenv("XDG_DATA_HOME", QFile::encodeName(data.path()));
        LogRecorder log;
        KelvoTrackerModelFactory factory("A", "B", 10);
        QSignalSpy initialised(&factory, &KelvoTrackerModelFactory::initCompleted);
        factory.init();
        QVERIFY(initialised.wait());
        QCOMPARE(initialised.first().first().toBool(), false);
        const QString why = factory.errorText();
        QVERIFY2(why.startsWith("libtracker-sparql cannot be used: "), qPrintable(why));
        QVERIFY2(why.contains("libtracker-sparql-3.0.so.0"), qPrintable(why));
        QCOMPARE(log.warnings().filter(why).size(), 1);

        const std::unique_ptr<KelvoTrackerModel> model(factory.getModel(KelvoTrackerModel::AllSongs, 0, 0));
        QSignalSpy failed(model.get(), &KelvoTrackerModel::error);
        QVERIFY(failed.wait());
        QCOMPARE(failed.first().first().toString(), why);
        QVERIFY(!QDir(KelvoTrackerStore::instance()->folder()).exists());
    }
};

KELVO_TEST(TrackerAbsentTest)
#include "TrackerAbsentTest.moc"
