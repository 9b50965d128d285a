// SPDX-License-Identifier: MIT
#include "KelvoVolumeDialog.h"

#include "FocusKeys.h"
#include "KelvoRenderer.h"

#include <QDebug>

KelvoVolumeDialog::KelvoVolumeDialog(QWidget *parent)
    : QDialog(parent)
{
    setupUi(this);
    FocusKeys::startAt(m_volumeSlider);
    connect(m_doneButton, SIGNAL(clicked()), this, SLOT(accept()));
    connect(m_upButton, SIGNAL(clicked()), this, SLOT(increase()));
    connect(m_downButton, SIGNAL(clicked()), this, SLOT(decrease()));
    connect(m_volumeSlider, SIGNAL(valueChanged(int)), this, SLOT(updateVolumeField(int)));
    qDebug() << "KelvoVolumeDialog::KelvoVolumeDialog";
}

void KelvoVolumeDialog::setRange(int minimum, int maximum)
{
    qDebug() << "KelvoVolumeDialog::setRange";
    m_volumeSlider->setRange(minimum, maximum);
}

void KelvoVolumeDialog::setVolume(int volume, KelvoRenderer *renderer)
{
    qDebug() << "KelvoVolumeDialog::setVolume";
    m_renderer = renderer;
    m_volumeSlider->setValue(volume);
}

int KelvoVolumeDialog::volume() const
{
    qDebug() << "KelvoVolumeDialog::volume";
    return m_volumeSlider->value();
}

void KelvoVolumeDialog::increase()
{
    qDebug() << "KelvoVolumeDialog::increase" << m_volumeSlider->value();
    m_volumeSlider->setValue(m_volumeSlider->value() + m_volumeSlider->singleStep());
}

void KelvoVolumeDialog::decrease()
{
    qDebug() << "KelvoVolumeDialog::decrease" << m_volumeSlider->value();
    m_volumeSlider->setValue(m_volumeSlider->value() - m_volumeSlider->singleStep());
}

void KelvoVolumeDialog::updateVolumeField(int value)
{
    qDebug() << "KelvoVolumeDialog::updateVolumeField" << value;
    m_volumeField->setText(QStringLiteral("%1").arg(value));
    if (m_renderer)
        m_renderer->setKelvoProperty(KelvoRenderer::PropertyVolume, value);
}
