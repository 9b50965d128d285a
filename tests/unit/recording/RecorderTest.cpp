// SPDX-License-Identifier: MIT
// What is recorded of the boundary, in which order.
#include "Recorder.h"
#include "FakePlaylist.h"
#include "KelvoCommandListener.h"
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "MinimalObjects.h"
#include "RecordedLines.h"
#include "TestGroup.h"

#include <QTest>

#include <algorithm>

namespace {
/// Has a signal of its own, which is none of the boundary.
class ChattyRenderer : public MinimalRenderer
{
    Q_OBJECT
public:
    using MinimalRenderer::MinimalRenderer;
    void play() override { KelvoCommandListener::noteCommand(*this, "play"); }
    void getPosition(QObject *, const char *) override
    {
        KelvoCommandListener::noteCommand(*this, "getPosition");
        KelvoCommandListener::noteAnswer(*this, "getPosition", 7U);
    }
Q_SIGNALS:
    void gossip();
};

class RecorderTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void header();
    void whatIsThereAppearsFirst();
    void comesAndGoes();
    void everyReport();
    void everySignalOfTheBoundary();
    void commandsAndAnswersAmongReports();
    void reportsOfWhatIsGoneAreNotHeard();
    void vanishesBeforeItIsTold();
    void objectThatIsDestroyed();
    void plugins();
    void timesGoForward();
    void memoryIsBounded();
    void nothingIsHeardAfterTheEnd();

private:
    QStringList events() const
    {
        QStringList lines = RecordedLines::of(QByteArray::fromStdString(m_recorder->recording())).mid(1);
        if (lines.takeLast() != QLatin1String(" note saved []"))
            lines.append(QStringLiteral("no note of when that was"));
        return lines;
    }
    void start() { m_recorder = Recorder::start(m_registry.get(), {"tester", "1.2.3", "abc1234"}); }

    std::unique_ptr<KelvoRegistry> m_registry;
    std::unique_ptr<Recorder> m_recorder;
};

void RecorderTest::init()
{
    KelvoTestCase::init();
    m_registry = std::make_unique<KelvoRegistry>();
}

void RecorderTest::cleanup()
{
    m_recorder.reset();
    m_registry.reset();
}

void RecorderTest::header()
{
    const QDateTime before = QDateTime::currentDateTimeUtc();
    start();
    const QByteArray recording = QByteArray::fromStdString(m_recorder->recording());
    const QJsonObject header = QJsonDocument::fromJson(recording.split('\n').first()).object();
    QCOMPARE(header.value("kelvo-recording").toInt(), 1);
    QCOMPARE(header.value("program").toString(), "tester");
    QCOMPARE(header.value("version").toString(), "1.2.3");
    QCOMPARE(header.value("revision").toString(), "abc1234");
    QCOMPARE(header.value("plug-ins").toArray(), QJsonArray());
    QCOMPARE(header.value("pid").toInteger(), QCoreApplication::applicationPid());
    const auto started = QDateTime::fromString(header.value("started").toString(), Qt::ISODateWithMs);
    QVERIFY(started >= before.addMSecs(-1) && started <= QDateTime::currentDateTimeUtc());
    QCOMPARE(events(), QStringList());
}

void RecorderTest::whatIsThereAppearsFirst()
{
    MinimalRenderer renderer("r", "Renderer");
    MinimalSource source("s", "Source");
    MinimalPlaylist playlist("p", "List");
    m_registry->addPlaylist(&playlist);
    m_registry->addRenderer(&renderer);
    m_registry->addSource(&source);
    start();
    Q_EMIT renderer.stateChanged(KelvoRenderer::Playing);
    QCOMPARE(events(),
        QStringList({R"(r appears renderer ["Renderer"])", R"(s appears source ["Source"])",
            R"(p appears playlist ["List"])", R"(r report stateChanged ["Playing"])"}));
}

