// SPDX-License-Identifier: MIT
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QTest>

/// A machine whose GStreamer has no plug-ins.
class GstUnavailableTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void saysWhatIsMissing()
    {
        const QString warning
            = QStringLiteral("The GStreamer renderer is not available: GStreamer has no element \"playbin\"");
        LogRecorder log;
        KelvoRegistry registry;
        registry.loadPlugin(QStringLiteral("gst-renderer.so"));
        QTRY_VERIFY_WITH_TIMEOUT(log.warnings().contains(warning), 20000);
        QCOMPARE(registry.renderers().count(), 0);
        registry.unloadPlugin(QStringLiteral("gst-renderer.so"));
        QCOMPARE(registry.loadedPlugins(), QStringList());
    }
};

KELVO_TEST(GstUnavailableTest)
#include "GstUnavailableTest.moc"
