// SPDX-License-Identifier: MIT
#pragma once

#include "VideoOutput.h"

#include <QObject>
#include <QTimer>

/// The picture of what plays: where it is shown, when it has to be made anew, and what is taken of it when playback
/// pauses. Made and used on the engine thread.
class VideoPresenter : public QObject
{
    Q_OBJECT
public:
    /// `description`: a pipeline that takes the place of the usual output; may be empty.
    explicit VideoPresenter(const QString &description);

    VideoOutput &output() { return m_output; }

    /// The pictures to come are of another item, or of another pipeline.
    void beginItem();
    void endItem();

    /// Native id of the window around it (0: none) and the place in it, in its pixels. At another size redrawDue()
    /// follows.
    void place(uint window, const QRect &rectangle);
    /// redrawDue() follows once more.
    void redrawLater() { m_redrawTimer.start(); }
    /// An item with pictures has prerolled.
    void noteColorKey();

    /// Whether a picture is taken at each pause.
    void setTakesFrames(bool takes);
    /// Playback has come to this: to a pause, of which a picture is due, or on from there.
    void notePause(bool paused) { m_isFrameDue = paused && m_takesFrames; }
    /// Playback is at rest: the picture on the screen, once; null when none is due.
    VideoFrame takeDueFrame();

Q_SIGNALS:
    /// The picture has another size than before. While playing the next one has the new size; while paused there is no
    /// next one.
    void redrawDue();
    /// The colour, 0xRRGGBB, that the output needs around it; 0: none.
    void colorKeyChanged(uint color);

private:
    VideoOutput m_output;
    QTimer m_redrawTimer;
    uint m_colorKey = 0;
    bool m_takesFrames = false;
    bool m_isFrameDue = false;
};
