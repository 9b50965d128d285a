// SPDX-License-Identifier: MIT
#include "KelvoPluginLoader.h"

#include "ApiVersion.h"
#include "ElfCheck.h"
#include "KelvoMessageHandler.h"
#include "KelvoPlugin.h"
#include "KelvoRegistry.h"
#include "LibraryOpening.h"
#include "Mailbox.h"
#include "PlaceCheck.h"
#include "WorkerPool.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QPluginLoader>
#include <QPointer>

#include <dlfcn.h>

#include <exception>

namespace {
const QLatin1String librarySuffix(".so");
// Libraries that registered types with GLib must never be unmapped.
constexpr auto loadHints = QLibrary::PreventUnloadHint | QLibrary::ResolveAllSymbolsHint;

QString findLibraryFolder()
{
    static const char inThisLibrary = 0;
    Dl_info library = {};
    if (!dladdr(&inThisLibrary, &library))
        return {};
    return QFileInfo(QFile::decodeName(library.dli_fname)).canonicalPath();
}

/// The folder that this very library lies in, whichever program has loaded it. Asked for once, before the first back end
/// is loaded: while one that hangs is being loaded, the dynamic linker answers nobody.
const QString &libraryFolder()
{
    static const QString folder = findLibraryFolder();
    return folder;
}

/// What a library's metadata says, and why it cannot be used (empty: it can).
struct Inspection
{
    QJsonObject metaData;
    QString defect;
};

/// Worker thread: reads the file without running its code.
Inspection inspect(const QString &path)
{
    Inspection result;
    result.defect = placeDefect(path);
    if (result.defect.isEmpty())
        result.defect = elfDefect(path);
    if (!result.defect.isEmpty())
        return result;
    const QJsonObject qt = QPluginLoader(path).metaData();
    result.metaData = qt.value(QLatin1String("MetaData")).toObject();
    result.defect = ApiVersion::defectOf(qt.value(QLatin1String("IID")).toString());
    return result;
}

/// Worker thread: maps the library and everything it needs, which takes long for large foreign libraries.
Inspection inspectAndLink(const QString &path)
{
    Inspection result = inspect(path);
    if (!result.defect.isEmpty())
        return result;
    openLibrary(path);
    QPluginLoader loader(path);
    loader.setLoadHints(loadHints);
    if (!loader.load())
        result.defect = loader.errorString();
    return result;
}

/// Worker thread: maps the library, and lets it begin.
void prepareLibrary(const QString &path)
{
    openLibrary(path);
    QLibrary library(path);
    library.setLoadHints(loadHints);
    const auto prepare = reinterpret_cast<KelvoPrepareAhead *>(library.resolve("kelvoPrepareAhead"));
    if (prepare)
        prepare();
}

/// What KELVO_PLUGINS names, as file names.
QStringList namedByEnvironment()
{
    QStringList files;
    const QStringList names
        = qEnvironmentVariable("KELVO_PLUGINS").split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString &name : names) {
        const QString file = name.trimmed();
        if (!file.isEmpty())
            files.append(file.endsWith(librarySuffix) ? file : file + librarySuffix);
    }
    return files;
}

/// The first file of that name in the folders; empty when there is none.
QString findFile(const QString &fileName, const QStringList &folders)
{
    // A name with a folder in it would be a second name of a file that is listed under its own.
    if (fileName.contains(QLatin1Char('/')))
        return {};
    for (const QString &folder : folders) {
        const QFileInfo file(QDir(folder), fileName);
        if (file.isFile() && QLibrary::isLibrary(file.fileName()))
            return file.absoluteFilePath();
    }
    return {};
}

QStringList librariesIn(const QStringList &folders)
{
    QStringList names;
    for (const QString &folder : folders) {
        const QStringList files = QDir(folder).entryList(QDir::Files);
        for (const QString &file : files) {
            if (QLibrary::isLibrary(file))
                names.append(file);
        }
    }
    names.removeDuplicates();
    names.sort();
    return names;
}

