// SPDX-License-Identifier: MIT
#include "platform/DesktopEntry.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

class DesktopEntryTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void windowsAreKnownByTheDesktopFile()
    {
        DesktopEntry::apply();
        QCOMPARE(QGuiApplication::desktopFileName(), QStringLiteral("org.kelvo.TestGui"));
        const QWidget window;
        QTRY_VERIFY(!window.windowIcon().isNull());
    }

    void theIconComesWithTheProgram()
    {
        QIcon::setThemeName(QStringLiteral("nowhere"));
        const QIcon icon = DesktopEntry::icon();
        for (const int size : {16, 24, 32, 48, 64, 128}) {
            const QPixmap pixmap = icon.pixmap(size);
            QCOMPARE(pixmap.size(), QSize(size, size));
            QVERIFY(pixmap.toImage().pixelColor(size / 2, size / 2).alpha() > 200);
        }
    }

    void anIconOfTheThemeIsPreferred()
    {
        const QTemporaryDir themes;
        const QDir theme(themes.filePath(QStringLiteral("own")));
        QVERIFY(theme.mkpath(QStringLiteral("32x32/apps")));
        QFile index(theme.filePath(QStringLiteral("index.theme")));
        QVERIFY(index.open(QIODevice::WriteOnly));
        index.write("[Icon Theme]\nName=own\nDirectories=32x32/apps\n[32x32/apps]\nSize=32\n");
        index.close();
        QImage red(32, 32, QImage::Format_RGB32);
        red.fill(Qt::red);
        QVERIFY(red.save(theme.filePath(QStringLiteral("32x32/apps/org.kelvo.TestGui.png"))));
        QIcon::setThemeSearchPaths({themes.path()});
        QIcon::setThemeName(QStringLiteral("own"));
        QCOMPARE(DesktopEntry::icon().pixmap(32).toImage().pixelColor(16, 16), QColor(Qt::red));
    }
};

KELVO_WIDGET_TEST(DesktopEntryTest)
#include "DesktopEntryTest.moc"
