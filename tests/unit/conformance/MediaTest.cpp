// SPDX-License-Identifier: MIT
#include "Media.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

class MediaTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void writesSoundOfTheLengthsThatAreTold();
    void saysWhatCannotBeWritten();
    void addressesAreThoseOfTheFolder();
};

void MediaTest::writesSoundOfTheLengthsThatAreTold()
{
    const QTemporaryDir folder;
    QString error;
    QVERIFY2(Media::writeTo(folder.path(), &error), qPrintable(error));
    const Media media = Media::inFolder(QUrl::fromLocalFile(folder.path()), QStringLiteral("files"));
    QFile file(media.longItem.toLocalFile());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray wave = file.readAll();
    QCOMPARE(wave.left(4), QByteArray("RIFF"));
    QCOMPARE(wave.mid(8, 4), QByteArray("WAVE"));
    QCOMPARE(qFromLittleEndian<quint32>(wave.constData() + 4), quint32(wave.size() - 8));
    QVERIFY(wave.contains(QByteArray("INAM\x05\0\0\0Long", 12)));
    const qsizetype data = wave.indexOf("data");
    const quint32 bytesPerSecond = qFromLittleEndian<quint32>(wave.constData() + wave.indexOf("fmt ") + 16);
    QCOMPARE(
        qFromLittleEndian<quint32>(wave.constData() + data + 4), bytesPerSecond * quint32(media.longSeconds));
    QCOMPARE(media.shortItems.size(), 3);
    for (const QUrl &item : media.shortItems)
        QVERIFY(QFile::exists(item.toLocalFile()));
    QVERIFY(!QFile::exists(media.failingItem.toLocalFile()));
}

void MediaTest::saysWhatCannotBeWritten()
{
    QString error;
    QVERIFY(!Media::writeTo(QStringLiteral("/nowhere/at all"), &error));
    QVERIFY2(error.contains(QLatin1String("/nowhere/at all/first.wav")), qPrintable(error));
}

void MediaTest::addressesAreThoseOfTheFolder()
{
    for (const char *base : {"http://127.0.0.1:8080/media", "http://127.0.0.1:8080/media/"}) {
        const Media media = Media::inFolder(QUrl(base), QStringLiteral("HTTP"));
        QCOMPARE(media.longItem, QUrl("http://127.0.0.1:8080/media/long.wav"));
        QCOMPARE(media.kind, QStringLiteral("HTTP"));
    }
}

KELVO_TEST(MediaTest)
#include "MediaTest.moc"