/// Worker thread.
QStringList startingByDefault(const QStringList &folders)
{
    QStringList defaults;
    const QStringList names = librariesIn(folders);
    for (const QString &name : names) {
        const Inspection result = inspect(findFile(name, folders));
        // One that cannot be used is tried too, so that the log says why it is missing.
        if (!result.defect.isEmpty() || result.metaData.value(QLatin1String("startsByDefault")).toBool())
            defaults.append(name);
    }
    return defaults;
}

bool isNamedByEnvironment()
{
    return qEnvironmentVariableIsSet("KELVO_PLUGINS");
}

void describe(KelvoPluginStatus &status, const QJsonObject &metaData)
{
    status.name
        = metaData.value(QLatin1String("name")).toString(QFileInfo(status.fileName).completeBaseName());
    status.description = metaData.value(QLatin1String("description")).toString();
    status.version = metaData.value(QLatin1String("version")).toString();
    status.startsByDefault = metaData.value(QLatin1String("startsByDefault")).toBool();
    status.brings = metaData.value(QLatin1String("brings")).toVariant().toStringList();
}

/// The root objects of running plug-ins and their file names, of all loaders of the process: Qt gives everybody
/// who asks for a library's root object the same one, also under another name of the file.
QHash<QObject *, QString> &rootsInUse()
{
    static QHash<QObject *, QString> roots;
    return roots;
}

/// Makes the root object; on failure null and the reason.
QObject *makeRoot(const QString &path, QString *reason)
{
    QPluginLoader loader(path);
    loader.setLoadHints(loadHints);
    QObject *root = nullptr;
    try {
        root = loader.instance();
    } catch (const std::exception &exception) {
        *reason = QStringLiteral("it could not be made: %1").arg(QString::fromLocal8Bit(exception.what()));
        return nullptr;
    } catch (...) {
        *reason = QStringLiteral("it could not be made: it threw an exception");
        return nullptr;
    }
    const auto running = rootsInUse().constFind(root);
    if (running != rootsInUse().cend()) {
        *reason = QStringLiteral("it runs already, as %1").arg(*running);
        return nullptr;
    }
    if (!qobject_cast<KelvoPlugin *>(root)) {
        *reason = QStringLiteral("it has no KelvoPlugin object");
        delete root;
        return nullptr;
    }
    return root;
}

/// Takes out what a start has put in before it failed.
template <typename Object>
void removeAdded(KelvoRegistry *registry, const QList<Object *> &now, const QList<Object *> &before,
    bool (KelvoRegistry::*remove)(Object *))
{
    for (Object *object : now) {
        if (!before.contains(object))
            (registry->*remove)(object);
    }
}

/// Starts the plug-in; an empty text, or why it did not start.
QString startGuarded(KelvoPlugin *plugin, KelvoRegistry *registry)
{
    const auto renderers = registry->renderers();
    const auto sources = registry->sources();
    const auto playlists = registry->allPlaylists();
    QString reason;
    try {
        if (plugin->start(registry, &reason))
            return {};
        if (reason.isEmpty())
            reason = QStringLiteral("it refused to start");
    } catch (const std::exception &exception) {
        reason = QStringLiteral("its start threw: %1").arg(QString::fromLocal8Bit(exception.what()));
    } catch (...) {
        reason = QStringLiteral("its start threw an exception");
    }
    removeAdded(registry, registry->renderers(), renderers, &KelvoRegistry::removeRenderer);
    removeAdded(registry, registry->sources(), sources, &KelvoRegistry::removeSource);
    removeAdded(registry, registry->allPlaylists(), playlists, &KelvoRegistry::removePlaylist);
    return reason;
}

void stopGuarded(KelvoPlugin *plugin, const QString &fileName)
{
    try {
        plugin->stop();
    } catch (const std::exception &exception) {
        qCWarning(lcKelvo) << "Plug-in" << fileName << "threw while it stopped:" << exception.what();
    } catch (...) {
        qCWarning(lcKelvo) << "Plug-in" << fileName << "threw while it stopped";
    }
}
} // namespace

