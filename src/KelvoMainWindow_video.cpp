// SPDX-License-Identifier: MIT
#include "KelvoMainWindow.h"

#include "KelvoFullScreenVideoWidget.h"

#include <QApplication>
#include <QDebug>
#include <QMouseEvent>

uint KelvoMainWindow::getVideoXID() const
{
    qDebug() << "KelvoMainWindow::getVideoXID";
    if (m_videoFullScreen)
        return uint(m_fullScreenVideoWidget->winId());
    // None any more while the window is closing; renderers may still come then.
    const QWidget *native = m_video_videoLabel->nativeParentWidget();
    return native ? uint(native->winId()) : 0;
}

QRect KelvoMainWindow::getVideoRectangle() const
{
    qDebug() << "KelvoMainWindow::getVideoRectangle";
    const QRect label = m_video_videoLabel->geometry();
    const qreal ratio = m_video_videoLabel->devicePixelRatioF();
    return {(QPointF(label.topLeft()) * ratio).toPoint(), (QSizeF(label.size()) * ratio).toSize()};
}

void KelvoMainWindow::watchVideoRectangle(QObject *filter)
{
    m_video_videoLabel->installEventFilter(filter);
}

void KelvoMainWindow::setVideoLabelColorKey(uint key)
{
    qDebug() << "void KelvoMainWindow::setVideoLabelColorKey(uint)";
    constexpr qsizetype digits = 6;
    const QString hex = QString::number(key, 16);
    if (hex.size() > digits)
        qWarning() << "Illegal colorkey value:" << key;
    if (key == 0 || hex.size() > digits) {
        m_video_videoLabel->setPalette(QApplication::palette());
        return;
    }
    QPalette palette = m_video_videoLabel->palette();
    palette.setColor(
        QPalette::Window, QColor(QLatin1Char('#') + hex.rightJustified(digits, QLatin1Char('0'))));
    m_video_videoLabel->setPalette(palette);
    m_video_videoLabel->setAutoFillBackground(true);
}

void KelvoMainWindow::hideFullScreenVideo()
{
    qDebug() << "KelvoMainWindow::hideFullScreenVideo";
    Q_ASSERT(m_videoFullScreen);
    m_videoFullScreen = false;
    setUpdatesEnabled(true);
    m_fullScreenVideoWidget->setVisible(false);
    Q_EMIT videoScreenXIDChanged(uint(m_video_videoLabel->winId()));
}

void KelvoMainWindow::mousePressEvent(QMouseEvent *event)
{
    if (m_tabs->currentWidget() == tab_video) {
        qDebug() << "KelvoMainWindow::mousePressEvent";
        // A tap on the video is recognised and left without effect: nothing in the window enters full screen.
        if (!m_videoFullScreen)
            static_cast<void>(childAt(event->pos()) == m_video_videoLabel);
    }
    QMainWindow::mousePressEvent(event);
}
