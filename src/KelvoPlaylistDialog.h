// SPDX-License-Identifier: MIT
#pragma once

#include "ui_CreatePlaylistDialog.h"

#include <QDialog>

class QInputContext;

/// Asks for the name of a new, empty playlist.
class KelvoPlaylistDialog : public QDialog, private Ui::CreatePlaylistDialog
{
    Q_OBJECT
public:
    /// The input context serves the name's line edit; not owned, null when there is none.
    KelvoPlaylistDialog(QInputContext *inputContext, QWidget *parent);
    ~KelvoPlaylistDialog() override;

    void setText(const QString &name);
    QString text() const;
};
