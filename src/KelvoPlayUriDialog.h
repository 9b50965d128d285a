// SPDX-License-Identifier: MIT
#pragma once

#include "ui_PlayUriDialog.h"

#include <QDialog>

/// Lets the user choose one URI to play. Candidates come from a text file in the home directory, one per line,
/// read once; the user moves the wanted ones into a list and clicks one of them.
class KelvoPlayUriDialog : public QDialog, private Ui::PlayUriDialog
{
    Q_OBJECT
public:
    explicit KelvoPlayUriDialog(QWidget *parent);

    /// Appends one entry per line of the file, lines taken as they are, to the combo box. False, and nothing
    /// changed, when the file cannot be read.
    bool loadFile(const QString &fileName);

    /// The URI clicked last, also in an earlier opening; empty before the first click.
    QString uri() const;
    /// Whether the user says that the URI names a playlist file.
    bool isPlaylist() const;
    void addUri(const QString &uri);
    void clearUris();

public Q_SLOTS:
    void checkIfItemSelected();
    void addNewUriFromComboBox();
    void updateItemUri(QListWidgetItem *item);

private:
    QString m_uri;
};
