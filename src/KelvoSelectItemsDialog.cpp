// SPDX-License-Identifier: MIT
#include "KelvoSelectItemsDialog.h"

#include "ListViews.h"

#include <QDebug>
#include <QWindow>

namespace {
void fill(QListWidget *list, const QList<QListWidgetItem *> &items, bool useItemNames)
{
    list->clear();
    for (QListWidgetItem *item : items) {
        if (useItemNames)
            item->setText(KelvoSelectItemsDialog::getItemNameFromFilename(item->text()));
        list->addItem(item);
    }
}

void moveCurrentItem(QListWidget *from, QListWidget *to)
{
    if (QListWidgetItem *item = from->takeItem(from->currentRow()))
        to->addItem(item);
}

/// Those whose text merely contains the other's, such as "foo2" and "foo", are different entries.
void removeSameItems(QListWidget *list, const QListWidgetItem *other)
{
    const QList<QListWidgetItem *> similar = list->findItems(other->text(), Qt::MatchContains);
    for (QListWidgetItem *item : similar) {
        if (item->data(Qt::UserRole) == other->data(Qt::UserRole))
            delete list->takeItem(list->row(item));
    }
}
} // namespace

KelvoSelectItemsDialog::KelvoSelectItemsDialog(const QString &title, QWidget *parent)
    : QDialog(parent)
{
    qDebug() << "KelvoSelectItemsDialog::KelvoSelectItemsDialog";
    setWindowTitle(title);
    setupUi(this);
    for (QListWidget *list : {m_availableItemsList, m_selectedItemsList})
        ListViews::keepCurrentHighlighted(list);
    connect(m_availableItemsList, SIGNAL(itemClicked(QListWidgetItem *)), this,
        SLOT(selectItem(QListWidgetItem *)));
    connect(m_selectedItemsList, SIGNAL(itemClicked(QListWidgetItem *)), this,
        SLOT(deSelectItem(QListWidgetItem *)));
    connect(m_loadButton, SIGNAL(clicked()), this, SLOT(loadItem()));
    connect(m_unloadButton, SIGNAL(clicked()), this, SLOT(unloadItem()));
    connect(m_doneButton, SIGNAL(clicked()), this, SLOT(accept()));
}

KelvoSelectItemsDialog::~KelvoSelectItemsDialog()
{
    qDebug() << "KelvoSelectItemsDialog::~KelvoSelectItemsDialog";
}

void KelvoSelectItemsDialog::setAvailableItems(const QList<QListWidgetItem *> &items, bool useItemNames)
{
    // The text itself, not the name of this function: logs are compared with it.
    qDebug() << "__PRETTY_FUNCTION__";
    fill(m_availableItemsList, items, useItemNames);
    for (int row = 0; row < m_selectedItemsList->count(); ++row)
        removeSameItems(m_availableItemsList, m_selectedItemsList->item(row));
}

void KelvoSelectItemsDialog::setSelectedItems(const QList<QListWidgetItem *> &items, bool useItemNames)
{
    qDebug() << "KelvoSelectItemsDialog::setSelectedItems";
    fill(m_selectedItemsList, items, useItemNames);
}

QList<QListWidgetItem *> KelvoSelectItemsDialog::selectedItems()
{
    qDebug() << "KelvoSelectItemsDialog::selectedItems";
    QList<QListWidgetItem *> items;
    for (int row = 0; row < m_selectedItemsList->count(); ++row)
        items.append(m_selectedItemsList->item(row));
    return items;
}

QString KelvoSelectItemsDialog::getItemNameFromFilename(const QString &fileName)
{
    qDebug() << "KelvoSelectItemsDialog::getItemNameFromFilename";
    return fileName.section(QLatin1Char('/'), -1).section(QLatin1Char('.'), 0, 0);
}

void KelvoSelectItemsDialog::selectItem(QListWidgetItem *item)
{
    qDebug() << "KelvoSelectItemsDialog::selectItem";
    m_availableItemsList->setCurrentItem(item);
}

void KelvoSelectItemsDialog::deSelectItem(QListWidgetItem *item)
{
    qDebug() << "KelvoSelectItemsDialog::deSelectItem";
    m_selectedItemsList->setCurrentItem(item);
}

void KelvoSelectItemsDialog::loadItem()
{
    qDebug() << "KelvoSelectItemsDialog::loadItem";
    moveCurrentItem(m_availableItemsList, m_selectedItemsList);
}

void KelvoSelectItemsDialog::unloadItem()
{
    qDebug() << "KelvoSelectItemsDialog::unloadItems";
    moveCurrentItem(m_selectedItemsList, m_availableItemsList);
}

void KelvoSelectItemsDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    // The toolkit puts the program's name into the title bar of a window without a title; this one stays empty.
    windowHandle()->setTitle(QStringLiteral(" "));
}
