// SPDX-License-Identifier: MIT
#include "DecoderRanks.h"
#include "GstHandles.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

/// Which decoder of MP3 is taken.
class GstDecoderRanksTest : public KelvoTestCase
{
    Q_OBJECT
    static GstHandles::PluginFeature find(const char *name)
    {
        return GstHandles::PluginFeature(
            gst_registry_find_feature(gst_registry_get(), name, GST_TYPE_ELEMENT_FACTORY));
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(gst_init_check(nullptr, nullptr, nullptr)); }
    void theSmallOneBreaksATie_data()
    {
        QTest::addColumn<uint>("small");
        QTest::addColumn<uint>("large");
        QTest::addColumn<uint>("then");
        QTest::newRow("a tie") << 64U << 64U << 65U;
        QTest::newRow("the small one is wanted") << 300U << 64U << 300U;
        QTest::newRow("the large one is wanted") << 64U << 256U << 64U;
        QTest::newRow("the small one is not wanted") << 0U << 64U << 0U;
    }
    void theSmallOneBreaksATie()
    {
        QFETCH(uint, small);
        QFETCH(uint, large);
        QFETCH(uint, then);
        const GstHandles::PluginFeature mpg123 = find("mpg123audiodec");
        const GstHandles::PluginFeature libav = find("avdec_mp3");
        QVERIFY(mpg123 && libav);
        gst_plugin_feature_set_rank(mpg123.get(), small);
        gst_plugin_feature_set_rank(libav.get(), large);
        DecoderRanks::preferSmallDecoders();
        DecoderRanks::preferSmallDecoders(); // by each that starts the engine
        QCOMPARE(gst_plugin_feature_get_rank(mpg123.get()), then);
        QCOMPARE(gst_plugin_feature_get_rank(libav.get()), large);
    }
};

KELVO_TEST(GstDecoderRanksTest)
#include "GstDecoderRanksTest.moc"