QString KelvoPluginStatus::stateText() const
{
    switch (state) {
    case Unknown:
        break;
    case Available:
        return QStringLiteral("available");
    case Loading:
        return QStringLiteral("loading");
    case Running:
        return QStringLiteral("running");
    case Failed:
        return QStringLiteral("failed");
    }
    return QStringLiteral("unknown");
}

struct KelvoPluginLoader::Private
{
    struct Entry
    {
        KelvoPluginStatus status;
        QPointer<QObject> root;
        KelvoPlugin *plugin = nullptr;
        /// Counts the loads begun, so that the result of one that was called off is told from a later one's.
        quint64 attempt = 0;
    };

    KelvoRegistry *registry = nullptr;
    QHash<QString, Entry> entries; // by file name
    QStringList running; // in the order of their starts
    /// One thread, so that plug-ins start in the order asked for.
    WorkerPool worker{QStringLiteral("kelvo-plugin-loader"), 1};
    /// What the worker answers through: it may come back after this loader's end.
    std::shared_ptr<Mailbox> mailbox;

    QString pathOf(const QString &fileName) const;
};

QString KelvoPluginLoader::Private::pathOf(const QString &fileName) const
{
    const auto known = entries.constFind(fileName);
    if (known != entries.constEnd() && known->plugin)
        return known->status.path;
    return findFile(fileName, folders());
}

KelvoPluginLoader::KelvoPluginLoader(KelvoRegistry *registry)
    : d(std::make_unique<Private>())
{
    d->registry = registry;
    d->mailbox = std::make_shared<Mailbox>(this);
}

KelvoPluginLoader::~KelvoPluginLoader()
{
    d->worker.clear();
    d->worker.waitForDone();
    d->mailbox->close();
    unloadAll();
}

QStringList KelvoPluginLoader::folders()
{
    QStringList folders
        = qEnvironmentVariable("KELVO_PLUGIN_PATH").split(QLatin1Char(':'), Qt::SkipEmptyParts);
    // Those that were built or installed with this library: by its place, not by a folder that a build had written down,
    // no copy of it can take another one's.
    const QString &library = libraryFolder();
    if (!library.isEmpty())
        folders.append(library + QLatin1String("/" KELVO_PLUGIN_FOLDER));
    folders.removeDuplicates();
    return folders;
}

QStringList KelvoPluginLoader::available() const
{
    return librariesIn(folders());
}

QStringList KelvoPluginLoader::loaded() const
{
    return d->running;
}

KelvoPluginStatus KelvoPluginLoader::status(const QString &fileName) const
{
    const auto known = d->entries.constFind(fileName);
    if (known != d->entries.constEnd())
        return known->status;
    KelvoPluginStatus status;
    status.fileName = fileName;
    status.path = d->pathOf(fileName);
    if (!status.path.isEmpty()) {
        status.state = KelvoPluginStatus::Available;
        describe(status, inspect(status.path).metaData);
    }
    return status;
}

QString KelvoPluginLoader::failure(const QString &fileName) const
{
    const KelvoPluginStatus status = d->entries.value(fileName).status;
    return status.state == KelvoPluginStatus::Failed ? status.error : QString();
}

void KelvoPluginLoader::load(const QString &fileName)
{
    Private::Entry &entry = d->entries[fileName];
    if (entry.status.state == KelvoPluginStatus::Loading || entry.status.state == KelvoPluginStatus::Running)
        return;
    entry.status = {};
    entry.status.fileName = fileName;
    entry.status.path = d->pathOf(fileName);
    if (entry.status.path.isEmpty()) {
        fail(fileName, QStringLiteral("there is no such file"));
        return;
    }
    entry.status.state = KelvoPluginStatus::Loading;
    d->worker.start(
        [this, mailbox = d->mailbox, fileName, path = entry.status.path, attempt = ++entry.attempt] {
            const Inspection result = inspectAndLink(path);
            mailbox->post([=, this] { finishLoad(fileName, attempt, result.metaData, result.defect); });
        });
}

