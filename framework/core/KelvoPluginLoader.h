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
    enum State {
        Unknown, ///< no such file
        Available, ///< found, not running
        Loading,
        Running,
        Failed, ///< the last attempt to load it failed; `error` says why
    };
    /// "unknown", "available", "loading", "running", "failed": for readers and programs.
    QString stateText() const;

    State state = Unknown;
    QString fileName; ///< as listed, for instance "gst-renderer.so"
    QString path;
    QString error;
    // From the file's JSON metadata, read without running its code:
    QString name;
    QString description;
    QString version;
    QStringList brings;
    bool startsByDefault = false;
};

/// Finds, loads and unloads the run-time loadable back ends. Used through KelvoRegistry.
///
/// Reading and linking a library happens on a worker thread; its start and stop run on the GUI thread. A failed
/// load leaves the registry as it was, gives one warning with the reason and is kept in status().
class KELVO_CORE_EXPORT KelvoPluginLoader : public QObject
{
    Q_OBJECT
public:
    explicit KelvoPluginLoader(KelvoRegistry *registry);
    /// Stops what runs.
    ~KelvoPluginLoader() override;

    /// The folders looked through: KELVO_PLUGIN_PATH (separated by ":"), then the folder of the build or of the
    /// installation. Of two files of one name the first found counts.
    static QStringList folders();
    /// File names of the libraries in those folders, sorted.
    QStringList available() const;
    /// File names of the plug-ins that run, in the order in which they started.
    QStringList loaded() const;
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
    /// Unloads what runs, the last one started first. Done by the process itself before it ends.
    void unloadAll();

Q_SIGNALS:
    void pluginLoaded(const QString &fileName);
    void pluginUnloaded(const QString &fileName);
    void pluginFailed(const QString &fileName, const QString &reason);

private:
    void finishLoad(
        const QString &fileName, quint64 attempt, const QJsonObject &metaData, const QString &defect);
    void fail(const QString &fileName, const QString &reason);

    struct Private;
    std::unique_ptr<Private> d;
};
