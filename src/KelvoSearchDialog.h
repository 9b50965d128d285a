// SPDX-License-Identifier: MIT
#pragma once

#include "ui_SearchDialog.h"

#include <QDialog>

class QInputContext;

/// Asks for a term to search for and for the kind of item that is wanted.
class KelvoSearchDialog : public QDialog, private Ui::SearchDialog
{
    Q_OBJECT
public:
    /// The input context serves the term's line edit; not owned, null when there is none.
    KelvoSearchDialog(QInputContext *inputContext, QWidget *parent);
    ~KelvoSearchDialog() override;

    /// Back to the proposed term and kind.
    void clear();
    QString searchTerm() const;
    /// 0 album, 1 artist, 2 file name, 3 music piece, 4 video, 5 free text
    int searchItem() const;
};