void KelvoPluginLoader::finishLoad(
    const QString &fileName, quint64 attempt, const QJsonObject &metaData, const QString &defect)
{
    Private::Entry &entry = d->entries[fileName];
    if (entry.status.state != KelvoPluginStatus::Loading || entry.attempt != attempt)
        return; // called off by unload()
    describe(entry.status, metaData);
    if (!defect.isEmpty()) {
        fail(fileName, defect);
        return;
    }
    QString reason;
    const QPointer<QObject> root = makeRoot(entry.status.path, &reason);
    auto *plugin = qobject_cast<KelvoPlugin *>(root.data());
    if (plugin)
        reason = startGuarded(plugin, d->registry);
    if (!plugin || !reason.isEmpty()) {
        delete root.data();
        fail(fileName, reason);
        return;
    }
    // Looked up again: the start may have led to other loads, which move the entries.
    Private::Entry &started = d->entries[fileName];
    if (started.status.state != KelvoPluginStatus::Loading || started.attempt != attempt) {
        // Called off within its own start.
        stopGuarded(plugin, fileName);
        delete root.data();
        return;
    }
    started.root = root;
    started.plugin = plugin;
    started.status.state = KelvoPluginStatus::Running;
    rootsInUse().insert(root, fileName);
    d->running.append(fileName);
    qCDebug(lcKelvo) << "Plug-in" << fileName << "is running";
    Q_EMIT pluginLoaded(fileName);
}

void KelvoPluginLoader::fail(const QString &fileName, const QString &reason)
{
    KelvoPluginStatus &status = d->entries[fileName].status;
    status.state = KelvoPluginStatus::Failed;
    status.error = reason;
    qCWarning(lcKelvo).noquote() << "Plug-in" << fileName << "cannot be used:" << reason;
    Q_EMIT pluginFailed(fileName, reason);
}

void KelvoPluginLoader::unload(const QString &fileName)
{
    const auto found = d->entries.find(fileName);
    if (found == d->entries.end())
        return;
    if (found->status.state == KelvoPluginStatus::Loading) {
        found->status.state = KelvoPluginStatus::Available;
        return;
    }
    if (found->status.state != KelvoPluginStatus::Running)
        return;
    found->status.state = KelvoPluginStatus::Available;
    d->running.removeAll(fileName);
    // Taken out of the entry first: what stop() sets off may load or unload others.
    KelvoPlugin *plugin = std::exchange(found->plugin, nullptr);
    const QPointer<QObject> root = std::exchange(found->root, nullptr);
    stopGuarded(plugin, fileName);
    rootsInUse().remove(root);
    delete root.data();
    qCDebug(lcKelvo) << "Plug-in" << fileName << "is unloaded";
    Q_EMIT pluginUnloaded(fileName);
}

void KelvoPluginLoader::loadDefaults()
{
    if (isNamedByEnvironment()) {
        const QStringList files = namedByEnvironment();
        for (const QString &file : files)
            load(file);
        return;
    }
    d->worker.start([this, mailbox = d->mailbox, folders = folders()] {
        const QStringList defaults = startingByDefault(folders);
        mailbox->post([this, defaults] {
            for (const QString &name : defaults)
                load(name);
        });
    });
}

void KelvoPluginLoader::prepareAhead()
{
    d->worker.start([folders = folders()] {
        const QStringList files = isNamedByEnvironment() ? namedByEnvironment() : startingByDefault(folders);
        for (const QString &file : files) {
            const QString path = findFile(file, folders);
            const Inspection result = path.isEmpty() ? Inspection() : inspect(path);
            if (result.defect.isEmpty() && result.metaData.value(QLatin1String("preparesAhead")).toBool())
                prepareLibrary(path);
        }
    });
}

void KelvoPluginLoader::unloadAll()
{
    d->worker.clear();
    for (auto &entry : d->entries) {
        if (entry.status.state == KelvoPluginStatus::Loading)
            entry.status.state = KelvoPluginStatus::Available;
    }
    while (!d->running.isEmpty())
        unload(d->running.constLast());
}