void RecorderTest::comesAndGoes()
{
    start();
    MinimalRenderer renderer("r", "Renderer");
    MinimalSource source("s", "");
    MinimalPlaylist playlist("p", "List");
    m_registry->addRenderer(&renderer);
    m_registry->addSource(&source);
    m_registry->addPlaylist(&playlist);
    renderer.rename("Other");
    m_registry->removeRenderer(&renderer);
    m_registry->removeSource(&source);
    m_registry->removePlaylist(&playlist);
    m_registry->addRenderer(&renderer);
    Q_EMIT renderer.playbackCompleted();
    m_registry->removeRenderer(&renderer);
    QCOMPARE(events(),
        QStringList({R"(r appears renderer ["Renderer"])", R"(s appears source [""])",
            R"(p appears playlist ["List"])", R"(r vanishes renderer ["Other"])", R"(s vanishes source [""])",
            R"(p vanishes playlist ["List"])", R"(r appears renderer ["Other"])",
            R"(r report playbackCompleted [])", R"(r vanishes renderer ["Other"])"}));
}

void RecorderTest::everyReport()
{
    start();
    MinimalRenderer renderer("r", "");
    FakePlaylist playlist("p", "");
    m_registry->addRenderer(&renderer);
    m_registry->addPlaylist(&playlist);
    Q_EMIT renderer.nameChanged("Name");
    Q_EMIT renderer.stateChanged(KelvoRenderer::Transitioning);
    Q_EMIT renderer.playlistChanged(&playlist);
    Q_EMIT renderer.playlistChanged(nullptr);
    Q_EMIT renderer.mediaChanged(-1, {"item", QUrl("file:///a.ogg"), "audio/ogg"});
    Q_EMIT renderer.metadataChanged("title", {"one", 2, QVariant()});
    Q_EMIT renderer.kelvoPropertyChanged("volume", 40U);
    Q_EMIT renderer.bufferingInfo(0.4F);
    Q_EMIT renderer.scanningInfo(1);
    Q_EMIT renderer.error({KelvoError::NotFound, "nowhere"});
    Q_EMIT renderer.playbackCompleted();
    Q_EMIT playlist.contentsChanged(1, 2, 3);
    Q_EMIT playlist.repeatModeChanged(KelvoPlaylist::RepeatOne);
    QCOMPARE(events().mid(2),
        QStringList({R"(r report nameChanged ["Name"])", R"(r report stateChanged ["Transitioning"])",
            R"(r report playlistChanged ["p"])", R"(r report playlistChanged [null])",
            R"(r report mediaChanged [-1,{"mimeType":"audio/ogg","url":"file:///a.ogg","uuid":"item"}])",
            R"(r report metadataChanged ["title",["one",2,null]])",
            R"(r report kelvoPropertyChanged ["volume",40])", R"(r report bufferingInfo [0.4])",
            R"(r report scanningInfo [1])", R"(r report error [{"code":100,"message":"nowhere"}])",
            R"(r report playbackCompleted [])", R"(p report contentsChanged [1,2,3])",
            R"(p report repeatModeChanged [2])"}));
}

/// A signal that is added to the boundary must have been thought of: above.
void RecorderTest::everySignalOfTheBoundary()
{
    const auto signalsOf = [](const QMetaObject &scope) {
        int count = 0;
        for (int i = scope.methodOffset(); i < scope.methodCount(); ++i)
            count += scope.method(i).methodType() == QMetaMethod::Signal ? 1 : 0;
        return count;
    };
    QCOMPARE(signalsOf(KelvoRenderer::staticMetaObject), 10);
    QCOMPARE(signalsOf(KelvoPlaylist::staticMetaObject), 2);
    QCOMPARE(signalsOf(KelvoSource::staticMetaObject), 0);
}

void RecorderTest::commandsAndAnswersAmongReports()
{
    start();
    ChattyRenderer renderer("r", "");
    m_registry->addRenderer(&renderer);
    Q_EMIT renderer.stateChanged(KelvoRenderer::Stopped);
    renderer.play();
    Q_EMIT renderer.gossip();
    Q_EMIT renderer.stateChanged(KelvoRenderer::Transitioning);
    renderer.getPosition(nullptr, nullptr);
    QCOMPARE(events().mid(1),
        QStringList({R"(r report stateChanged ["Stopped"])", "r command play []",
            R"(r report stateChanged ["Transitioning"])", "r command getPosition []",
            "r answer getPosition [7]"}));
}

