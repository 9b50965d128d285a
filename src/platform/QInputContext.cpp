// SPDX-License-Identifier: MIT
#include "QInputContext.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QLibrary>
#include <QPluginLoader>

namespace {
QStringList pluginFiles()
{
    QStringList files;
    const QStringList paths = QCoreApplication::libraryPaths();
    for (const QString &path : paths) {
        const QDir folder(path + QStringLiteral("/inputmethods"));
        const QStringList names = folder.entryList(QDir::Files, QDir::Name);
        for (const QString &name : names) {
            if (QLibrary::isLibrary(name))
                files.append(folder.absoluteFilePath(name));
        }
    }
    return files;
}

bool offers(const QPluginLoader &loader, const QString &key)
{
    const QJsonObject metaData = loader.metaData();
    return metaData.value(QStringLiteral("IID")).toString() == QLatin1String(QInputContextPlugin_iid)
        && metaData.value(QStringLiteral("MetaData"))
               .toObject()
               .value(QStringLiteral("Keys"))
               .toArray()
               .contains(key);
}
} // namespace

QInputContext *QInputContextFactory::create(const QString &key, QObject *parent)
{
    const QStringList files = pluginFiles();
    for (const QString &file : files) {
        QPluginLoader loader(file);
        if (!offers(loader, key))
            continue;
        auto *plugin = qobject_cast<QInputContextPlugin *>(loader.instance());
        QInputContext *context = plugin ? plugin->create(key) : nullptr;
        if (context)
            context->setParent(parent);
        return context;
    }
    return nullptr;
}
