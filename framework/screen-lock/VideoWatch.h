// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoContent.h"
#include "KelvoRenderer.h"

#include <QObject>

#include <memory>
#include <unordered_map>

class KelvoRegistry;

/// Tells whether a video plays in a window of this process, from what the renderers report. GUI thread.
///
/// It does where a renderer that was given a window ("xid") has told the fact "video-output" with an output that shows
/// something, and plays. Songs, players elsewhere in the network and videos without an output are none.
class VideoWatch : public QObject
{
    Q_OBJECT
public:
    /// Not owned; must outlive this object.
    explicit VideoWatch(const KelvoRegistry *registry);
    ~VideoWatch() override;

    bool isShown() const { return m_isShown; }

Q_SIGNALS:
    void shownChanged(bool shown);

private:
    class Player;

    void follow(const QString &uuid);
    void forget(const QString &uuid);
    void update();

    const KelvoRegistry *const m_registry;
    std::unordered_map<QString, std::unique_ptr<Player>> m_players; ///< by uuid
    bool m_isShown = false;
};