void RecorderTest::reportsOfWhatIsGoneAreNotHeard()
{
    start();
    MinimalRenderer renderer("r", "");
    m_registry->addRenderer(&renderer);
    // In the middle of a report, by somebody who hears of it later.
    connect(
        &renderer, &KelvoRenderer::playbackCompleted, this, [&] { m_registry->removeRenderer(&renderer); },
        Qt::SingleShotConnection);
    Q_EMIT renderer.playbackCompleted();
    Q_EMIT renderer.playbackCompleted();
    QCOMPARE(events().mid(1), QStringList({"r report playbackCompleted []", R"(r vanishes renderer [""])"}));
}

void RecorderTest::vanishesBeforeItIsTold()
{
    MinimalRenderer renderer("r", "");
    connect(m_registry.get(), &KelvoRegistry::rendererAdded, this,
        [&] { m_registry->removeRenderer(&renderer); });
    start();
    m_registry->addRenderer(&renderer);
    Q_EMIT renderer.playbackCompleted();
    QCOMPARE(events().filter("report"), QStringList());
}

void RecorderTest::objectThatIsDestroyed()
{
    start();
    auto renderer = std::make_unique<MinimalRenderer>("r", "Renderer");
    m_registry->addRenderer(renderer.get());
    renderer.reset();
    QCOMPARE(
        events(), QStringList({R"(r appears renderer ["Renderer"])", R"(r vanishes renderer ["Renderer"])"}));
}

void RecorderTest::plugins()
{
    start();
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("no-such-plugin"));
    m_registry->loadPlugin("no-such-plugin.so");
    QTRY_COMPARE(events().size(), 1);
    QVERIFY2(events().first().startsWith(R"( report pluginFailed ["no-such-plugin.so",)"),
        qPrintable(events().first()));
}

void RecorderTest::timesGoForward()
{
    start();
    MinimalRenderer renderer("r", "");
    m_registry->addRenderer(&renderer);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 100; ++i)
        Q_EMIT renderer.bufferingInfo(0.5F);
    QTest::qSleep(20);
    Q_EMIT renderer.bufferingInfo(1);
    const double elapsed = double(timer.nsecsElapsed()) / 1e9;
    QTest::qSleep(20);
    const auto times = RecordedLines::timesOf(QByteArray::fromStdString(m_recorder->recording()));
    QCOMPARE(times.size(), 103); // the last of when it was asked for
    QVERIFY(std::is_sorted(times.begin(), times.end()));
    QVERIFY(times.at(101) - times.at(100) >= 0.02);
    QVERIFY(times.at(101) - times.at(1) <= elapsed);
    QVERIFY(times.at(102) - times.at(101) >= 0.02);
}

void RecorderTest::memoryIsBounded()
{
    start();
    MinimalRenderer renderer("r", "");
    m_registry->addRenderer(&renderer);
    for (int i = 0; i < 25'000; ++i)
        Q_EMIT renderer.bufferingInfo(float(i));
    QStringList kept = events();
    QCOMPARE(kept.size(), 20'000);
    QCOMPARE(kept.first(), "r report bufferingInfo [5000]");
    QCOMPARE(kept.last(), "r report bufferingInfo [24999]");
    for (int i = 0; i < 5'000; ++i)
        Q_EMIT renderer.nameChanged(QString(5000, u'ä'));
    QVERIFY(m_recorder->recording().size() <= 8 * 1024 * 1024 + 1000);
    QVERIFY(m_recorder->recording().size() >= 8 * 1024 * 1024 - 10'000);
}

void RecorderTest::nothingIsHeardAfterTheEnd()
{
    start();
    ChattyRenderer renderer("r", "");
    m_registry->addRenderer(&renderer);
    m_recorder.reset();
    renderer.play();
    Q_EMIT renderer.playbackCompleted();
    m_registry->removeRenderer(&renderer);
    start();
    QCOMPARE(events(), QStringList());
}
} // namespace

KELVO_TEST(RecorderTest)
#include "RecorderTest.moc"
