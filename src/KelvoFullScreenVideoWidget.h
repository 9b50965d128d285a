// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

/// The surface for video on the whole screen: black, frameless, above all other windows. The renderer paints on
/// it; any press on it asks to go back to the window.
class KelvoFullScreenVideoWidget : public QWidget
{
    Q_OBJECT
public:
    explicit KelvoFullScreenVideoWidget(QWidget *parent);

    void setVisible(bool visible) override;

Q_SIGNALS:
    void screenTapped();

protected:
    void mousePressEvent(QMouseEvent *event) override;
};
