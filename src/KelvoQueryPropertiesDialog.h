// SPDX-License-Identifier: MIT
#pragma once

#include "ui_QueryPropertiesDialog.h"

#include <QDialog>

/// Asks for the two block sizes of tracker queries. Opens with what its fields held last, at first 0 and 0, not
/// with the sizes in use.
class KelvoQueryPropertiesDialog : public QDialog, private Ui::QueryPropertiesDialog
{
    Q_OBJECT
public:
    explicit KelvoQueryPropertiesDialog(QWidget *parent);
    ~KelvoQueryPropertiesDialog() override;

public Q_SLOTS:
    void accept() override;

Q_SIGNALS:
    /// Rows; 0 means no limit. Comes twice for each Ok.
    void queryPropertiesChanged(int firstBlockSize, int streamBlockSize);
};
