// SPDX-License-Identifier: MIT
#include "ErrorMapping.h"
#include "KelvoTestCase.h"
#include "RendererValues.h"
#include "StallWatch.h"
#include "TestGroup.h"

#include <QTest>

/// The parts of the GStreamer renderer that need no pipeline.
class GstRendererPartsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void volumeScaleIsCubic()
    {
        QCOMPARE(RendererValues::linearVolume(0), 0.0);
        QCOMPARE(RendererValues::linearVolume(99), 1.0);
        QVERIFY(RendererValues::linearVolume(50) < 0.15);
        for (int volume = 0; volume <= 99; ++volume)
            QCOMPARE(RendererValues::cubicVolume(RendererValues::linearVolume(volume)), volume);
        QCOMPARE(RendererValues::cubicVolume(4.0), 99); // some mixers go beyond full
    }

    void mapsFailures_data()
    {
        QTest::addColumn<QString>("domain");
        QTest::addColumn<int>("number");
        QTest::addColumn<bool>("fromSource");
        QTest::addColumn<int>("status");
        QTest::addColumn<QUrl>("uri");
        QTest::addColumn<int>("code");
        const QUrl remote("http://host/a.mp3");
        const QUrl local("file:///no/such/a.mp3");
        const auto row = [](const char *name, const char *domain, int number, bool fromSource, int status,
                             const QUrl &uri, KelvoError::Code code) {
            QTest::newRow(name) << QStringLiteral("gst-%1-error-quark").arg(QLatin1String(domain)) << number
                                << fromSource << status << uri << int(code);
        };
        row("not found", "resource", 3, true, 0, local, KelvoError::NotFound);
        row("folder", "resource", 5, true, 0, QUrl("file:///"), KelvoError::IsFolder);
        row("unreadable file", "resource", 5, true, 0, local, KelvoError::ReadFailed);
        row("unreadable stream", "resource", 9, true, 0, remote, KelvoError::NetworkFailed);
        row("not authorised", "resource", 15, true, 0, remote, KelvoError::AccessDenied);
        row("404", "resource", 3, true, 404, remote, KelvoError::NotFound);
        row("418", "resource", 5, true, 418, remote, KelvoError::ReadFailed);
        row("500", "resource", 5, true, 500, remote, KelvoError::ServerError);
        row("source without a cause", "stream", 1, true, 0, remote, KelvoError::NetworkFailed);
        row("file source without a cause", "stream", 1, true, 0, local, KelvoError::ReadFailed);
        row("inner failure", "stream", 1, false, 0, remote, KelvoError::CorruptMedia);
        row("wrong type", "stream", 5, false, 0, local, KelvoError::UnsupportedType);
        row("codec", "stream", 6, false, 0, local, KelvoError::CodecMissing);
        row("decoder", "stream", 7, false, 0, local, KelvoError::CorruptMedia);
        row("demuxer", "stream", 9, false, 0, local, KelvoError::CorruptMedia);
        row("encrypted", "stream", 12, false, 0, local, KelvoError::AccessDenied);
        row("missing plug-in", "core", 12, false, 0, local, KelvoError::CodecMissing);
        row("other core error", "core", 4, false, 0, local, KelvoError::EngineFailed);
        row("library", "library", 3, false, 0, local, KelvoError::EngineFailed);
    }

    void mapsFailures()
    {
        QFETCH(QString, domain);
        QFETCH(int, number);
        QFETCH(bool, fromSource);
        QFETCH(int, status);
        QFETCH(QUrl, uri);
        QFETCH(int, code);
        PipelineFailure failure;
        failure.domain = domain;
        failure.code = number;
        failure.uri = uri;
        failure.fromSource = fromSource;
        failure.httpStatus = status;
        QCOMPARE(int(ErrorMapping::codeOf(failure)), code);
    }

    void noticesStalls()
    {
        StallWatch watch;
        watch.restart(1000);
        QVERIFY(!watch.isStalled(1500, 5, 100, 2000));
        QVERIFY(!watch.isStalled(3000, 5, 100, 2000));
        QVERIFY(!watch.isStalled(3400, 6, 100, 2000)); // moved
        QVERIFY(!watch.isStalled(5000, 6, 99, 2000)); // the buffer did
        QVERIFY(!watch.isStalled(6999, 6, 99, 2000));
        QVERIFY(watch.isStalled(7000, 6, 99, 2000));
        watch.restart(7000);
        QVERIFY(!watch.isStalled(8000, 6, 99, 2000));
    }
};

KELVO_TEST(GstRendererPartsTest)
#include "GstRendererPartsTest.moc"
