// SPDX-License-Identifier: MIT
#pragma once

#include "ui_HelpDialog.h"

#include <QDialog>

/// Shows the help page, which is part of the form.
class KelvoHelpDialog : public QDialog, private Ui::HelpDialog
{
    Q_OBJECT
public:
    explicit KelvoHelpDialog(QWidget *parent);
    ~KelvoHelpDialog() override;
};
