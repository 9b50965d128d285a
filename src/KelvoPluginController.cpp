// SPDX-License-Identifier: MIT
#include "KelvoPluginController.h"

#include "KelvoMainWindow.h"
#include "KelvoPluginLoader.h"
#include "KelvoRegistry.h"

#include <QDebug>
#include <QListWidgetItem>

namespace {
/// Says at the entry why the last attempt to load it came to nothing, when the log with the warning is out of sight.
void tellFailure(QListWidgetItem *item, const QString &reason)
{
    if (reason.isEmpty())
        return;
    const QString text = QStringLiteral("Cannot be used: %1").arg(reason);
    item->setToolTip(text);
    item->setData(Qt::AccessibleDescriptionRole, text);
}

QList<QListWidgetItem *> makeItems(const QStringList &fileNames, const KelvoPluginLoader &loader)
{
    QList<QListWidgetItem *> items;
    for (const QString &fileName : fileNames) {
        auto *item = new QListWidgetItem(fileName);
        item->setData(Qt::UserRole, fileName);
        tellFailure(item, loader.failure(fileName));
        items.append(item);
    }
    return items;
}

/// File names of the items that are in the one list and not in the other.
QStringList filesOnlyIn(const QList<QListWidgetItem *> &items, const QList<QListWidgetItem *> &others)
{
    QStringList fileNames;
    for (QListWidgetItem *item : items) {
        if (!others.contains(item))
            fileNames.append(item->data(Qt::UserRole).toString());
    }
    return fileNames;
}
} // namespace

KelvoPluginController::KelvoPluginController(KelvoMainWindow *mainWindow)
    : m_registry(KelvoRegistry::instance())
    , m_mainWindow(mainWindow)
{
    qDebug() << "KelvoPluginController::KelvoPluginController";
    m_mainWindow->connectPluginSignals(this);
}

KelvoPluginController::~KelvoPluginController()
{
    qDebug() << "KelvoPluginController::~KelvoPluginController";
}

void KelvoPluginController::showPluginsDialog()
{
    qDebug() << "KelvoPluginController::showPluginsDialog";
    // Its lists own the items that the opening under way is still to compare.
    if (m_mainWindow->isSelectItemsDialogOpen())
        return;
    const QList<QListWidgetItem *> available
        = makeItems(m_registry->availablePlugins(), *m_registry->pluginLoader());
    const QList<QListWidgetItem *> loaded
        = makeItems(m_registry->loadedPlugins(), *m_registry->pluginLoader());
    const QList<QListWidgetItem *> result = m_mainWindow->showSelectItemsDialog(available, loaded);
    // Loading may run the event loop and thereby whatever else fills the dialog: what is to be done is settled first.
    const QStringList toLoad = filesOnlyIn(result, loaded);
    const QStringList toUnload = filesOnlyIn(loaded, result);
    for (const QString &fileName : toLoad)
        m_registry->loadPlugin(fileName);
    for (const QString &fileName : toUnload)
        m_registry->unloadPlugin(fileName);
    qDebug() << "KelvoPluginController::showPluginsDialog ends";
}
