// SPDX-License-Identifier: MIT
// What a renderer of the network tells of what its device says.
#include "FakeRendererLink.h"
#include "ItemRenderer.h"
#include "KelvoTestCase.h"
#include "RemotePlayer.h"
#include "RendererProbe.h"
#include "TestGroup.h"
#include "UpnpTransport.h"

#include <QElapsedTimer>
#include <QTest>

#include <algorithm>

namespace {
using States = QList<KelvoRenderer::State>;
using enum KelvoRenderer::State;

class UpnpRendererTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void whatADeviceSaysAgainIsToldOnce();
    void seekThatIsLostAtTheBeginningIsSentAgain();
    void pausesWhereTheDeviceIs();

private:
    bool playing();
    /// Until the device was asked that so often.
    bool asked(const QByteArray &action, int times)
    {
        return QTest::qWaitFor(
            [this, action, times] { return m_link->count(action) >= times && m_link->underWay == 0; });
    }

    FakeRendererLink *m_link = nullptr;
    std::unique_ptr<ItemRenderer> m_renderer;
    std::unique_ptr<RendererProbe> m_heard;
};

void UpnpRendererTest::init()
{
    KelvoTestCase::init();
    auto link = std::make_unique<FakeRendererLink>();
    m_link = link.get();
    auto transport = std::make_unique<UpnpTransport>(std::move(link), UpnpTransport::Patience());
    m_renderer = std::make_unique<ItemRenderer>(
        std::make_unique<RemotePlayer>(std::move(transport), QStringLiteral("Fake")), QStringLiteral("fake"));
    m_heard = std::make_unique<RendererProbe>(*m_renderer);
}

void UpnpRendererTest::cleanup()
{
    m_renderer.reset();
    const QStringList violations = m_heard->violations;
    m_heard.reset();
    QCOMPARE(violations, QStringList());
}

bool UpnpRendererTest::playing()
{
    m_renderer->playUri(QUrl("http://h/item.mp3"));
    return QTest::qWaitFor([this] { return m_heard->state() == Playing; });
}

void UpnpRendererTest::whatADeviceSaysAgainIsToldOnce()
{
    QVERIFY(playing());
    QTRY_COMPARE(m_heard->metadataCount("duration"), 1);
    QTRY_VERIFY(m_heard->property("volume").isValid());
    m_renderer->setKelvoProperty("playback-speed", 1.0);
    for (int i = 0; i < 3; ++i) {
        Upnp::Track track;
        track.title = QStringLiteral("Song");
        const int before = m_link->count("GetVolume");
        Q_EMIT m_link->reported(
            {.values = {{"TransportState", "PLAYING"}, {"CurrentTrackDuration", "0:00:10"}, {"Volume", "50"},
                 {"CurrentTrackURI", m_link->uri}},
                .track = track});
        m_renderer->getPosition(m_heard.get(), "positionAnswer(uint)");
        QVERIFY(asked("GetVolume", before + 1));
    }
    QTRY_COMPARE(m_heard->positionAnswers.size(), 3);
    QCOMPARE(m_heard->states, (States{Transitioning, Playing}));
    QCOMPARE(m_heard->metadataCount("duration"), 1);
    QCOMPARE(m_heard->metadataCount("title"), 1);
    int volumes = 0;
    for (const auto &[name, value] : std::as_const(m_heard->properties))
        volumes += name == KelvoRenderer::PropertyVolume ? 1 : 0;
    QCOMPARE(volumes, 1);
    QCOMPARE(m_heard->errors.size(), 0);
}
// It accepts what comes right after it has begun, and forgets it.
void UpnpRendererTest::seekThatIsLostAtTheBeginningIsSentAgain()
{
    m_link->asked = [this](const QByteArray &action) {
        if (action == "Seek" && m_link->count("Seek") == 2)
            m_link->position = QStringLiteral("0:00:08");
    };
    QVERIFY(playing());
    m_renderer->setPosition(8, KelvoRenderer::SeekAbsolute);
    QTRY_COMPARE(m_link->count("Seek"), 2);
    QCOMPARE(m_link->calls.constLast().in.constLast().second, QStringLiteral("0:00:08"));
    m_renderer->getPosition(m_heard.get(), "positionAnswer(uint)");
    QTRY_COMPARE(m_heard->positionAnswers, QList<uint>{8});
    QCOMPARE(m_heard->errors.size(), 0);
}

// It tells that in whole seconds, and plays a little later than it says.
void UpnpRendererTest::pausesWhereTheDeviceIs()
{
    QElapsedTimer sincePlay;
    qint64 heard = 0; // milliseconds
    m_link->asked = [&](const QByteArray &action) {
        if (action == "Play")
            sincePlay.start();
        if (sincePlay.isValid() && m_link->state == QLatin1String("PLAYING"))
            heard = std::max<qint64>(0, sincePlay.elapsed() - 400);
        m_link->position = QStringLiteral("0:00:0%1").arg(heard / 1000);
    };
    m_renderer->pauseAt(1);
    m_renderer->playUri(QUrl("http://h/item.mp3"));
    QTRY_COMPARE(m_heard->state(), Paused);
    QVERIFY2(heard >= 1000 && heard < 2000, qPrintable(QString::number(heard)));
    m_renderer->getPosition(m_heard.get(), "positionAnswer(uint)");
    QTRY_COMPARE(m_heard->positionAnswers, QList<uint>{1});
}
} // namespace

KELVO_TEST(UpnpRendererTest)
#include "UpnpRendererTest.moc"
