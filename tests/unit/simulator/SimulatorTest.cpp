// SPDX-License-Identifier: MIT
// What testers can do to the simulator. That it is a renderer like any other is the contract's business.
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoRegistry.h"
#include "KelvoSource.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "MinimalObjects.h"
#include "RendererProbe.h"

#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

#include <memory>

namespace {
using States = QList<KelvoRenderer::State>;
constexpr auto Stopped = KelvoRenderer::Stopped;
constexpr auto Playing = KelvoRenderer::Playing;
constexpr auto Paused = KelvoRenderer::Paused;
constexpr auto Transitioning = KelvoRenderer::Transitioning;

const QString plugin = QStringLiteral("simulator.so");
const QString rendererA = QStringLiteral("KelvoSimulatorA");
const QString rendererB = QStringLiteral("KelvoSimulatorB");
const QString unnamed = QStringLiteral("KelvoSimulatorUnnamed");

/// Receives the answers of sources, through the slot that the console names.
class SourceListener : public QObject
{
    Q_OBJECT
public:
    QStringList keys;
    QVariantList values;

public Q_SLOTS:
    void sourcePropertyCallback(QString &key, QVariant &value)
    {
        keys.append(key);
        values.append(value);
    }
};

class SimulatorTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void bringsRenderersAndSources();
    void doesNotStartByDefault();
    void isRefusedAsAWhole();

    void latencyHoldsCommandsBack();
    void latencyKeepsTheOrder();
    void nextItemsFail();
    void failureCanBeTakenBack();
    void errorWithWords();
    void errorEndsTheItem();
    void bufferFillsBeforeTheItem();
    void bufferFillsInMidPlay();
    void pauseWhileTheBufferFills();
    void stopEndsTheBuffering();
    void stallsAndGoesOn();
    void reportsAPolicyOverride();
    void reportsAColorKey();
    void vanishesAndComesBack();
    void vanishesForGood();
    void unloadedWhileVanished();
    void changesItsName();
    void itemsWithoutDurationNeverEnd();
    void itemsThatCannotSeek();
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

    void urlTellsTheItem();
    void urlOfAList();
    void listWithBadEntries();
    void listOfBadEntries();
    void environmentSetsUp();
    void environmentWithMistakes();

    void sourcesAnswerAndRefuse();
    void sourcesSignInAndOut();
    void sourcesWarn();

private:
    bool load();
    KelvoRenderer *renderer(const QString &uuid = rendererA) const
    {
        return m_registry->findRendererByUuid(uuid);
    }
    void set(const char *name, const QVariant &value) const;
    void advance(int milliseconds) const;
    bool start(const QUrl &url) const;
    double position();
    QVariant ask(const QString &name);
    void watch() { m_probe = std::make_unique<RendererProbe>(*renderer()); }
    RendererProbe &heard() { return *m_probe; }

    std::unique_ptr<KelvoRegistry> m_registry;
    std::unique_ptr<RendererProbe> m_probe;
    std::unique_ptr<KelvoGeneralSourcePlaylist> m_playlist;
};

void SimulatorTest::init()
{
    KelvoTestCase::init();
    qunsetenv("KELVO_SIMULATOR");
    m_registry = std::make_unique<KelvoRegistry>();
    QVERIFY(load());
    watch();
    set("sim-clock", QStringLiteral("manual"));
    advance(0);
}

void SimulatorTest::cleanup()
{
    const QStringList violations = m_probe->violations;
    m_registry.reset();
    m_probe.reset();
    m_playlist.reset();
    QCOMPARE(violations, QStringList());
}

bool SimulatorTest::load()
{
    QSignalSpy loaded(m_registry->pluginLoader(), &KelvoPluginLoader::pluginLoaded);
    m_registry->loadPlugin(plugin);
    return loaded.wait();
}

void SimulatorTest::set(const char *name, const QVariant &value) const
{
    renderer()->setKelvoProperty(QLatin1String(name), value);
}

/// Returns when the clock has arrived and all that fell due has been done.
void SimulatorTest::advance(int milliseconds) const
{
    KelvoRenderer *mover = renderer() ? renderer() : renderer(rendererB);
    QSignalSpy moved(mover, &KelvoRenderer::kelvoPropertyChanged);
    mover->setKelvoProperty(QStringLiteral("sim-advance"), milliseconds);
    const auto arrived = [&moved] {
        return std::any_of(
            moved.cbegin(), moved.cend(), [](const auto &report) { return report.at(0) == "sim-advance"; });
    };
    while (!arrived())
        QVERIFY(moved.wait());
}

