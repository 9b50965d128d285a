// SPDX-License-Identifier: MIT
#include "KelvoRendererErrorLogDialog.h"

#include "Announcer.h"
#include "ListViews.h"

#include <QDebug>
#include <QScrollBar>

KelvoRendererErrorLogDialog::KelvoRendererErrorLogDialog(QWidget *parent)
    : QDialog(parent)
{
    qDebug() << "KelvoRendererErrorLogDialog::KelvoRendererErrorLogDialog";
    setupUi(this);
    connect(m_clearButton, SIGNAL(clicked()), m_errorLogField, SLOT(clear()));
    connect(m_okButton, SIGNAL(clicked()), this, SLOT(accept()));
}

void KelvoRendererErrorLogDialog::appendError(uint code, const QString &text)
{
    qDebug() << "KelvoRendererErrorLogDialog::appendError";
    const QString line = QStringLiteral("Code %1, %2").arg(QString::number(code), text);
    ListViews::appendLine(m_errorLogField, line);
    Announcer::say(this, line);
    QScrollBar *bar = m_errorLogField->verticalScrollBar();
    bar->setValue(bar->maximum());
}
