// SPDX-License-Identifier: MIT
// The clock, the items and the values of the simulator, as testers set them.
#include "SimulatorCase.h"
#include "TestGroup.h"

namespace {
class SimulatorItemsTest : public SimulatorCase
{
    Q_OBJECT
private Q_SLOTS:
    void changesItsName();
    void itemsWithoutDurationNeverEnd();
    void itemsThatCannotSeek();
    void aSeekWhileAnItemIsLoadedIsForThatItem();
    void inventsMetadata();
    void manualClockStandsStill();
    void realClockMoves();
    void clockGoesOnFromWhereItIs();
    void clockIsSharedByAll();
    void advancesStepByStep();
    void rewindsToTheBeginning();
    void refusesValues_data();
    void refusesValues();
    void tellsWhatWasSet_data();
    void tellsWhatWasSet();
};

void SimulatorItemsTest::changesItsName()
{
    QSignalSpy changed(renderer(), &KelvoRenderer::nameChanged);
    set("sim-name", QStringLiteral("Kitchen"));
    advance(0);
    QCOMPARE(renderer()->name(), QString("Kitchen"));
    QCOMPARE(changed.constLast(), QVariantList{QString("Kitchen")});
    set("sim-name", QString());
    advance(0);
    QCOMPARE(renderer()->name(), QString());
    QCOMPARE(changed.size(), 2);
    QCOMPARE(renderer()->uuid(), RendererA);
}

void SimulatorItemsTest::itemsWithoutDurationNeverEnd()
{
    set("sim-duration", 0);
    QVERIFY(start(QUrl("sim:radio")));
    QCOMPARE(heard().metadataCount("duration"), 0);
    advance(24 * 3600 * 1000);
    QCOMPARE(heard().state(), Playing);
    QCOMPARE(position(), 24 * 3600.0);
    renderer()->setPosition(5, KelvoRenderer::SeekAbsolute);
    advance(0);
    QCOMPARE(heard().errorsOf(KelvoError::NotSeekable), 1);
    // What the item itself tells comes first.
    QVERIFY(start(QUrl("sim:song?duration=3")));
    QCOMPARE(heard().metadata("duration"), QVariant(3));
}

void SimulatorItemsTest::itemsThatCannotSeek()
{
    set("sim-seekable", false);
    QVERIFY(start(QUrl("sim:x")));
    renderer()->setPosition(5, KelvoRenderer::SeekRelative);
    advance(0);
    QCOMPARE(heard().errorsOf(KelvoError::NotSeekable), 1);
    QCOMPARE(position(), 0.0);
}

void SimulatorItemsTest::aSeekWhileAnItemIsLoadedIsForThatItem()
{
    renderer()->playUri(QUrl("sim:one"));
    renderer()->setPosition(20, KelvoRenderer::SeekAbsolute);
    advance(20);
    QCOMPARE(position(), 20.0);
    renderer()->playUri(QUrl("sim:two"));
    renderer()->setPosition(20, KelvoRenderer::SeekAbsolute);
    QVERIFY(start(QUrl("sim:three"))); // before the second one was loaded
    QCOMPARE(position(), 0.0);
    QVERIFY(start(QUrl("sim:list?entries=2&duration=30")));
    renderer()->next();
    renderer()->setPosition(20, KelvoRenderer::SeekAbsolute);
    renderer()->previous();
    advance(20);
    QCOMPARE(position(), 0.0);
}

void SimulatorItemsTest::inventsMetadata()
{
    set("sim-metadata", QStringLiteral("genre=Noise=loud"));
    advance(0);
    QCOMPARE(heard().metadata("genre"), QVariant("Noise=loud"));
    set("sim-metadata", QVariantMap{{"bitrate", 128000}, {"performers", QVariantList{"One", "Two"}}});
    advance(0);
    QCOMPARE(heard().metadata("bitrate"), QVariant(128000));
    QCOMPARE(heard().metadata("performers"), QVariant("One"));
}

void SimulatorItemsTest::manualClockStandsStill()
{
    QVERIFY(start(QUrl("sim:x")));
    const qsizetype events = heard().events.size();
    for (int i = 0; i < 1000; ++i)
        QCoreApplication::processEvents();
    QCOMPARE(position(), 0.0);
    QCOMPARE(heard().events.size(), events);
}

void SimulatorItemsTest::realClockMoves()
{
    set("sim-clock", QStringLiteral("real"));
    renderer()->playUri(QUrl("sim:x?duration=1"));
    QTRY_VERIFY(position() > 0.1);
    QCOMPARE(heard().state(), Playing);
    QTRY_COMPARE(heard().completed, 1);
}

void SimulatorItemsTest::clockGoesOnFromWhereItIs()
{
    QVERIFY(start(QUrl("sim:x")));
    advance(3000);
    set("sim-clock", QStringLiteral("real"));
    QTRY_VERIFY(position() > 3.0);
    QVERIFY(position() < 20.0);
    set("sim-clock", QStringLiteral("manual"));
    const double here = position();
    advance(1000);
    QVERIFY(qAbs(position() - here - 1.0) < 0.001);
}

void SimulatorItemsTest::clockIsSharedByAll()
{
    QVERIFY(start(QUrl("sim:x")));
    renderer(RendererB)->setKelvoProperty("sim-advance", 4000);
    QTRY_COMPARE(position(), 4.0);
}

void SimulatorItemsTest::advancesStepByStep()
{
    m_playlist = std::make_unique<KelvoGeneralSourcePlaylist>("p", "p", "s");
    QStandardItemModel model;
    for (int i = 0; i < 3; ++i)
        model.appendRow({new QStandardItem(QString::number(i)), new QStandardItem("T"),
            new QStandardItem("sim:x?duration=10")});
    m_playlist->setUnderlyingModel(&model);
    renderer()->assignPlaylist(m_playlist.get());
    renderer()->play();
    renderer()->pauseAt(5);
    advance(100'000);
    QCOMPARE(heard().states, (States{Transitioning, Playing, Paused}));
    QCOMPARE(position(), 5.0);
    renderer()->resume();
    advance(100'000);
    QCOMPARE(heard().states,
        (States{Transitioning, Playing, Paused, Playing, Transitioning, Playing, Transitioning, Playing,
            Stopped}));
    QCOMPARE(heard().completed, 1);
}

void SimulatorItemsTest::rewindsToTheBeginning()
{
    QVERIFY(start(QUrl("sim:x")));
    advance(4000);
    set("playback-speed", -2.0);
    advance(1000);
    QCOMPARE(position(), 2.0);
    advance(1000);
    QCOMPARE(position(), 0.0);
    QCOMPARE(heard().property("playback-speed"), QVariant(1.0));
    QCOMPARE(heard().state(), Playing);
    advance(1000);
    QCOMPARE(position(), 1.0);
}

void SimulatorItemsTest::refusesValues_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariant>("value");
    const QList<QPair<const char *, QVariant>> values{
        {"sim-latency", -1},
        {"sim-latency", "soon"},
        {"sim-latency", 1.5},
        {"sim-latency", true},
        {"sim-failure", "x"},
        {"sim-failure", "106,0"},
        {"sim-failure", "106,x"},
        {"sim-failure", -5},
        {"sim-error", 0},
        {"sim-error", "words"},
        {"sim-buffering", -1},
        {"sim-stall", 3},
        {"sim-vanish", "later"},
        {"sim-name", 5},
        {"sim-duration", -1},
        {"sim-seekable", "maybe"},
        {"sim-metadata", "nothing"},
        {"sim-metadata", 5},
        {"sim-foreign", "dance"},
        {"sim-foreign", 5},
        {"sim-clock", "slow"},
        {"sim-clock", QVariant()},
        {"sim-advance", -1},
        {"sim-advance", "far"},
        {"policy-override", 1},
        {"colorkey", "red"},
        {"colorkey", -1},
    };
    for (const auto &[name, value] : values)
        QTest::addRow("%s = %s", name, qPrintable(value.toString())) << QString(name) << value;
}

void SimulatorItemsTest::refusesValues()
{
    QFETCH(QString, name);
    QFETCH(QVariant, value);
    const QVariant before = ask(name);
    QSignalSpy changed(renderer(), &KelvoRenderer::kelvoPropertyChanged);
    renderer()->setKelvoProperty(name, value);
    QTRY_COMPARE(heard().errors.size(), 1);
    QCOMPARE(heard().errors.constFirst().code(), KelvoError::InvalidValue);
    QCOMPARE(changed.size(), 0);
    QCOMPARE(ask(name), before);
    // Moving a clock that runs by itself makes no sense.
    set("sim-clock", QStringLiteral("real"));
    set("sim-advance", 5);
    QTRY_COMPARE(heard().errorsOf(KelvoError::InvalidValue), 2);
}

void SimulatorItemsTest::tellsWhatWasSet_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariant>("set");
    QTest::addColumn<QVariant>("told");
    const QList<std::tuple<const char *, QVariant, QVariant>> values{
        {"sim-latency", "250", 250},
        {"sim-failure", "106,3", 106},
        {"sim-error", 1, 1},
        {"sim-buffering", 700, 700},
        {"sim-stall", true, true},
        {"sim-name", "N", "N"},
        {"sim-duration", 5, 5},
        {"sim-seekable", "false", false},
        {"sim-metadata", "a=b", "a=b"},
        {"sim-foreign", "pause", "pause"},
        {"sim-clock", "manual", "manual"},
        {"sim-advance", 5, 5},
    };
    for (const auto &[name, value, told] : values)
        QTest::newRow(name) << QString(name) << value << told;
}

void SimulatorItemsTest::tellsWhatWasSet()
{
    QFETCH(QString, name);
    QFETCH(QVariant, set);
    QFETCH(QVariant, told);
    QSignalSpy changed(renderer(), &KelvoRenderer::kelvoPropertyChanged);
    renderer()->setKelvoProperty(name, set);
    QTRY_COMPARE(changed.size(), 1);
    QCOMPARE(changed.constFirst(), (QVariantList{name, told}));
    renderer()->kelvoProperty(name, m_probe.get(), "propertyAnswer(QString,QVariant)");
    advance(1000);
    QTRY_COMPARE(heard().propertyAnswers.size(), 1);
    if (name != QLatin1String("sim-advance"))
        QCOMPARE(heard().propertyAnswers.constFirst().second, told);
}
} // namespace

KELVO_TEST(SimulatorItemsTest)
#include "SimulatorItemsTest.moc"