bool SimulatorTest::start(const QUrl &url) const
{
    renderer()->playUri(url);
    advance(20);
    return m_probe->state() == Playing;
}

/// Seconds.
double SimulatorTest::position()
{
    return ask(KelvoRenderer::PropertyPosition).toDouble();
}

QVariant SimulatorTest::ask(const QString &name)
{
    m_probe->propertyAnswers.clear();
    QSignalSpy answered(m_probe.get(), &RendererProbe::answered);
    renderer()->kelvoProperty(name, m_probe.get(), "propertyAnswer(QString,QVariant)");
    return answered.wait() ? m_probe->propertyAnswers.constFirst().second : QStringLiteral("no answer");
}

void SimulatorTest::bringsRenderersAndSources()
{
    QStringList renderers;
    QStringList sources;
    for (const KelvoRenderer *one : m_registry->renderers())
        renderers.append(one->uuid() + '/' + one->name());
    for (const KelvoSource *one : m_registry->sources())
        sources.append(one->uuid() + '/' + one->name());
    QCOMPARE(renderers, (QStringList{rendererA + "/Simulator A", rendererB + "/Simulator B", unnamed + '/'}));
    QCOMPARE(sources,
        (QStringList{
            "KelvoSimulatorSourceA/Simulated source A", "KelvoSimulatorSourceB/Simulated source B"}));
    QCOMPARE(m_registry->allPlaylists().size(), 0);
    m_registry->unloadPlugin(plugin);
    QCOMPARE(m_registry->renderers().size(), 0);
    QCOMPARE(m_registry->sources().size(), 0);
}

void SimulatorTest::doesNotStartByDefault()
{
    const KelvoPluginStatus status = m_registry->pluginLoader()->status(plugin);
    QCOMPARE(status.startsByDefault, false);
    QCOMPARE(status.name, QString("Simulator"));
    QCOMPARE(status.brings, (QStringList{"renderers", "sources"}));
}

void SimulatorTest::isRefusedAsAWhole()
{
    m_registry->unloadPlugin(plugin);
    for (KelvoSource *source : {static_cast<KelvoSource *>(nullptr),
             static_cast<KelvoSource *>(new MinimalSource("KelvoSimulatorSourceB", "in the way"))}) {
        const std::unique_ptr<KelvoSource> owned(source);
        KelvoRegistry registry;
        MinimalRenderer inTheWay(unnamed, "in the way");
        const bool accepted = source ? registry.addSource(source) : registry.addRenderer(&inTheWay);
        QVERIFY(accepted);
        QSignalSpy failed(registry.pluginLoader(), &KelvoPluginLoader::pluginFailed);
        registry.loadPlugin(plugin);
        QVERIFY(failed.wait());
        QCOMPARE(registry.renderers().size(), source ? 0 : 1);
        QCOMPARE(registry.sources().size(), source ? 1 : 0);
        source ? registry.removeSource(source) : registry.removeRenderer(&inTheWay);
    }
}

void SimulatorTest::latencyHoldsCommandsBack()
{
    set("sim-latency", 300);
    advance(0);
    renderer()->playUri(QUrl("sim:x"));
    advance(299);
    QCOMPARE(heard().states, States());
    advance(1);
    QCOMPARE(heard().states, States{Transitioning});
    renderer()->getPosition(m_probe.get(), "positionAnswer(uint)");
    renderer()->setKelvoProperty("volume", 5);
    advance(299);
    QCOMPARE(heard().states.constLast(), Playing);
    QCOMPARE(heard().positionAnswers.size(), 0);
    QVERIFY(!heard().property("volume").isValid());
    advance(1);
    QTRY_COMPARE(heard().positionAnswers.size(), 1);
    QCOMPARE(heard().property("volume"), QVariant(5U));
}

void SimulatorTest::latencyKeepsTheOrder()
{
    set("sim-latency", 500);
    advance(0);
    renderer()->playUri(QUrl("sim:first"));
    set("sim-latency", 0);
    advance(0);
    renderer()->playUri(QUrl("sim:second"));
    advance(100);
    QCOMPARE(heard().media.size(), 0);
    advance(400);
    QCOMPARE(heard().media.size(), 2);
    QCOMPARE(heard().media.constLast().content.url, QUrl("sim:second"));
}

