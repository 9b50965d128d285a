// SPDX-License-Identifier: MIT
#include "GstTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QScopeGuard>
#include <QTest>

#include <atomic>
#include <cmath>

#include <gst/gst.h>

using R = KelvoRenderer;

namespace {
std::atomic<GstElement *> output = nullptr; ///< the audio output that the renderer uses at the moment
int outputsMade = 0;
std::atomic<bool> isOutputBroken = false; ///< it does not open, and does not say why
std::atomic<bool> beginsLoud = false; ///< as streams do that a sound server was told nothing of

void moveVolume(double volume);

GstStateChangeReturn changeState(GstElement *element, GstStateChange change)
{
    if (isOutputBroken && change == GST_STATE_CHANGE_NULL_TO_READY)
        return GST_STATE_CHANGE_FAILURE;
    if (beginsLoud && change == GST_STATE_CHANGE_READY_TO_PAUSED)
        moveVolume(1);
    auto *model = static_cast<GstElementClass *>(g_type_class_peek_parent(GST_ELEMENT_GET_CLASS(element)));
    return model->change_state(element, change);
}

/// A silent clock like GStreamer's own, that the test can get hold of.
void registerSink()
{
    GstElement *model = gst_element_factory_make("fakesink", nullptr);
    gst_object_ref_sink(model);
    GTypeQuery query;
    g_type_query(G_OBJECT_TYPE(model), &query);
    const auto remember = [](GTypeInstance *instance, gpointer) {
        output = reinterpret_cast<GstElement *>(instance);
        ++outputsMade;
    };
    const auto adapt = [](gpointer sink, gpointer) {
        GST_ELEMENT_CLASS(sink)->change_state = changeState;
    };
    const GType type = g_type_register_static_simple(G_OBJECT_TYPE(model), "KelvoTestSink", query.class_size,
        adapt, query.instance_size, remember, GTypeFlags(0));
    gst_element_register(nullptr, "kelvotestsink", GST_RANK_NONE, type);
    gst_object_unref(model);
}

void requestState(GstState state)
{
    gst_element_post_message(output, gst_message_new_request_state(GST_OBJECT(output.load()), state));
}

void loseDevice()
{
    GST_ELEMENT_ERROR(output.load(), RESOURCE, WRITE, ("The device is gone."), (nullptr));
}

/// The whole that the output is part of; belongs to the caller.
GstObject *pipeline()
{
    GstObject *top = GST_OBJECT(gst_object_ref(output.load()));
    while (GstObject *parent = gst_object_get_parent(top)) {
        gst_object_unref(top);
        top = parent;
    }
    return top;
}

/// The desktop's mixer moves the volume of the pipeline as a whole.
void moveVolume(double volume)
{
    GstObject *top = pipeline();
    g_object_set(top, "volume", volume, nullptr);
    gst_object_unref(top);
}

/// 0..1, as the pipeline has it.
double volume()
{
    GstObject *top = pipeline();
    gdouble found = 0;
    g_object_get(top, "volume", &found, nullptr);
    gst_object_unref(top);
    return found;
}
} // namespace

/// The audio output: policies, volume from outside, loss of the device.
class GstOutputTest : public GstTestCase
{
    Q_OBJECT
private:
    /// What plays already, when something does, is not taken for it.
    void start()
    {
        const qsizetype before = heard().mediaIndexes().count();
        renderer()->playUri(media(QStringLiteral("long.mp3")));
        QTRY_VERIFY(heard().mediaIndexes().count() > before);
        // Is told once there are outputs.
        QTRY_VERIFY(heard().metadata(QStringLiteral("audio-output")).isValid());
        TRY_STATE(Playing);
    }
    QVariant policy() { return heard().property(R::KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE); }

private Q_SLOTS:
    void initTestCase()
    {
        gst_init(nullptr, nullptr);
        registerSink();
    }
    void init() { GstTestCase::init(); }

    void tellsTheOutput()
    {
        start();
        QCOMPARE(
            heard().metadata(QStringLiteral("audio-output")).toString(), QStringLiteral("kelvotestsink"));
    }

    void policyPausesAndGivesBack()
    {
        start();
        requestState(GST_STATE_PAUSED);
        TRY_STATE(Paused);
        QCOMPARE(policy(), QVariant(true));
        QCOMPARE(policy().typeId(), int(QMetaType::Bool));
        renderer()->resume(); // has to wait
        QCOMPARE(heard().askStatus().state, int(R::Paused));
        requestState(GST_STATE_PLAYING);
        TRY_STATE(Playing);
        QCOMPARE(policy(), QVariant(false));
        QCOMPARE(heard().propertyReports(R::KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE), 2);
    }

    void policyDoesNotOverrideTheUsersPause()
    {
        start();
        requestState(GST_STATE_PAUSED);
        TRY_STATE(Paused);
        renderer()->pause();
        requestState(GST_STATE_PLAYING);
        QTRY_COMPARE(policy(), QVariant(false));
        QCOMPARE(heard().askStatus().state, int(R::Paused));
        renderer()->resume();
        TRY_STATE(Playing);
    }

    void stopEndsThePolicy()
    {
        start();
        requestState(GST_STATE_PAUSED);
        TRY_STATE(Paused);
        renderer()->stop();
        QTRY_COMPARE(policy(), QVariant(false));
        start();
    }

