// SPDX-License-Identifier: MIT
// What an idle output accepts is asked once.
#include "IdleCapsCache.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

class GstIdleCapsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { gst_init(nullptr, nullptr); }

    void init()
    {
        KelvoTestCase::init();
        m_cache = std::make_shared<IdleCapsCache>();
        m_output = GstHandles::adopt(
            gst_parse_bin_from_description("capsfilter name=filter ! fakesink", TRUE, nullptr));
        QVERIFY(m_output);
        m_pad.reset(gst_element_get_static_pad(m_output.get(), "sink"));
        IdleCapsCache::attach(m_cache, m_pad.get());
        accept("RGB");
    }

    void cleanup()
    {
        gst_element_set_state(m_output.get(), GST_STATE_NULL);
        m_pad.reset();
        m_output.reset();
    }

    void firstAnswerCounts()
    {
        gst_element_set_state(m_output.get(), GST_STATE_READY);
        QCOMPARE(accepted(), "RGB");
        accept("BGR");
        QCOMPARE(accepted(), "RGB");
        m_cache->clear();
        QCOMPARE(accepted(), "BGR");
    }

    void closedOutputAnswersItself()
    {
        QCOMPARE(accepted(), "RGB");
        accept("BGR");
        QCOMPARE(accepted(), "BGR");
    }

    void runningOutputAnswersItself()
    {
        gst_element_set_state(m_output.get(), GST_STATE_READY);
        QCOMPARE(accepted(), "RGB");
        // It waits for its first picture.
        QCOMPARE(gst_element_set_state(m_output.get(), GST_STATE_PAUSED), GST_STATE_CHANGE_ASYNC);
        accept("BGR");
        QCOMPARE(accepted(), "BGR");
        gst_element_set_state(m_output.get(), GST_STATE_READY);
        QCOMPARE(accepted(), "RGB");
    }

    void questionsWithFilterPass()
    {
        gst_element_set_state(m_output.get(), GST_STATE_READY);
        const GstHandles::Caps filter(gst_caps_from_string("video/x-raw, format=(string)RGB, width=100"));
        const GstHandles::Caps narrow(gst_pad_query_caps(m_pad.get(), filter.get()));
        QVERIFY(gst_caps_is_equal(narrow.get(), filter.get()));
        accept("BGR");
        QCOMPARE(accepted(), "BGR");
        const GstHandles::Caps nothing(gst_pad_query_caps(m_pad.get(), filter.get()));
        QVERIFY(gst_caps_is_empty(nothing.get()));
    }

    void answersWithoutItsOwner()
    {
        gst_element_set_state(m_output.get(), GST_STATE_READY);
        m_cache.reset();
        QCOMPARE(accepted(), "RGB");
    }

private:
    void accept(const char *format)
    {
        const GstHandles::Element filter(gst_bin_get_by_name(GST_BIN(m_output.get()), "filter"));
        const GstHandles::Caps caps(
            gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, format, nullptr));
        g_object_set(filter.get(), "caps", caps.get(), nullptr);
    }

    QByteArray accepted() const
    {
        const GstHandles::Caps caps(gst_pad_query_caps(m_pad.get(), nullptr));
        return gst_caps_get_size(caps.get()) > 0
            ? QByteArray(gst_structure_get_string(gst_caps_get_structure(caps.get(), 0), "format"))
            : QByteArray();
    }

    std::shared_ptr<IdleCapsCache> m_cache;
    GstHandles::Element m_output;
    GstHandles::Pad m_pad;
};

KELVO_TEST(GstIdleCapsTest)
#include "GstIdleCapsTest.moc"