void SimulatorTest::nextItemsFail()
{
    set("sim-failure", QStringLiteral("105,2"));
    QVERIFY(!start(QUrl("sim:x")));
    QVERIFY(!start(QUrl("sim:x")));
    QVERIFY(start(QUrl("sim:x")));
    QCOMPARE(heard().errors.size(), 2);
    QCOMPARE(heard().errorsOf(KelvoError::CodecMissing), 2);
    set("sim-failure", 200);
    QVERIFY(!start(QUrl("sim:x")));
    QCOMPARE(heard().errorsOf(KelvoError::NetworkFailed), 1);
    QVERIFY(start(QUrl("sim:x")));
}

void SimulatorTest::failureCanBeTakenBack()
{
    set("sim-failure", 106);
    set("sim-failure", 0);
    QVERIFY(start(QUrl("sim:x")));
    QCOMPARE(heard().errors.size(), 0);
}

void SimulatorTest::errorWithWords()
{
    set("sim-error", QStringLiteral("1,out of tape, again"));
    advance(0);
    QCOMPARE(heard().errors.size(), 1);
    QCOMPARE(heard().errors.constFirst().code(), KelvoError::UnknownError);
    QCOMPARE(heard().errors.constFirst().message(), QString("out of tape, again"));
    QCOMPARE(heard().states, States());
}

void SimulatorTest::errorEndsTheItem()
{
    QVERIFY(start(QUrl("sim:x")));
    set("sim-error", 102);
    advance(100);
    QCOMPARE(heard().errorsOf(KelvoError::ReadFailed), 1);
    QCOMPARE(heard().state(), Stopped);
    QCOMPARE(heard().completed, 0);
}

void SimulatorTest::bufferFillsBeforeTheItem()
{
    QSignalSpy buffering(renderer(), &KelvoRenderer::bufferingInfo);
    set("sim-buffering", 1000);
    QVERIFY(!start(QUrl("sim:x")));
    QCOMPARE(heard().states, States{Transitioning});
    QCOMPARE(buffering.size(), 1);
    QCOMPARE(buffering.constFirst().at(0).toFloat(), 0.0F);
    advance(500);
    QCOMPARE(buffering.constLast().at(0).toFloat(), 0.5F);
    QCOMPARE(heard().states, States{Transitioning});
    advance(500);
    QCOMPARE(buffering.constLast().at(0).toFloat(), 1.0F);
    QCOMPARE(buffering.size(), 11);
    QCOMPARE(heard().states, (States{Transitioning, Playing}));
    QCOMPARE(position(), 0.0);
}

void SimulatorTest::bufferFillsInMidPlay()
{
    QVERIFY(start(QUrl("sim:x")));
    advance(3000);
    set("sim-buffering", 2000);
    advance(1000);
    QCOMPARE(heard().state(), Transitioning);
    QCOMPARE(position(), 3.0);
    advance(1000);
    QCOMPARE(heard().state(), Playing);
    advance(500);
    QCOMPARE(position(), 3.5);
}

void SimulatorTest::pauseWhileTheBufferFills()
{
    set("sim-buffering", 1000);
    QVERIFY(!start(QUrl("sim:x")));
    renderer()->pause();
    advance(200);
    QCOMPARE(heard().states, (States{Transitioning, Paused}));
    renderer()->resume();
    advance(200);
    QCOMPARE(heard().states, (States{Transitioning, Paused, Transitioning}));
    renderer()->pause();
    // The user's wish holds when the buffer is full.
    advance(5000);
    QCOMPARE(heard().states, (States{Transitioning, Paused, Transitioning, Paused}));
    QCOMPARE(position(), 0.0);
    renderer()->resume();
    advance(1000);
    QCOMPARE(heard().state(), Playing);
    QCOMPARE(position(), 1.0);
}

void SimulatorTest::stopEndsTheBuffering()
{
    QSignalSpy buffering(renderer(), &KelvoRenderer::bufferingInfo);
    set("sim-buffering", 1000);
    QVERIFY(!start(QUrl("sim:x")));
    advance(300);
    renderer()->stop();
    advance(0);
    QCOMPARE(buffering.constLast().at(0).toFloat(), 1.0F);
    const qsizetype reports = buffering.size();
    advance(5000);
    QCOMPARE(buffering.size(), reports);
    QCOMPARE(heard().state(), Stopped);
}

