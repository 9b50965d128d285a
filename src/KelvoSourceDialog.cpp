// SPDX-License-Identifier: MIT
#include "KelvoSourceDialog.h"

#include "CheckFrames.h"
#include "KelvoSource.h"

#include <QCheckBox>
#include <QDebug>
#include <QGridLayout>

namespace {
constexpr int boxesInARow = 2;
constexpr int boxSpacing = 20;
} // namespace

KelvoSourceDialog::KelvoSourceDialog(QWidget *parent)
    : QDialog(parent)
{
    qDebug() << "KelvoSourceDialog::KelvoSourceDialog";
    setupUi(this);
    connect(m_doneButton, SIGNAL(clicked()), this, SLOT(accept()));
    connect(m_cancelButton, SIGNAL(clicked()), this, SLOT(reject()));
    m_checkBoxLayout = new QGridLayout(m_groupBox);
    m_checkBoxLayout->setHorizontalSpacing(boxSpacing);
    m_checkBoxLayout->setVerticalSpacing(boxSpacing);
}

KelvoSourceDialog::~KelvoSourceDialog()
{
    qDebug() << "KelvoSourceDialog::~KelvoSourceDialog";
}

void KelvoSourceDialog::setSources(const QList<KelvoSource *> &sources, const QList<bool> &selected)
{
    qDebug() << "KelvoSourceDialog::setSources";
    for (QCheckBox *box : std::as_const(m_checkBoxes)) {
        m_checkBoxLayout->removeWidget(box);
        delete box;
    }
    m_checkBoxes.clear();
    for (qsizetype i = 0; i < sources.size(); ++i) {
        auto *box = new QCheckBox(sources.at(i)->name(), this);
        CheckFrames::makeVisible(box);
        m_checkBoxes.append(box);
        m_checkBoxLayout->addWidget(box, int(i) / boxesInARow, int(i) % boxesInARow);
        box->setChecked(selected.at(i));
        // Made later than the buttons, they would be the last that Tab comes to.
        setTabOrder(i == 0 ? static_cast<QWidget *>(m_groupBox) : m_checkBoxes.at(i - 1), box);
    }
    if (!m_checkBoxes.isEmpty())
        m_checkBoxes.constFirst()->setFocus(Qt::TabFocusReason);
}

QList<bool> KelvoSourceDialog::selectedSources() const
{
    qDebug() << "KelvoSourceDialog::selectedSources";
    QList<bool> selected;
    for (const QCheckBox *box : m_checkBoxes)
        selected.append(box->isChecked());
    return selected;
}

QStringList KelvoSourceDialog::selectedSourceNames() const
{
    qDebug() << "KelvoSourceDialog::selectedSourceNames";
    QStringList names;
    for (const QCheckBox *box : m_checkBoxes) {
        if (box->isChecked())
            names.append(box->text());
    }
    return names;
}
