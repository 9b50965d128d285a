// SPDX-License-Identifier: MIT
// Whose back ends the library takes, wherever it lies: a copy of it stands for one that is installed.
#include "KelvoTestCase.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <vector>

class PluginFoldersTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void takesThoseOfItsBuild();
    void takesThoseItIsInstalledWith_data();
    void takesThoseItIsInstalledWith();
    void takesThemFromARelativePlace();

private:
    /// A new folder whose name begins as told, with the library in lib; empty when it cannot be made.
    QString install(const QString &prefix);
    QStringList folders(const QString &libraries, const QString &workingFolder = {});

    std::vector<std::unique_ptr<QTemporaryDir>> m_prefixes;
    QProcessEnvironment m_environment = QProcessEnvironment::systemEnvironment();
    QString m_built = qEnvironmentVariable("KELVO_BUILT_PLUGIN_DIR"); // <build folder>/lib/kelvo/plugins
};

void PluginFoldersTest::initTestCase()
{
    QVERIFY(!m_built.isEmpty());
    m_environment.remove("KELVO_PLUGIN_PATH");
}

QString PluginFoldersTest::install(const QString &prefix)
{
    const auto &folder = m_prefixes.emplace_back(std::make_unique<QTemporaryDir>(prefix + "XXXXXX"));
    const QDir libraries(folder->filePath("lib"));
    const QString name = libraries.filePath(qEnvironmentVariable("KELVO_TEST_LIBRARY_NAME"));
    if (!libraries.mkpath(".") || !QFile::copy(qEnvironmentVariable("KELVO_TEST_LIBRARY"), name))
        return {};
    return QDir(folder->path()).canonicalPath();
}

/// As a program tells them that has the library from that folder; empty: from its build.
QStringList PluginFoldersTest::folders(const QString &libraries, const QString &workingFolder)
{
    QProcess program;
    QProcessEnvironment environment = m_environment;
    if (!libraries.isEmpty())
        environment.insert("LD_LIBRARY_PATH", libraries);
    program.setProcessEnvironment(environment);
    program.setWorkingDirectory(workingFolder);
    program.start(qEnvironmentVariable("KELVO_TEST_PROGRAM"), {});
    if (!program.waitForFinished() || program.exitCode() != 0)
        return {QString::fromLocal8Bit(program.readAllStandardError())};
    return QString::fromLocal8Bit(program.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
}

void PluginFoldersTest::takesThoseOfItsBuild()
{
    QCOMPARE(folders({}), QStringList{m_built});
}

void PluginFoldersTest::takesThoseItIsInstalledWith_data()
{
    QTest::addColumn<QString>("prefix");
    const QString build = QDir::cleanPath(m_built + "/../../..");
    QTest::newRow("elsewhere") << QDir::temp().filePath("kelvo-");
    QTest::newRow("beside the build, its name longer") << build;
    QTest::newRow("within the build folder") << build + "/tests/prefix-";
}

void PluginFoldersTest::takesThoseItIsInstalledWith()
{
    QFETCH(const QString, prefix);
    const QString installed = install(prefix);
    QVERIFY(!installed.isEmpty());
    // The program lies in the build folder, which must not count.
    QCOMPARE(folders(installed + "/lib"), QStringList{installed + "/lib/kelvo/plugins"});
}

void PluginFoldersTest::takesThemFromARelativePlace()
{
    const QString installed = install(QDir::temp().filePath("kelvo-"));
    QCOMPARE(folders("lib", installed), QStringList{installed + "/lib/kelvo/plugins"});
}

QTEST_GUILESS_MAIN(PluginFoldersTest)
#include "PluginFoldersTest.moc"