void SimulatorTest::stallsAndGoesOn()
{
    QVERIFY(start(QUrl("sim:x?duration=10")));
    advance(2000);
    set("sim-stall", true);
    advance(60'000);
    QCOMPARE(heard().state(), Playing);
    QCOMPARE(position(), 2.0);
    set("sim-stall", false);
    advance(1000);
    QCOMPARE(position(), 3.0);
    advance(7000);
    QCOMPARE(heard().completed, 1);
}

void SimulatorTest::reportsAPolicyOverride()
{
    set("policy-override", true);
    advance(0);
    QCOMPARE(heard().property("policy-override"), QVariant(true));
    QCOMPARE(heard().property("policy-override").typeId(), int(QMetaType::Bool));
    set("policy-override", QStringLiteral("false"));
    advance(0);
    QCOMPARE(heard().property("policy-override"), QVariant(false));
    QCOMPARE(heard().property("policy-override").typeId(), int(QMetaType::Bool));
}

void SimulatorTest::reportsAColorKey()
{
    set("colorkey", 0x123456);
    advance(0);
    QCOMPARE(heard().property("colorkey"), QVariant(0x123456U));
    QCOMPARE(heard().property("colorkey").typeId(), int(QMetaType::UInt));
}

void SimulatorTest::vanishesAndComesBack()
{
    QSignalSpy added(m_registry.get(), &KelvoRegistry::rendererAdded);
    QSignalSpy removed(m_registry.get(), &KelvoRegistry::rendererRemoved);
    QVERIFY(start(QUrl("sim:x")));
    set("volume", 3);
    set("sim-name", QStringLiteral("Renamed"));
    const QPointer<KelvoRenderer> old(renderer());
    set("sim-vanish", 5000);
    QTRY_VERIFY(!old);
    QVERIFY(!renderer());
    QCOMPARE(removed.size(), 1);
    QCOMPARE(removed.constFirst(), (QVariantList{rendererA, QString("Renamed")}));
    QCOMPARE(m_registry->renderers().size(), 2);
    advance(4999);
    QVERIFY(!renderer());
    advance(1);
    QVERIFY(renderer());
    QCOMPARE(added.size(), 1);
    QCOMPARE(added.constFirst(), (QVariantList{rendererA, QString("Simulator A")}));
    const QStringList violations = heard().violations;
    watch();
    heard().violations = violations;
    QCOMPARE(ask("volume"), QVariant(70U));
    QVERIFY(start(QUrl("sim:x")));
}

void SimulatorTest::vanishesForGood()
{
    set("sim-vanish", -1);
    QTRY_VERIFY(!renderer());
    advance(10'000'000);
    QVERIFY(!renderer());
    QCOMPARE(m_registry->renderers().size(), 2);
    m_registry->unloadPlugin(plugin);
    QVERIFY(load());
    QVERIFY(renderer());
}

void SimulatorTest::unloadedWhileVanished()
{
    QSignalSpy added(m_registry.get(), &KelvoRegistry::rendererAdded);
    set("sim-vanish", 1000);
    QTRY_VERIFY(!renderer());
    m_registry->unloadPlugin(plugin);
    QCOMPARE(m_registry->renderers().size(), 0);
    QCOMPARE(added.size(), 0);
    QVERIFY(load());
    QCOMPARE(added.size(), 3);
}

void SimulatorTest::changesItsName()
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
    QCOMPARE(renderer()->uuid(), rendererA);
}

void SimulatorTest::itemsWithoutDurationNeverEnd()
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

void SimulatorTest::itemsThatCannotSeek()
{
    set("sim-seekable", false);
    QVERIFY(start(QUrl("sim:x")));
    renderer()->setPosition(5, KelvoRenderer::SeekRelative);
    advance(0);
    QCOMPARE(heard().errorsOf(KelvoError::NotSeekable), 1);
    QCOMPARE(position(), 0.0);
}

void SimulatorTest::inventsMetadata()
{
    set("sim-metadata", QStringLiteral("genre=Noise=loud"));
    advance(0);
    QCOMPARE(heard().metadata("genre"), QVariant("Noise=loud"));
    set("sim-metadata", QVariantMap{{"bitrate", 128000}, {"performers", QVariantList{"One", "Two"}}});
    advance(0);
    QCOMPARE(heard().metadata("bitrate"), QVariant(128000));
    QCOMPARE(heard().metadata("performers"), QVariant("One"));
}

