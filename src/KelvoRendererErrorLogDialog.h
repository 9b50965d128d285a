// SPDX-License-Identifier: MIT
#pragma once

#include "ui_RendererErrorLogDialog.h"

#include <QDialog>

/// Collects the errors of renderers, one line each, until the user clears them.
class KelvoRendererErrorLogDialog : public QDialog, private Ui::RendererErrorLogDialog
{
    Q_OBJECT
public:
    explicit KelvoRendererErrorLogDialog(QWidget *parent);

    void appendError(uint code, const QString &text);
};
