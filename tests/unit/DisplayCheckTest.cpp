// SPDX-License-Identifier: MIT
#include "platform/DisplayCheck.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {
const QByteArrayList variables
    = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "QT_QPA_PLATFORM_PLUGIN_PATH", "XDG_SESSION_TYPE"};

/// What is said of a program started with these arguments; empty: it may go on.
QString problem(const QByteArrayList &arguments = {})
{
    QByteArrayList copies = QByteArrayList{"program"} + arguments;
    QList<char *> given;
    for (QByteArray &argument : copies)
        given.append(argument.data());
    return DisplayCheck::problem(int(given.size()), given.data());
}
} // namespace

/// Nowhere here does a display server answer.
class DisplayCheckTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        for (const QByteArray &name : variables) {
            m_before.insert(name, qgetenv(name));
            qunsetenv(name);
        }
        m_libraryPaths = QCoreApplication::libraryPaths();
        m_plugins = std::make_unique<QTemporaryDir>();
        QCoreApplication::setLibraryPaths({m_plugins->path()});
    }
    void cleanup()
    {
        QCoreApplication::setLibraryPaths(m_libraryPaths);
        for (const QByteArray &name : variables) {
            if (m_before.value(name).isEmpty())
                qunsetenv(name);
            else
                qputenv(name, m_before.value(name));
        }
    }

    void aMissingPluginIsNamedByItsPackage_data()
    {
        QTest::addColumn<QByteArray>("asked");
        QTest::addColumn<QByteArrayList>("arguments");
        QTest::newRow("by nobody") << QByteArray() << QByteArrayList();
        QTest::newRow("by the environment") << QByteArray("wayland") << QByteArrayList();
        QTest::newRow("with options") << QByteArray("wayland:option=1") << QByteArrayList();
        QTest::newRow("one of its kinds") << QByteArray("wayland-egl") << QByteArrayList();
        QTest::newRow("by an argument") << QByteArray("xcb") << QByteArrayList{"-platform", "wayland"};
        QTest::newRow("first of all") << QByteArray("wayland;xcb") << QByteArrayList();
    }
    void aMissingPluginIsNamedByItsPackage()
    {
        QFETCH(QByteArray, asked);
        QFETCH(QByteArrayList, arguments);
        qputenv("WAYLAND_DISPLAY", "wayland-7");
        if (!asked.isEmpty())
            qputenv("QT_QPA_PLATFORM", asked);
        const QString text = problem(arguments);
        QVERIFY2(
            text.startsWith("No display: ") && text.contains("qt6-wayland") && text.contains("\"wayland-7\""),
            qPrintable(text));
        QVERIFY(!text.contains(u'\n'));
    }

    void aSessionThatDoesNotAnswerIsNotToldToInstallAnything_data()
    {
        QTest::addColumn<bool>("inFolderOfItsOwn");
        QTest::newRow("among the others") << false;
        QTest::newRow("in a folder that was named") << true;
    }
    void aSessionThatDoesNotAnswerIsNotToldToInstallAnything()
    {
        QFETCH(bool, inFolderOfItsOwn);
        const QDir folder(m_plugins->filePath(
            inFolderOfItsOwn ? QStringLiteral("elsewhere") : QStringLiteral("platforms")));
        QVERIFY(folder.mkpath(QStringLiteral(".")));
        QFile plugin(folder.filePath(QStringLiteral("libqwayland-generic.so")));
        QVERIFY(plugin.open(QIODevice::WriteOnly));
        if (inFolderOfItsOwn)
            qputenv("QT_QPA_PLATFORM_PLUGIN_PATH", folder.path().toLocal8Bit());
        qputenv("WAYLAND_DISPLAY", "wayland-nowhere");
        qputenv("QT_QPA_PLATFORM", "wayland");
        const QString text = problem();
        QVERIFY2(text.startsWith("No display: ") && text.contains("\"wayland-nowhere\" cannot be reached"),
            qPrintable(text));
        QVERIFY2(!text.contains("qt6-wayland"), qPrintable(text));
    }

    void onePlatformThatCanBeTriedIsEnough_data()
    {
        QTest::addColumn<QByteArray>("asked");
        QTest::newRow("that alone") << QByteArray("offscreen");
        QTest::newRow("as the last one") << QByteArray("wayland;xcb;offscreen");
        QTest::newRow("with options") << QByteArray("vnc:size=800x480");
    }
    void onePlatformThatCanBeTriedIsEnough()
    {
        QFETCH(QByteArray, asked);
        qputenv("QT_QPA_PLATFORM", asked);
        QCOMPARE(problem(), QString());
    }

    void ofSeveralTheFirstIsExplained()
    {
        qputenv("QT_QPA_PLATFORM", "xcb;wayland");
        qputenv("DISPLAY", ":4242");
        QVERIFY2(problem().contains("\":4242\""), qPrintable(problem()));
    }

private:
    QHash<QByteArray, QByteArray> m_before;
    QStringList m_libraryPaths;
    std::unique_ptr<QTemporaryDir> m_plugins;
};

KELVO_TEST(DisplayCheckTest)
#include "DisplayCheckTest.moc"