void SimulatorTest::manualClockStandsStill()
{
    QVERIFY(start(QUrl("sim:x")));
    const qsizetype events = heard().events.size();
    for (int i = 0; i < 1000; ++i)
        QCoreApplication::processEvents();
    QCOMPARE(position(), 0.0);
    QCOMPARE(heard().events.size(), events);
}

void SimulatorTest::realClockMoves()
{
    set("sim-clock", QStringLiteral("real"));
    renderer()->playUri(QUrl("sim:x?duration=1"));
    QTRY_VERIFY(position() > 0.1);
    QCOMPARE(heard().state(), Playing);
    QTRY_COMPARE(heard().completed, 1);
}

void SimulatorTest::clockGoesOnFromWhereItIs()
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

void SimulatorTest::clockIsSharedByAll()
{
    QVERIFY(start(QUrl("sim:x")));
    renderer(rendererB)->setKelvoProperty("sim-advance", 4000);
    QTRY_COMPARE(position(), 4.0);
}

void SimulatorTest::advancesStepByStep()
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

void SimulatorTest::rewindsToTheBeginning()
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

void SimulatorTest::refusesValues_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariant>("value");
    const QList<QPair<const char *, QVariant>> values{
        {"sim-latency", -1},
        {"sim-latency", "soon"},
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

void SimulatorTest::refusesValues()
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

void SimulatorTest::tellsWhatWasSet_data()
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
        {"sim-clock", "manual", "manual"},
        {"sim-advance", 5, 5},
    };
    for (const auto &[name, value, told] : values)
        QTest::newRow(name) << QString(name) << value << told;
}

void SimulatorTest::tellsWhatWasSet()
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

void SimulatorTest::urlTellsTheItem()
{
    QVERIFY(start(QUrl("sim:x?title=A%20song&artist=Somebody&album=Best%20of&duration=7")));
    QCOMPARE(heard().metadata("title"), QVariant("A song"));
    QCOMPARE(heard().metadata("artist"), QVariant("Somebody"));
    QCOMPARE(heard().metadata("album"), QVariant("Best of"));
    QCOMPARE(heard().metadata("duration"), QVariant(7));
    QVERIFY(start(QUrl("http://host.invalid/folder/song.mp3")));
    QCOMPARE(heard().metadata("title"), QVariant("song.mp3"));
    QCOMPARE(heard().metadata("duration"), QVariant(30));
    QVERIFY(!start(QUrl("sim:x?fail=204")));
    QCOMPARE(heard().errorsOf(KelvoError::DeviceGone), 1);
}

void SimulatorTest::urlOfAList()
{
    QSignalSpy scanning(renderer(), &KelvoRenderer::scanningInfo);
    QVERIFY(start(QUrl("sim:list?title=Song&entries=3&duration=5")));
    QCOMPARE(heard().metadata("title"), QVariant("Song 1"));
    QCOMPARE(scanning.size(), 2);
    advance(5020);
    QCOMPARE(heard().metadata("title"), QVariant("Song 2"));
    renderer()->next();
    advance(20);
    QCOMPARE(heard().metadata("title"), QVariant("Song 3"));
    renderer()->previous();
    advance(20);
    QCOMPARE(heard().metadata("title"), QVariant("Song 2"));
    QCOMPARE(heard().completed, 0);
    QCOMPARE(heard().playlists.size(), 4);
    renderer()->next();
    renderer()->next();
    advance(0);
    QCOMPARE(heard().state(), Stopped);
    QVERIFY(!start(QUrl("sim:list?entries=0")));
    QCOMPARE(heard().errorsOf(KelvoError::EmptyPlaylist), 1);
}

