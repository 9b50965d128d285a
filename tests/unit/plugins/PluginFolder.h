// SPDX-License-Identifier: MIT
#pragma once

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

/// A plug-in folder of a test's own, which KELVO_PLUGIN_PATH names for as long as it lives.
class PluginFolder
{
public:
    PluginFolder() { qputenv("KELVO_PLUGIN_PATH", QFile::encodeName(m_folder.path())); }
    ~PluginFolder() { qunsetenv("KELVO_PLUGIN_PATH"); }
    Q_DISABLE_COPY_MOVE(PluginFolder)

    QString path() const { return m_folder.path(); }
    QString filePath(const QString &name) const { return m_folder.filePath(name); }

    /// One of the plug-ins that were built for the tests, under the same or another name.
    bool add(const QString &plugin, const QString &as = {}) const
    {
        const QDir made(qEnvironmentVariable("KELVO_TEST_PLUGIN_DIR"));
        return QFile::copy(made.filePath(plugin), filePath(as.isEmpty() ? plugin : as));
    }

    bool write(const QString &name, const QByteArray &content) const
    {
        QFile file(filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    }

    QByteArray read(const QString &name) const
    {
        QFile file(filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    QTemporaryDir m_folder;
};
