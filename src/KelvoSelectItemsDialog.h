// SPDX-License-Identifier: MIT
#pragma once

#include "ui_LoadPluginsDialog.h"

#include <QDialog>
#include <QList>

class QListWidgetItem;

/// Lets the user move entries between a list of what is available and a list of what is selected.
///
/// Entries show their text, or the short name of the file that it is; their data under Qt::UserRole tells which they
/// are. The lists own the items that they are given and keep them until they are filled anew, so that a caller can
/// compare items by identity after the dialog was run.
class KelvoSelectItemsDialog : public QDialog, private Ui::LoadPluginsDialog
{
    Q_OBJECT
public:
    /// The form replaces the title by its own, which is empty.
    KelvoSelectItemsDialog(const QString &title, QWidget *parent);
    ~KelvoSelectItemsDialog() override;

    /// To be called after setSelectedItems(): items that are selected already are deleted instead of shown.
    /// @param useItemNames  show getItemNameFromFilename() of the texts
    virtual void setAvailableItems(const QList<QListWidgetItem *> &items, bool useItemNames);
    virtual void setSelectedItems(const QList<QListWidgetItem *> &items, bool useItemNames);
    /// From the first row to the last. They still belong to the dialog.
    virtual QList<QListWidgetItem *> selectedItems();

    /// "/usr/lib/libfoo.so" is shown as "libfoo": the last part of the path up to its first dot.
    static QString getItemNameFromFilename(const QString &fileName);

public Q_SLOTS:
    void selectItem(QListWidgetItem *item);
    void deSelectItem(QListWidgetItem *item);
    void loadItem();
    void unloadItem();

protected:
    void showEvent(QShowEvent *event) override;
};
