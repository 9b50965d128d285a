// SPDX-License-Identifier: MIT
#include "GstHandles.h"
#include "KelvoTestCase.h"
#include "TagCollector.h"
#include "TestGroup.h"

#include <QTest>

#include <gst/gst.h>

namespace {
using Tags = GstHandles::TagList;

Tags tags(GstTagScope scope, const char *tag, const char *text)
{
    Tags list(gst_tag_list_new(tag, text, nullptr));
    gst_tag_list_set_scope(list.get(), scope);
    return list;
}

Tags bitRate(const char *tag, guint bits)
{
    Tags list(gst_tag_list_new(tag, bits, nullptr));
    gst_tag_list_add(list.get(), GST_TAG_MERGE_APPEND, GST_TAG_AUDIO_CODEC, "Codec", nullptr);
    return list;
}

QStringList news(TagCollector &collector)
{
    QStringList lines;
    for (const TagCollector::Fact &fact : collector.takeNews())
        lines.append(fact.key + QLatin1Char('=') + fact.values.constFirst().toString());
    return lines;
}
} // namespace

/// What comes out of the tags that streams repeat, complete and contradict.
class GstTagsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { gst_init(nullptr, nullptr); }

    void whatPeopleKnowItByComesFirst()
    {
        TagCollector collector;
        collector.merge(tags(GST_TAG_SCOPE_STREAM, GST_TAG_AUDIO_CODEC, "Codec").get());
        collector.set(QStringLiteral("duration"), {3});
        collector.merge(tags(GST_TAG_SCOPE_GLOBAL, GST_TAG_ALBUM, "Album").get());
        collector.merge(tags(GST_TAG_SCOPE_GLOBAL, GST_TAG_ARTIST, "Artist").get());
        collector.merge(tags(GST_TAG_SCOPE_GLOBAL, GST_TAG_TITLE, "Title").get());
        QCOMPARE(news(collector),
            QStringList({"title=Title", "artist=Artist", "album=Album", "duration=3", "audio-codec=Codec",
                "codec=Codec"}));
        QCOMPARE(news(collector), QStringList());
    }

    void onlyTheLastTextBeforeItIsTakenCounts()
    {
        TagCollector collector;
        for (const char *text : {"MPEG audio", "MPEG-4 AAC"})
            collector.merge(tags(GST_TAG_SCOPE_STREAM, GST_TAG_AUDIO_CODEC, text).get());
        QCOMPARE(news(collector), QStringList({"audio-codec=MPEG-4 AAC", "codec=MPEG-4 AAC"}));
    }

    void anotherTitleOfAStreamIsNews()
    {
        TagCollector collector;
        for (const char *text : {"First", "Second", "First"}) {
            for (int repeated = 0; repeated < 3; ++repeated)
                collector.merge(tags(GST_TAG_SCOPE_STREAM, GST_TAG_TITLE, text).get());
            QCOMPARE(news(collector), QStringList(QStringLiteral("title=") + QLatin1String(text)));
        }
    }

    void titleOfTheWholeIsNotThatOfAStream()
    {
        TagCollector collector;
        for (int repeated = 0; repeated < 3; ++repeated) {
            collector.merge(tags(GST_TAG_SCOPE_STREAM, GST_TAG_TITLE, "Commentary").get());
            collector.merge(tags(GST_TAG_SCOPE_GLOBAL, GST_TAG_TITLE, "The film").get());
        }
        QCOMPARE(news(collector), QStringList("title=The film"));
        collector.merge(tags(GST_TAG_SCOPE_STREAM, GST_TAG_TITLE, "Commentary").get());
        QCOMPARE(news(collector), QStringList());
    }

    void momentaryBitRateIsToldOnce()
    {
        TagCollector collector;
        collector.merge(bitRate(GST_TAG_BITRATE, 97'004).get());
        QVERIFY(news(collector).contains(QLatin1String("bitrate=97004")));
        collector.merge(bitRate(GST_TAG_BITRATE, 96'950).get());
        QCOMPARE(news(collector), QStringList());
        collector.merge(bitRate(GST_TAG_NOMINAL_BITRATE, 96'000).get()); // somebody knows after all
        QCOMPARE(news(collector), QStringList("bitrate=96000"));
        collector = {}; // another item
        collector.merge(bitRate(GST_TAG_BITRATE, 96'950).get());
        QVERIFY(news(collector).contains(QLatin1String("bitrate=96950")));
    }
};

KELVO_TEST(GstTagsTest)
#include "GstTagsTest.moc"
