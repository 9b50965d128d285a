// SPDX-License-Identifier: MIT
#include "KelvoPlaylistDialog.h"

#include "platform/QInputContext.h"

#include <QDebug>

KelvoPlaylistDialog::KelvoPlaylistDialog(QInputContext *inputContext, QWidget *parent)
    : QDialog(parent)
{
    qDebug() << "KelvoPlaylistDialog::KelvoPlaylistDialog";
    setupUi(this);
    if (inputContext)
        inputContext->attach(m_nameEdit);
    connect(m_okButton, SIGNAL(clicked()), this, SLOT(accept()));
    connect(m_cancelButton, SIGNAL(clicked()), this, SLOT(reject()));
}

KelvoPlaylistDialog::~KelvoPlaylistDialog()
{
    qDebug() << "KelvoPlaylistDialog::~KelvoPlaylistDialog";
}

void KelvoPlaylistDialog::setText(const QString &name)
{
    qDebug() << "KelvoPlaylistDialog::setText";
    m_nameEdit->setText(name);
}

QString KelvoPlaylistDialog::text() const
{
    qDebug() << "KelvoPlaylistDialog::text";
    return m_nameEdit->text();
}
