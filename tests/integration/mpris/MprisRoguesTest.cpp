// SPDX-License-Identifier: MIT
// Players that are wrong or gone.
#include "KelvoPlugin.h"
#include "LogRecorder.h"
#include "MprisCase.h"
#include "MprisSnapshot.h"
#include "TestGroup.h"

#include <QDir>
#include <QPluginLoader>

#include <cmath>

namespace {
int openFiles()
{
    return int(
        QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size());
}

constexpr const char *properties[] = {"PlaybackStatus", "Metadata", "Position", "Rate", "MinimumRate",
    "MaximumRate", "Volume", "CanSeek", "CanPause", "CanControl"};

QVariantList oddValues()
{
    const QVariantMap oddMetadata{{"mpris:trackid", 7}, {"xesam:url", 3.5}, {"mpris:length", "long"},
        {"xesam:title", QStringList{"", "x"}}, {"xesam:artist", "one"}};
    return {7, "text", true, false, QByteArray("bytes"), QStringList{"a", "b"}, QVariantMap{{"a", 1}},
        qQNaN(), qInf(), -1e300, QVariant::fromValue(QDBusObjectPath("/path")),
        std::numeric_limits<qlonglong>::min(), oddMetadata};
}

class MprisRoguesTest : public MprisCase
{
    Q_OBJECT
private Q_SLOTS:
    void readsPropertiesOfAnyKind();
    void takesPropertiesOfAnyKind_data();
    void takesPropertiesOfAnyKind();
    void playsAlthough_data();
    void playsAlthough();
    void refusesWhatIsNoPlayer();
    void staysRefusedWithoutMoreWords();
    void knowsANamelessOneByItsBusName();
    void refusedCommand();
    void refusedItem();
    void vanishesBeforeItAnswers();
    void vanishesInMidPlay();
    void vanishesAtOnce();
    void ignoresStrangersSignals();
    void survivesAFlood();
    void tellsThatThereIsNoBus();
    void loadsAndUnloadsAThousandTimes();
};

void MprisRoguesTest::readsPropertiesOfAnyKind()
{
    for (const char *name : properties) {
        for (const QVariant &value : oddValues()) {
            const MprisSnapshot now = MprisSnapshot::of({{name, value}});
            QVERIFY(now.volume.value_or(0) >= 0 && now.volume.value_or(0) <= 99);
            QVERIFY(now.position.value_or(0) >= 0 && std::isfinite(now.position.value_or(0)));
            QVERIFY(std::isfinite(now.rate.value_or(1)) && now.rate.value_or(1) != 0);
            QVERIFY(now.minimumRate <= 1 && now.maximumRate >= 1);
            QVERIFY(now.track.length == -1 || now.track.length > 0);
        }
    }
}

void MprisRoguesTest::takesPropertiesOfAnyKind_data()
{
    QTest::addColumn<QVariant>("value");
    for (const QVariant &value : oddValues())
        QTest::addRow("%s %s", value.typeName(), qPrintable(value.toString())) << value;
}

/// All of them at once.
void MprisRoguesTest::takesPropertiesOfAnyKind()
{
    QFETCH(QVariant, value);
    FakeMprisPlayer player;
    for (const char *name : properties)
        player.player[name] = value;
    player.appear();
    QVERIFY(listen());
    player.change();
    m_renderer->playUri(QUrl("http://media/song"));
    m_renderer->getPosition(m_heard.get(), "positionAnswer(uint)");
    m_renderer->kelvoProperty("volume", m_heard.get(), "propertyAnswer(QString,QVariant)");
    QTRY_COMPARE(m_heard->positionAnswers.size(), 1);
    QTRY_COMPARE(m_heard->propertyAnswers.size(), 1);
    QTRY_VERIFY(!player.calls.isEmpty());
}

void MprisRoguesTest::playsAlthough_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("no position") << "Position" << QVariant();
    QTest::newRow("position as text") << "Position" << QVariant("20000");
    QTest::newRow("position of another type") << "Position" << QVariant(20'000U);
    QTest::newRow("no rate") << "Rate" << QVariant();
    QTest::newRow("no volume") << "Volume" << QVariant();
    QTest::newRow("rates that contradict each other") << "MinimumRate" << QVariant(5.0);
}

void MprisRoguesTest::playsAlthough()
{
    QFETCH(QString, name);
    QFETCH(QVariant, value);
    FakeMprisPlayer player;
    player.onCall = [&](const QDBusMessage &) {
        if (value.isValid())
            player.player[name] = value;
        else
            player.player.remove(name);
        return false;
    };
    player.appear();
    QVERIFY(listen());
    QVERIFY(playing());
}

void MprisRoguesTest::refusesWhatIsNoPlayer()
{
    FakeMprisPlayer rogue;
    rogue.onCall = [&](const QDBusMessage &call) {
        rogue.refuse(call, "no such interface");
        return true;
    };
    LogRecorder log;
    rogue.appear();
    QTRY_COMPARE(log.warnings().size(), 1);
    QVERIFY(log.warnings().constFirst().contains("org.mpris.MediaPlayer2.fake is no player"));
    QVERIFY(log.warnings().constFirst().contains("no such interface"));
    QCOMPARE(names(), QStringList());
}

void MprisRoguesTest::staysRefusedWithoutMoreWords()
{
    FakeMprisPlayer rogue;
    int asked = 0;
    rogue.onCall = [&](const QDBusMessage &call) {
        ++asked;
        rogue.refuse(call, "no such interface");
        return true;
    };
    LogRecorder log;
    QElapsedTimer timer;
    timer.start();
    rogue.appear();
    QTRY_COMPARE(log.warnings().size(), 1);
    const int before = asked;
    QTRY_VERIFY_WITH_TIMEOUT(asked >= before + 4, 10'000);
    QCOMPARE(log.warnings().size(), 1);
    // Ever more seldom.
    QVERIFY2(timer.elapsed() > 2000, qPrintable(QString::number(timer.elapsed())));
}

void MprisRoguesTest::knowsANamelessOneByItsBusName()
{
    FakeMprisPlayer player("nameless.instance3");
    player.root["Identity"] = 7;
    player.appear();
    QTRY_COMPARE(names(), QStringList{"nameless.instance3"});
}

void MprisRoguesTest::refusedCommand()
{
    FakeMprisPlayer player;
    player.onCall = [&](const QDBusMessage &call) {
        if (call.member() == u"SetPosition")
            player.refuse(call, "not today");
        return call.member() == u"SetPosition";
    };
    player.appear();
    QVERIFY(listen());
    QVERIFY(playing());
    m_renderer->setPosition(5, KelvoRenderer::SeekAbsolute);
    QTRY_COMPARE(m_heard->errorsOf(KelvoError::CommandRefused), 1);
    QCOMPARE(m_heard->errors.constFirst().message(), QStringLiteral("SetPosition of Fake: not today"));
}

void MprisRoguesTest::refusedItem()
{
    FakeMprisPlayer player;
    player.onCall = [&](const QDBusMessage &call) {
        if (call.member() == u"OpenUri")
            player.refuse(call, "what is this");
        return call.member() == u"OpenUri";
    };
    player.appear();
    QVERIFY(listen());
    m_renderer->playUri(QUrl("strange:thing"));
    QTRY_COMPARE(m_heard->errorsOf(KelvoError::CommandRefused), 1);
    QTRY_COMPARE(m_heard->state(), Stopped);
}

void MprisRoguesTest::vanishesBeforeItAnswers()
{
    FakeMprisPlayer player;
    bool asked = false;
    player.onCall = [&asked](const QDBusMessage &call) {
        asked = asked || call.member() == u"OpenUri";
        return call.member() == u"OpenUri";
    };
    player.appear();
    QVERIFY(listen());
    m_renderer->playUri(QUrl("http://media/song"));
    QTRY_VERIFY(asked);
    player.vanish();
    QTRY_VERIFY(!m_renderer);
    QCOMPARE(names(), QStringList());
}

void MprisRoguesTest::vanishesInMidPlay()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playing());
    m_renderer->getPosition(m_heard.get(), "positionAnswer(uint)");
    player.vanish();
    QTRY_VERIFY(!m_renderer);
}

