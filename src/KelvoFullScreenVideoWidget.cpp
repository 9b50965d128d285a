// SPDX-License-Identifier: MIT
#include "KelvoFullScreenVideoWidget.h"

#include <QMouseEvent>
#include <QPalette>

KelvoFullScreenVideoWidget::KelvoFullScreenVideoWidget(QWidget *parent)
    : QWidget(parent)
{
    QPalette black = palette();
    black.setColor(QPalette::Window, QColor(0, 0, 0, 255));
    setPalette(black);
    setAutoFillBackground(false);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setCursor(Qt::BlankCursor);
}

void KelvoFullScreenVideoWidget::setVisible(bool visible)
{
    setAttribute(Qt::WA_PaintOnScreen, visible);
    QWidget::setVisible(visible);
}

void KelvoFullScreenVideoWidget::mousePressEvent(QMouseEvent *event)
{
    Q_EMIT screenTapped();
    event->accept();
}
