// SPDX-License-Identifier: MIT
// Plug-ins that others could have put where they are: they are not run, and the reason is told.
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "PluginFolder.h"

#include <QSignalSpy>
#include <QTest>

#include <grp.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr uid_t somebody = 54321;

bool change(const QString &path, mode_t mode)
{
    return ::chmod(QFile::encodeName(path).constData(), mode) == 0;
}

bool give(const QString &path, uid_t user, gid_t group)
{
    return ::chown(QFile::encodeName(path).constData(), user, group) == 0;
}

class PluginPlacesTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void runsWhatOnlyItsOwnerCanChange_data();
    void runsWhatOnlyItsOwnerCanChange();
    void refusesWhatOthersCanChange_data();
    void refusesWhatOthersCanChange();
    void refusesWhatBelongsToOthers_data();
    void refusesWhatBelongsToOthers();
    void refusesALinkAmongOthers();
    void startsNothingOfAnOpenFolder();
    void runsOnceItIsMended();

private:
    QString plugins() const { return m_root.filePath("above/plugins"); }
    QString pathOf(const QString &what) const;
    /// Empty: it runs; null: neither.
    QString refusal(const QString &name = QStringLiteral("good.so"));

    QTemporaryDir m_root;
    std::unique_ptr<KelvoRegistry> m_registry;
    int m_refused = 0;
};

void PluginPlacesTest::init()
{
    KelvoTestCase::init();
    QVERIFY(QDir(m_root.path()).mkpath("above/plugins"));
    const QDir made(qEnvironmentVariable("KELVO_TEST_PLUGIN_DIR"));
    QVERIFY(QFile::copy(made.filePath("good.so"), pathOf("file")));
    QVERIFY(change(pathOf("file"), 0755) && change(pathOf("folder"), 0755) && change(pathOf("above"), 0755));
    qputenv("KELVO_PLUGIN_PATH", QFile::encodeName(plugins()));
    m_registry = std::make_unique<KelvoRegistry>();
}

void PluginPlacesTest::cleanup()
{
    m_registry.reset();
    qunsetenv("KELVO_PLUGIN_PATH");
    QVERIFY(QDir(m_root.filePath("above")).removeRecursively());
}

QString PluginPlacesTest::pathOf(const QString &what) const
{
    if (what == QLatin1String("file"))
        return plugins() + "/good.so";
    return what == QLatin1String("folder") ? plugins() : m_root.filePath("above");
}

QString PluginPlacesTest::refusal(const QString &name)
{
    QSignalSpy failed(m_registry->pluginLoader(), &KelvoPluginLoader::pluginFailed);
    LogRecorder log;
    m_registry->loadPlugin(name);
    const bool isOver = QTest::qWaitFor(
        [&] { return !failed.isEmpty() || m_registry->loadedPlugins().contains(name); }, 20'000);
    if (!isOver || failed.isEmpty())
        return isOver ? QString("") : QString();
    const QString reason = failed.constFirst().at(1).toString();
    // Where people look: the log, and the dialog, which shows the state.
    const bool isTold = log.contains("Plug-in " + name + " cannot be used: " + reason)
        && m_registry->pluginLoader()->failure(name) == reason;
    return isTold ? reason : QString();
}

void PluginPlacesTest::runsWhatOnlyItsOwnerCanChange_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<uint>("mode");
    QTest::newRow("usual") << "folder" << 0755u;
    QTest::newRow("private folder") << "folder" << 0700u;
    QTest::newRow("file that nobody else reads") << "file" << 0600u;
    QTest::newRow("own group may write") << "folder" << 0775u;
    QTest::newRow("own group may write the file") << "file" << 0775u;
    QTest::newRow("folder like /tmp") << "folder" << 01777u;
    // As in /usr/local, and on build machines.
    QTest::newRow("open folder above") << "above" << 0777u;
}

void PluginPlacesTest::runsWhatOnlyItsOwnerCanChange()
{
    QFETCH(QString, what);
    QFETCH(uint, mode);
    const struct group *own = ::getgrgid(::getegid());
    if ((mode & 020) && !(mode & 02) && (!own || qEnvironmentVariable("USER", "root") != own->gr_name))
        QSKIP("This user has no group of the same name");
    QVERIFY(change(pathOf(what), mode));
    QCOMPARE(refusal(), QString(""));
}

