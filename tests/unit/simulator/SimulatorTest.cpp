// SPDX-License-Identifier: MIT
// What the simulator brings, and how it is set up. That it is a renderer like any other is the contract's business.
#include "KelvoSource.h"
#include "NotingListener.h"
#include "SimulatorCase.h"
#include "TestGroup.h"

namespace {
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

class SimulatorTest : public SimulatorCase
{
    Q_OBJECT
private Q_SLOTS:
    void bringsRenderersAndSources();
    void doesNotStartByDefault();
    void isRefusedAsAWhole();
    void urlTellsTheItem();
    void urlOfAList();
    void listWithBadEntries();
    void listOfBadEntries();
    void environmentSetsUp();
    void environmentWithMistakes();
    void sourcesAnswerAndRefuse();
    void sourcesSignInAndOut();
    void sourcesNoteWhatTheyAreTold();
    void sourcesWarn();
};

void SimulatorTest::bringsRenderersAndSources()
{
    QStringList renderers;
    QStringList sources;
    for (const KelvoRenderer *one : m_registry->renderers())
        renderers.append(one->uuid() + '/' + one->name());
    for (const KelvoSource *one : m_registry->sources())
        sources.append(one->uuid() + '/' + one->name());
    QCOMPARE(renderers, (QStringList{RendererA + "/Simulator A", RendererB + "/Simulator B", Unnamed + '/'}));
    QCOMPARE(sources,
        (QStringList{
            "KelvoSimulatorSourceA/Simulated source A", "KelvoSimulatorSourceB/Simulated source B"}));
    QCOMPARE(m_registry->allPlaylists().size(), 0);
    m_registry->unloadPlugin(Plugin);
    QCOMPARE(m_registry->renderers().size(), 0);
    QCOMPARE(m_registry->sources().size(), 0);
}

void SimulatorTest::doesNotStartByDefault()
{
    const KelvoPluginStatus status = m_registry->pluginLoader()->status(Plugin);
    QCOMPARE(status.startsByDefault, false);
    QCOMPARE(status.name, QString("Simulator"));
    QCOMPARE(status.brings, (QStringList{"renderers", "sources"}));
}

void SimulatorTest::isRefusedAsAWhole()
{
    m_registry->unloadPlugin(Plugin);
    for (KelvoSource *source : {static_cast<KelvoSource *>(nullptr),
             static_cast<KelvoSource *>(new MinimalSource("KelvoSimulatorSourceB", "in the way"))}) {
        const std::unique_ptr<KelvoSource> owned(source);
        KelvoRegistry registry;
        MinimalRenderer inTheWay(Unnamed, "in the way");
        const bool accepted = source ? registry.addSource(source) : registry.addRenderer(&inTheWay);
        QVERIFY(accepted);
        QSignalSpy failed(registry.pluginLoader(), &KelvoPluginLoader::pluginFailed);
        registry.loadPlugin(Plugin);
        QVERIFY(failed.wait());
        QCOMPARE(registry.renderers().size(), source ? 0 : 1);
        QCOMPARE(registry.sources().size(), source ? 1 : 0);
        source ? registry.removeSource(source) : registry.removeRenderer(&inTheWay);
    }
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
    // What does not play of those searched is told in one piece.
    QCOMPARE(heard().errors.size(), 1);
    QCOMPARE(heard().errors.constFirst().code(), KelvoError::CorruptMedia);
    QVERIFY(heard().errors.constFirst().message().startsWith(QLatin1String("2 of 4 entries of sim:list?")));
    QCOMPARE(scanning.size(), 4);
    set("sim-failure", 106);
    advance(20'000);
    QCOMPARE(heard().errors.size(), 2);
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
    m_registry->unloadPlugin(Plugin);
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
    m_registry->unloadPlugin(Plugin);
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
        const QVariantList all{true, false, "urn:schemas-upnp-org:device:MediaServer:1", "Simulator",
            "http://manufacturer.invalid/", "A source without content",
            m_registry->findSourceByUuid(uuid)->name(), "1", "http://manufacturer.invalid/model", "0000001",
            "http://device.invalid/", "000000000000", "http://device.invalid/icon.png", false};
        QVariantList values;
        for (const QString &key : std::as_const(expected))
            values.append(all.at(keys.indexOf(key)));
        QCOMPARE(listener.values, values);
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

void SimulatorTest::sourcesNoteWhatTheyAreTold()
{
    NotingListener listener;
    KelvoCommandListener::install(&listener);
    KelvoSource *source = m_registry->findSourceByUuid(QStringLiteral("KelvoSimulatorSourceA"));
    source->setKelvoProperty(QStringLiteral("signIn"), true);
    source->kelvoProperty(QStringLiteral("modelNumber"), nullptr, nullptr);
    source->kelvoProperty(QStringLiteral("nothing"), nullptr, nullptr);
    const auto name = QStringLiteral("KelvoSimulatorSourceA");
    QCOMPARE(listener.takeHeard(),
        QStringList({name + " setKelvoProperty(signIn,true)", name + " kelvoProperty(modelNumber)",
            '=' + name + " kelvoProperty(modelNumber,1)", name + " kelvoProperty(nothing)"}));
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

KELVO_TEST(SimulatorTest)
#include "SimulatorTest.moc"