void MprisRoguesTest::vanishesAtOnce()
{
    for (int i = 0; i < 20; ++i) {
        FakeMprisPlayer player(QStringLiteral("short%1").arg(i));
        player.appear();
    }
    FakeMprisPlayer last("last");
    last.root["Identity"] = "Last";
    last.appear();
    QTRY_COMPARE(names(), QStringList{"Last"});
}

void MprisRoguesTest::ignoresStrangersSignals()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playing());
    FakeMprisPlayer stranger("stranger"); // without a name on the bus
    stranger.seekTo(50'000'000);
    stranger.change();
    player.seekTo(10'000'000);
    QTRY_VERIFY([this] {
        m_renderer->getPosition(m_heard.get(), "positionAnswer(uint)");
        return !m_heard->positionAnswers.isEmpty() && m_heard->positionAnswers.constLast() >= 10;
    }());
    QVERIFY(m_heard->positionAnswers.constLast() < 20);
}

void MprisRoguesTest::survivesAFlood()
{
    FakeMprisPlayer player;
    int questions = 0;
    player.onCall = [&questions](const QDBusMessage &call) {
        questions += call.member() == u"GetAll";
        return false;
    };
    player.appear();
    QVERIFY(listen());
    questions = 0;
    for (int i = 0; i < 5000; ++i)
        player.change();
    player.player["Volume"] = 0.0;
    player.change();
    QTRY_COMPARE(m_heard->property("volume"), QVariant(0U));
    QVERIFY2(questions < 1000, qPrintable(QString::number(questions)));
}

void MprisRoguesTest::tellsThatThereIsNoBus()
{
    m_registry->unloadPlugin("mpris.so");
    const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    m_registry->loadPlugin("mpris.so");
    const auto reason = [this] {
        return m_registry->pluginLoader()->status("mpris.so").error;
    };
    QTRY_VERIFY(reason().contains("there is no session bus"));
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);
    QCOMPARE(m_registry->loadedPlugins(), QStringList());
}

void MprisRoguesTest::loadsAndUnloadsAThousandTimes()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    m_registry->unloadPlugin("mpris.so");
    // Without the loader, which looks into the file each time.
    QPluginLoader loader(qEnvironmentVariable("KELVO_PLUGIN_PATH") + QStringLiteral("/mpris.so"));
    auto *plugin = qobject_cast<KelvoPlugin *>(loader.instance());
    QVERIFY2(plugin, qPrintable(loader.errorString()));
    const int files = openFiles();
    QString error;
    for (int i = 0; i < 1000; ++i) {
        QVERIFY2(plugin->start(m_registry.get(), &error), qPrintable(error));
        // Now and then as far as a renderer, mostly in the middle of it.
        if (i % 100 == 0)
            QTRY_VERIFY(find("fake"));
        else if (i % 3 == 0)
            QCoreApplication::processEvents();
        plugin->stop();
        QCOMPARE(names(), QStringList());
    }
    delete loader.instance();
    QTRY_VERIFY2(
        openFiles() <= files + 2, qPrintable(QStringLiteral("%1, then %2").arg(files).arg(openFiles())));
}
} // namespace

KELVO_TEST(MprisRoguesTest)
#include "MprisRoguesTest.moc"