void PluginPlacesTest::refusesWhatOthersCanChange_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<uint>("mode");
    QTest::addColumn<QString>("cure");
    for (const char *what : {"file", "folder"}) {
        QTest::newRow(qPrintable(what + QString(", by everybody"))) << what << 0757u << "chmod o-w";
        QTest::newRow(qPrintable(what + QString(", by all"))) << what << 0777u << "chmod o-w";
    }
    // The bit means nothing for files.
    QTest::newRow("file with the bit of /tmp") << "file" << 01757u << "chmod o-w";
}

void PluginPlacesTest::refusesWhatOthersCanChange()
{
    QFETCH(QString, what);
    QFETCH(uint, mode);
    QFETCH(QString, cure);
    QVERIFY(change(pathOf(what), mode));
    const QString reason = refusal();
    QVERIFY2(reason.contains(QFileInfo(pathOf(what)).canonicalFilePath()) && reason.contains(cure),
        qPrintable(reason));
    QCOMPARE(m_registry->renderers().size(), 0);
    ++m_refused;
}

void PluginPlacesTest::refusesWhatBelongsToOthers_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<uint>("user");
    QTest::addColumn<uint>("group");
    QTest::addColumn<bool>("isRefused");
    QTest::newRow("file") << "file" << uint(somebody) << 0u << true;
    QTest::newRow("folder") << "folder" << uint(somebody) << 0u << true;
    QTest::newRow("above") << "above" << uint(somebody) << 0u << false;
    QTest::newRow("file of a group") << "file" << 0u << uint(somebody) << true;
    QTest::newRow("folder of a group") << "folder" << 0u << uint(somebody) << true;
    QTest::newRow("above of a group") << "above" << 0u << uint(somebody) << false;
}

void PluginPlacesTest::refusesWhatBelongsToOthers()
{
    QFETCH(QString, what);
    QFETCH(uint, user);
    QFETCH(uint, group);
    QFETCH(bool, isRefused);
    if (::geteuid() != 0)
        QSKIP("Only root can give away what is his");
    QVERIFY(change(pathOf(what), group ? 0775 : 0755));
    QVERIFY(give(pathOf(what), user, group));
    const QString reason = refusal();
    QCOMPARE(reason.isEmpty(), !isRefused);
    QVERIFY2(!isRefused || reason.contains(QFileInfo(pathOf(what)).canonicalFilePath()), qPrintable(reason));
    m_refused += isRefused;
}

void PluginPlacesTest::refusesALinkAmongOthers()
{
    const PluginFolder safe;
    QVERIFY(safe.add("good.so", "linked.so"));
    qputenv("KELVO_PLUGIN_PATH", QFile::encodeName(plugins()));
    QVERIFY(QFile::link(safe.filePath("linked.so"), plugins() + "/linked.so"));
    QVERIFY(change(plugins(), 0777));
    QVERIFY(!refusal("linked.so").isEmpty());
    QVERIFY(change(plugins(), 0755) && change(safe.path(), 0777));
    QVERIFY(!refusal("linked.so").isEmpty());
    QVERIFY(change(safe.path(), 0755));
    QCOMPARE(refusal("linked.so"), QString(""));
}

void PluginPlacesTest::startsNothingOfAnOpenFolder()
{
    const QDir made(qEnvironmentVariable("KELVO_TEST_PLUGIN_DIR"));
    QVERIFY(QFile::copy(made.filePath("by-default.so"), plugins() + "/by-default.so"));
    QVERIFY(change(plugins(), 0777));
    QSignalSpy failed(m_registry->pluginLoader(), &KelvoPluginLoader::pluginFailed);
    m_registry->pluginLoader()->loadDefaults();
    QTRY_VERIFY(failed.contains(
        QVariantList{QString("by-default.so"), m_registry->pluginLoader()->failure("by-default.so")}));
    QVERIFY(!m_registry->loadedPlugins().contains("by-default.so"));
    // It is listed all the same, and nothing of it is believed.
    QCOMPARE(m_registry->pluginLoader()->status("by-default.so").startsByDefault, false);
}

void PluginPlacesTest::runsOnceItIsMended()
{
    QVERIFY(change(plugins(), 0777));
    QVERIFY(!refusal().isEmpty());
    QVERIFY(change(plugins(), 0755));
    QCOMPARE(refusal(), QString(""));
    qInfo("reliability: exposure-plugins: %d places of others refused, with the reason", m_refused);
}
} // namespace

QTEST_GUILESS_MAIN(PluginPlacesTest)
#include "PluginPlacesTest.moc"
