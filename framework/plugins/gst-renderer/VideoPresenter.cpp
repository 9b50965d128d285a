// SPDX-License-Identifier: MIT
#include "VideoPresenter.h"

#include <utility>

namespace {
constexpr int redrawDelay = 40; // milliseconds: windows are resized in many small steps
} // namespace

VideoPresenter::VideoPresenter(const QString &description)
    : m_output(description)
{
    m_redrawTimer.setSingleShot(true);
    m_redrawTimer.setInterval(redrawDelay);
    connect(&m_redrawTimer, &QTimer::timeout, this, &VideoPresenter::redrawDue);
}

void VideoPresenter::beginItem()
{
    m_output.forgetFrame();
    m_isFrameDue = false;
}

void VideoPresenter::endItem()
{
    m_redrawTimer.stop();
    m_output.logStatistics();
}

void VideoPresenter::place(uint window, const QRect &rectangle)
{
    if (m_output.place(window, rectangle))
        redrawLater();
}

void VideoPresenter::noteColorKey()
{
    const uint key = m_output.colorKey();
    if (std::exchange(m_colorKey, key) != key)
        Q_EMIT colorKeyChanged(key);
}

void VideoPresenter::setTakesFrames(bool takes)
{
    m_takesFrames = takes;
    m_output.setKeepsFrames(takes);
}

VideoFrame VideoPresenter::takeDueFrame()
{
    return std::exchange(m_isFrameDue, false) ? m_output.frame() : nullptr;
}
