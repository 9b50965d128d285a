// SPDX-License-Identifier: MIT
#pragma once

#include "GstHandles.h"
#include "IdleCapsCache.h"
#include "OutputFallbacks.h"
#include "VideoFrameTap.h"
#include "VideoWindow.h"

#include <QObject>
#include <QRect>
#include <QString>

#include <atomic>
#include <memory>

/// Where the picture goes: into a window of its own within the window that it is given. Engine thread.
class VideoOutput : public QObject
{
    Q_OBJECT
public:
    /// `description`: a pipeline that takes the place of the usual output; may be empty.
    explicit VideoOutput(const QString &description);
    ~VideoOutput() override;

    using Pictures = OutputFallbacks::Pictures;
    /// The output of a new pipeline. Without an X server, or with None, it shows nothing but keeps the time.
    GstHandles::Element makeSink(Pictures pictures);
    /// Whether it shows by the display's video adaptor, of its own choice.
    bool choseAdaptor() const { return m_choseAdaptor; }
    /// What shows, as text for a tester: the name of the output, or "no video output".
    QString describe() const;

    /// Native id of the window around it (0: none) and the place in it, in its pixels. True when the picture has
    /// another size than before and has to be made anew.
    bool place(uint parent, const QRect &rectangle);
    void setShown(bool shown);
    /// Whether the output may paint the colour key itself. Counts from the next makeSink() on.
    void setAutopaint(bool autopaint) { m_autopaint = autopaint; }
    /// 0xRRGGBB: the colour that overlay hardware replaces by the picture; 0: none needed.
    uint colorKey() const;

    /// Whether frame() has something to give.
    void setKeepsFrames(bool keeps);
    /// The picture that was last given to the output; null when there is none.
    VideoFrame frame() const;
    void forgetFrame();
    /// After a failure: what the output accepts may have changed while it was closed.
    void forgetCaps();
    /// How many pictures were shown and how many came too late, into the log.
    void logStatistics() const;

    /// Any thread, at any time: id of the window that the output draws into.
    using WindowId = std::shared_ptr<std::atomic<uint>>;
    WindowId windowId() const { return m_windowId; }
    /// Any thread: answers the question of an output which window it is to draw into. False for other messages.
    static bool answer(GstMessage *message, const WindowId &window);

private:
    using Adaptor = VideoWindow::Adaptor;
    void openWindow();
    void useWindow();
    void redraw();

    const QString m_description;
    const WindowId m_windowId;
    std::shared_ptr<VideoFrameTap> m_tap;
    std::shared_ptr<IdleCapsCache> m_caps; ///< of the sink
    std::unique_ptr<VideoWindow> m_window;
    GstHandles::Element m_sink;
    uint m_parent = 0;
    QRect m_rectangle;
    bool m_placeDue = false; ///< the window was found gone when it was to be put there
    bool m_shown = false;
    bool m_autopaint = true;
    Adaptor m_adaptor = Adaptor::None; ///< of the display that the window is on
    bool m_choseAdaptor = false;
};
