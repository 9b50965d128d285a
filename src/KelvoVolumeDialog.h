// SPDX-License-Identifier: MIT
#pragma once

#include "ui_VolumeDialog.h"

#include <QDialog>
#include <QPointer>

class KelvoRenderer;

/// Adjusts the volume of one renderer: every movement of the slider is sent at once.
class KelvoVolumeDialog : public QDialog, private Ui::VolumeDialog
{
    Q_OBJECT
public:
    explicit KelvoVolumeDialog(QWidget *parent);

    void setRange(int minimum, int maximum);
    /// The slider takes the value as far as its range (0..99) allows; a value that moves it is sent to the
    /// renderer. The renderer may be null, is not owned and may vanish.
    void setVolume(int volume, KelvoRenderer *renderer);
    int volume() const;

public Q_SLOTS:
    void increase();
    void decrease();
    void updateVolumeField(int value);

private:
    QPointer<KelvoRenderer> m_renderer;
};
