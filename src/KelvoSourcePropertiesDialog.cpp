// SPDX-License-Identifier: MIT
#include "KelvoSourcePropertiesDialog.h"

#include "ComboLabels.h"
#include "KelvoSource.h"
#include "ListViews.h"

#include <QDebug>

KelvoSourcePropertiesDialog::KelvoSourcePropertiesDialog(QWidget *parent)
    : QDialog(parent)
{
    qDebug() << "KelvoSourcePropertiesDialog::KelvoSourcePropertiesDialog";
    setupUi(this);
    ComboLabels::add(this);
    connect(m_doneButton, SIGNAL(clicked()), this, SLOT(accept()));
    connect(m_signInButton, SIGNAL(clicked()), this, SIGNAL(signIn()));
    connect(m_signOutButton, SIGNAL(clicked()), this, SIGNAL(signOut()));
    // The field is emptied before the new source is asked: its lines must not be taken away again.
    connect(m_sourceCombo, SIGNAL(currentTextChanged(QString)), m_propertiesField, SLOT(clear()));
    connect(m_sourceCombo, SIGNAL(currentTextChanged(QString)), this, SIGNAL(getProperties(QString)));
}

KelvoSourcePropertiesDialog::~KelvoSourcePropertiesDialog()
{
    qDebug() << "KelvoSourcePropertiesDialog::~KelvoSourcePropertiesDialog";
}

void KelvoSourcePropertiesDialog::setSources(const QList<KelvoSource *> &sources)
{
    qDebug() << "KelvoSourcePropertiesDialog::setSources";
    m_sourceCombo->clear();
    for (const KelvoSource *source : sources)
        m_sourceCombo->addItem(source->name());
}

void KelvoSourcePropertiesDialog::addProperty(const QString &key, const QString &value)
{
    qDebug() << "KelvoSourcePropertiesDialog::addProperty";
    ListViews::appendLine(m_propertiesField, key, value);
}
