// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCoreGlobal.h"

#include <QObject>
#include <QStringList>

#include <memory>

class KelvoRegistry;
class QJsonObject;

/// What is known of one plug-in file.
struct KELVO_CORE_EXPORT KelvoPluginStatus
{
    /// How far it has come.
    enum State {
        Unknown, ///< no such file
        Available, ///< found, not running
        Loading,
        Running,
        Failed, ///< the last attempt to load it failed; `error` says why
    };
    /// "unknown", "available", "loading", "running", "failed": for readers and programs.
    QString stateText() const;

    State state = Unknown; ///< now
    QString fileName; ///< as listed, for instance "gst-renderer.so"
    QString path; ///< absolute; empty when there is no such file
    QString error; ///< in words for people; empty unless Failed
    // From the file's JSON metadata, read without running its code:
    QString name; ///< what users read; without one in the metadata, the file's
    QString description; ///< one sentence; may be empty
    QString version; ///< the plug-in's own; may be empty
    QStringList brings; ///< "renderers", "sources", "playlists"
    bool startsByDefault = false; ///< whether loadDefaults() starts it unasked
};

/// Finds, loads and unloads the run-time loadable back ends. Used through KelvoRegistry.
///
/// Reading and linking a library happens on a worker thread; its start and stop run on the GUI thread. A failed
/// load leaves the registry as it was, gives one warning with the reason and is kept in status(). What somebody else could
/// have put into a folder, because he may write there, is refused.
class KELVO_CORE_EXPORT KelvoPluginLoader : public QObject
{
    Q_OBJECT
public:
    /// The registry is what plug-ins are started with; it must outlive this object.
    explicit KelvoPluginLoader(KelvoRegistry *registry);
    /// Stops what runs.
    ~KelvoPluginLoader() override;

    /// The folders looked through: KELVO_PLUGIN_PATH (separated by ":"), then kelvo/plugins beside this library, which is
    /// the folder of the same build or installation. Of two files of one name the first found counts.
    static QStringList folders();
    /// File names of the libraries in those folders, sorted.
    QStringList available() const;
    /// File names of the plug-ins that run, in the order in which they started.
    QStringList loaded() const;
    /// What is known of it now. Reads the metadata of a file that was not loaded yet.
    KelvoPluginStatus status(const QString &fileName) const;
    /// Why the last attempt to load it came to nothing; empty when none did. Unlike status() it reads no file.
    QString failure(const QString &fileName) const;

    /// Asynchronous: ends with loaded() or failed(). Nothing happens for a plug-in that runs or is being loaded.
    void load(const QString &fileName);
    /// Stops it and deletes its objects before it returns; a plug-in that is still being loaded will not start.
    void unload(const QString &fileName);
    /// Loads the plug-ins named by KELVO_PLUGINS (comma-separated, with or without ".so"; empty: none), otherwise
    /// those that start by default, one after the other in that order.
    void loadDefaults();
    /// Lets those that loadDefaults() is going to load begin with what takes long, where their metadata asks for it: see
    /// KelvoPrepareAhead. Nothing is started or told. Not before the program has changed its environment for the last
    /// time: libraries read it.
    void prepareAhead();
    /// Unloads what runs, the last one started first. Done by the process itself before it ends.
    void unloadAll();

Q_SIGNALS:
    /// It runs; what it brings at once is in the registry.
    void pluginLoaded(const QString &fileName);
    /// It is stopped, and its objects are deleted.
    void pluginUnloaded(const QString &fileName);
    /// It does not run, for this reason, in words for people.
    void pluginFailed(const QString &fileName, const QString &reason);

private:
    void finishLoad(
        const QString &fileName, quint64 attempt, const QJsonObject &metaData, const QString &defect);
    void fail(const QString &fileName, const QString &reason);

    struct Private;
    std::unique_ptr<Private> d;
};
