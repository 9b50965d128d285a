// SPDX-License-Identifier: MIT
#include "KelvoSearchDialog.h"

#include "ComboLabels.h"
#include "platform/QInputContext.h"

#include <QDebug>

namespace {
const auto proposedTerm = QStringLiteral("Miriam Makeba");
constexpr int filenameItem = 2;
} // namespace

KelvoSearchDialog::KelvoSearchDialog(QInputContext *inputContext, QWidget *parent)
    : QDialog(parent)
{
    qDebug() << "KelvoSearchDialog::KelvoSearchDialog";
    setupUi(this);
    ComboLabels::add(this);
    if (inputContext)
        inputContext->attach(m_searchTermEdit);
    connect(m_executeButton, SIGNAL(clicked()), this, SLOT(accept()));
    connect(m_cancelButton, SIGNAL(clicked()), this, SLOT(reject()));
}

KelvoSearchDialog::~KelvoSearchDialog()
{
    qDebug() << "KelvoSearchDialog::~KelvoSearchDialog";
}

void KelvoSearchDialog::clear()
{
    qDebug() << "KelvoSearchDialog::clear";
    // An artist's name, and yet searched among file names: what testers know the dialog to open with.
    m_searchTermEdit->setText(proposedTerm);
    m_searchChoiseCombo->setCurrentIndex(filenameItem);
}

QString KelvoSearchDialog::searchTerm() const
{
    qDebug() << "KelvoSearchDialog::searchTerm";
    return m_searchTermEdit->text();
}

int KelvoSearchDialog::searchItem() const
{
    qDebug() << "KelvoSearchDialog::searchItem";
    return m_searchChoiseCombo->currentIndex();
}
