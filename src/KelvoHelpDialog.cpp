// SPDX-License-Identifier: MIT
#include "KelvoHelpDialog.h"

#include <QDebug>

KelvoHelpDialog::KelvoHelpDialog(QWidget *parent)
    : QDialog(parent)
{
    qDebug() << "KelvoHelpDialog::KelvoHelpDialog";
    setupUi(this);
    connect(m_closeButton, SIGNAL(clicked()), this, SLOT(accept()));
}

KelvoHelpDialog::~KelvoHelpDialog()
{
    qDebug() << "KelvoHelpDialog::~KelvoHelpDialog";
}
