// SPDX-License-Identifier: MIT
#pragma once

#include "ui_SelectSourcesDialog.h"

#include <QDialog>
#include <QList>

class KelvoSource;
class QCheckBox;

/// Lets the user check some of the framework's sources.
class KelvoSourceDialog : public QDialog, private Ui::SelectSourcesDialog
{
    Q_OBJECT
public:
    explicit KelvoSourceDialog(QWidget *parent);
    ~KelvoSourceDialog() override;

    /// One check box for each source, in place of the earlier ones; `selected` has one entry for each source. The
    /// sources are not kept.
    void setSources(const QList<KelvoSource *> &sources, const QList<bool> &selected);
    /// Which boxes are checked, in the order of the sources.
    QList<bool> selectedSources() const;
    /// The names beside the boxes that are checked.
    QStringList selectedSourceNames() const;

private:
    QGridLayout *m_checkBoxLayout;
    QList<QCheckBox *> m_checkBoxes;
};
