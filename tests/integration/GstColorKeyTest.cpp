// SPDX-License-Identifier: MIT
#include "GstTestCase.h"
#include "TestGroup.h"

#include <QTest>

#include <atomic>

#include <gst/gst.h>

using R = KelvoRenderer;

namespace {
std::atomic<int> autopaint = -1; ///< what the output was last told

enum Property : guint { Autopaint = 1, Key };

void setProperty(GObject *, guint property, const GValue *value, GParamSpec *)
{
    if (property == Autopaint)
        autopaint = g_value_get_boolean(value);
}

void getProperty(GObject *, guint property, GValue *value, GParamSpec *)
{
    if (property == Autopaint)
        g_value_set_boolean(value, autopaint != 0);
    else
        g_value_set_int(value, 0x123456);
}

/// What outputs for overlay hardware have.
void addProperties(gpointer type, gpointer)
{
    GObjectClass *objects = G_OBJECT_CLASS(type);
    objects->set_property = setProperty;
    objects->get_property = getProperty;
    g_object_class_install_property(objects, Autopaint,
        g_param_spec_boolean("autopaint-colorkey", nullptr, nullptr, TRUE, G_PARAM_READWRITE));
    g_object_class_install_property(objects, Key,
        g_param_spec_int("colorkey", nullptr, nullptr, G_MININT, G_MAXINT, 0, G_PARAM_READABLE));
}

/// A silent clock like GStreamer's own, that claims to be overlay hardware.
void registerOverlay()
{
    GstElement *model = gst_element_factory_make("fakesink", nullptr);
    gst_object_ref_sink(model);
    GTypeQuery query;
    g_type_query(G_OBJECT_TYPE(model), &query);
    const GType type = g_type_register_static_simple(G_OBJECT_TYPE(model), "KelvoTestOverlay",
        query.class_size, addProperties, query.instance_size, nullptr, GTypeFlags(0));
    gst_element_register(nullptr, "kelvotestoverlay", GST_RANK_NONE, type);
    gst_object_unref(model);
}
} // namespace

/// A video output that shows its picture where the window has a certain colour.
class GstColorKeyTest : public GstTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        gst_init(nullptr, nullptr);
        registerOverlay();
    }
    void init()
    {
        autopaint = -1;
        GstTestCase::init();
    }

    void reportsTheKeyOfTheOutput()
    {
        QCOMPARE(heard().askProperty(R::PropertyColorKey), QVariant(0U));
        renderer()->playUri(media(QStringLiteral("red.mp4")));
        QTRY_COMPARE(heard().property(R::PropertyColorKey), QVariant(0x123456U));
        QCOMPARE(heard().property(R::PropertyColorKey).typeId(), int(QMetaType::UInt));
        QCOMPARE(heard().askProperty(R::PropertyColorKey), QVariant(0x123456U));
        renderer()->playUri(media(QStringLiteral("blue.mp4")));
        QTRY_COMPARE(heard().mediaIndexes().count(), 2);
        TRY_STATE(Playing);
        QCOMPARE(heard().propertyReports(R::PropertyColorKey), 1); // it has not changed
    }

    void soundNeedsNoKey()
    {
        renderer()->playUri(media(QStringLiteral("short.mp3")));
        QTRY_COMPARE(heard().completed(), 1);
        QCOMPARE(heard().propertyReports(R::PropertyColorKey), 0);
    }

    void keyCannotBeSet()
    {
        renderer()->setKelvoProperty(R::PropertyColorKey, 5U);
        QTRY_COMPARE(heard().errors(), QList<int>{KelvoError::NotSupported});
        QCOMPARE(heard().askProperty(R::PropertyColorKey), QVariant(0U));
    }

    void paintsTheKeyUnlessToldNotTo_data()
    {
        QTest::addColumn<QVariant>("told");
        QTest::addColumn<int>("expected");
        QTest::newRow("not told") << QVariant() << 1;
        QTest::newRow("told to") << QVariant(true) << 1;
        QTest::newRow("told not to") << QVariant(false) << 0;
    }
    void paintsTheKeyUnlessToldNotTo()
    {
        QFETCH(QVariant, told);
        QFETCH(int, expected);
        if (told.isValid())
            renderer()->setKelvoProperty(R::PropertyAutopaint, told);
        renderer()->playUri(media(QStringLiteral("red.mp4")));
        TRY_STATE(Playing);
        QCOMPARE(autopaint.load(), expected);
    }
};

KELVO_TEST(GstColorKeyTest)
#include "GstColorKeyTest.moc"