    void reportsVolumeFromOutside()
    {
        start();
        moveVolume(0.128); // the cube of about a half
        QTRY_COMPARE(heard().property(R::PropertyVolume), QVariant(50U));
        QCOMPARE(heard().askProperty(R::PropertyVolume), QVariant(50U));
        renderer()->setKelvoProperty(R::PropertyVolume, 70);
        QTRY_COMPARE(heard().property(R::PropertyVolume), QVariant(70U));
        QCOMPARE(heard().propertyReports(R::PropertyVolume), 2);
    }

    void keepsTheVolumeForTheNextItem()
    {
        renderer()->setKelvoProperty(R::PropertyVolume, 30);
        start();
        renderer()->playUri(media(QStringLiteral("short.mp3")));
        QTRY_COMPARE(heard().completed(), 1);
        QCOMPARE(heard().property(R::PropertyVolume), QVariant(30U));
        QCOMPARE(heard().propertyReports(R::PropertyVolume), 1);
    }

    /// As a stream that was told nothing, or whose server lost it on the way.
    void loudStreamIsNobodysWish()
    {
        renderer()->setKelvoProperty(R::PropertyVolume, 30);
        QTRY_COMPARE(heard().property(R::PropertyVolume), QVariant(30U));
        beginsLoud = true;
        const auto quietAgain = qScopeGuard([] { beginsLoud = false; });
        for (int item = 0; item < 3; ++item) {
            heard().clear();
            start();
            QTRY_COMPARE(qRound(std::cbrt(volume()) * 99), 30);
            QCOMPARE(heard().askProperty(R::PropertyVolume), QVariant(30U));
        }
        QCOMPARE(heard().propertyReports(R::PropertyVolume), 0); // nor was it another on the way
        // Once it plays, others may move it.
        moveVolume(1);
        QTRY_COMPARE(heard().property(R::PropertyVolume), QVariant(99U));
    }

    void goesOnSilentlyWhenTheDeviceIsLost()
    {
        start();
        renderer()->setPosition(8, R::SeekAbsolute);
        QTRY_COMPARE(heard().askPosition(), 9);
        loseDevice();
        QTRY_COMPARE(heard().errors(), QList<int>{KelvoError::AudioOutputFailed});
        QTRY_COMPARE(heard().metadata(QStringLiteral("audio-output")).toString(),
            QStringLiteral("none (silent clock)"));
        TRY_STATE(Playing);
        QVERIFY(heard().askPosition() >= 9);
        QTRY_VERIFY(heard().askPosition() >= 10);
        QCOMPARE(heard().errors().count(), 1);
        QCOMPARE(heard().mediaIndexes().count(), 1);
    }

    void triesTheDeviceAgainAfterStop()
    {
        start();
        loseDevice();
        QTRY_COMPARE(heard().metadata(QStringLiteral("audio-output")).toString(),
            QStringLiteral("none (silent clock)"));
        renderer()->stop();
        TRY_STATE(Stopped);
        const int before = outputsMade;
        start();
        QCOMPARE(outputsMade, before + 1);
        QCOMPARE(
            heard().metadata(QStringLiteral("audio-output")).toString(), QStringLiteral("kelvotestsink"));
    }

    void triesTheDeviceAgainWithTheNextItem()
    {
        start();
        loseDevice();
        QTRY_COMPARE(heard().metadata(QStringLiteral("audio-output")).toString(),
            QStringLiteral("none (silent clock)"));
        const int before = outputsMade;
        renderer()->playUri(media(QStringLiteral("long.mp3")));
        QTRY_COMPARE(
            heard().metadata(QStringLiteral("audio-output")).toString(), QStringLiteral("kelvotestsink"));
        QCOMPARE(outputsMade, before + 1);
        // And stays with it.
        start();
        QCOMPARE(
            heard().metadata(QStringLiteral("audio-output")).toString(), QStringLiteral("kelvotestsink"));
        QCOMPARE(outputsMade, before + 1);
    }

    void outputThatDoesNotOpenIsOneError()
    {
        const auto repaired = qScopeGuard([] { isOutputBroken = false; });
        isOutputBroken = true;
        const int before = outputsMade;
        renderer()->playUri(media(QStringLiteral("long.mp3")));
        QTRY_COMPARE(heard().errors(), QList<int>{KelvoError::EngineFailed});
        TRY_STATE(Stopped);
        QCOMPARE(outputsMade, before + 1);
        isOutputBroken = false;
        heard().clear();
        start();
        QCOMPARE(heard().errors(), QList<int>());
    }

    void staysPausedWhenTheDeviceIsLost()
    {
        start();
        renderer()->setPosition(8, R::SeekAbsolute);
        renderer()->pause();
        TRY_STATE(Paused);
        loseDevice();
        QTRY_COMPARE(heard().errors(), QList<int>{KelvoError::AudioOutputFailed});
        QTRY_COMPARE(heard().metadata(QStringLiteral("audio-output")).toString(),
            QStringLiteral("none (silent clock)"));
        QCOMPARE(heard().askPosition(), 8);
        QCOMPARE(heard().state(), R::Paused);
    }
};

KELVO_TEST(GstOutputTest)
#include "GstOutputTest.moc"