void SimulatorTest::listWithBadEntries()
{
    QSignalSpy scanning(renderer(), &KelvoRenderer::scanningInfo);
    set("sim-failure", QStringLiteral("106,2"));
    renderer()->playUri(QUrl("sim:list?entries=4&duration=5"));
    advance(100);
    QCOMPARE(heard().state(), Playing);
    // The search for the first one that plays is no failure.
    QCOMPARE(heard().errors.size(), 0);
    QCOMPARE(scanning.size(), 4);
    set("sim-failure", 106);
    advance(20'000);
    QCOMPARE(heard().errors.size(), 1);
    QCOMPARE(heard().completed, 1);
}

void SimulatorTest::listOfBadEntries()
{
    renderer()->playUri(QUrl("sim:list?entries=4&fail=106"));
    advance(1000);
    QCOMPARE(heard().errors.size(), 1);
    QCOMPARE(heard().errorsOf(KelvoError::NothingPlayable), 1);
    QCOMPARE(heard().state(), Stopped);
    QCOMPARE(heard().completed, 0);
}

void SimulatorTest::environmentSetsUp()
{
    m_registry->unloadPlugin(plugin);
    qputenv("KELVO_SIMULATOR", "sim-duration=4; volume = 12;sim-stall=true;");
    QVERIFY(load());
    watch();
    set("sim-clock", QStringLiteral("manual"));
    QVERIFY(start(QUrl("sim:x")));
    QCOMPARE(heard().metadata("duration"), QVariant(4));
    QCOMPARE(ask("volume"), QVariant(12U));
    QCOMPARE(ask("sim-stall"), QVariant(true));
}

void SimulatorTest::environmentWithMistakes()
{
    m_registry->unloadPlugin(plugin);
    qputenv("KELVO_SIMULATOR", "nonsense;;=5;sim-duration=4;no-such=1");
    LogRecorder log;
    QVERIFY(load());
    QCOMPARE(log.warnings().size(), 2 * 3); // for each renderer
    watch();
    QCOMPARE(ask("sim-duration"), QVariant(4));
}

void SimulatorTest::sourcesAnswerAndRefuse()
{
    const QStringList keys{"signIn", "signedIn", "deviceType", "manufacturer", "manufacturerURL",
        "modelDescription", "modelName", "modelNumber", "modelURL", "serialNumber", "presentationURL",
        "universalProductCode", "iconURL", "supportQuery"};
    for (const auto &[uuid, refused] : {std::pair(QString("KelvoSimulatorSourceA"), QStringList()),
             std::pair(
                 QString("KelvoSimulatorSourceB"), QStringList{"modelNumber", "serialNumber", "iconURL"})}) {
        SourceListener listener;
        QStringList expected;
        for (const QString &key : keys) {
            const bool accepted = m_registry->findSourceByUuid(uuid)->kelvoProperty(
                key, &listener, "sourcePropertyCallback(QString&,QVariant&)");
            QCOMPARE(accepted, !refused.contains(key));
            if (accepted)
                expected.append(key);
        }
        QCOMPARE(listener.keys, QStringList());
        QTRY_COMPARE(listener.keys, expected);
        for (const QVariant &value : std::as_const(listener.values))
            QVERIFY(!value.toString().isEmpty());
        QVERIFY(!m_registry->findSourceByUuid(uuid)->kelvoProperty(
            "no such key", &listener, "sourcePropertyCallback(QString&,QVariant&)"));
    }
}

void SimulatorTest::sourcesSignInAndOut()
{
    KelvoSource *source = m_registry->findSourceByUuid("KelvoSimulatorSourceA");
    KelvoSource *other = m_registry->findSourceByUuid("KelvoSimulatorSourceB");
    SourceListener listener;
    const auto ask = [&listener](KelvoSource *one) {
        one->kelvoProperty("signedIn", &listener, "sourcePropertyCallback(QString&,QVariant&)");
    };
    ask(source);
    source->setKelvoProperty("signIn", true);
    ask(source);
    ask(other);
    source->setKelvoProperty("signIn", false);
    ask(source);
    QTRY_COMPARE(listener.values, (QVariantList{false, true, false, false}));
}

void SimulatorTest::sourcesWarn()
{
    KelvoSource *source = m_registry->findSourceByUuid("KelvoSimulatorSourceA");
    LogRecorder log;
    source->setKelvoProperty("signOut", true);
    source->setKelvoProperty("signedIn", true);
    source->setKelvoProperty("signIn", "yes");
    QCOMPARE(log.warnings().size(), 3);
    SourceListener listener;
    source->kelvoProperty("signedIn", &listener, "sourcePropertyCallback(QString&,QVariant&)");
    QTRY_COMPARE(listener.values, QVariantList{false});
}
} // namespace

QTEST_GUILESS_MAIN(SimulatorTest)
#include "SimulatorTest.moc"
