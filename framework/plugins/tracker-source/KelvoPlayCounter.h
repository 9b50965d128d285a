// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

class KelvoRegistry;
class KelvoRenderer;

/// Where playing meets the store. Counts the playings of songs: follows the renderers of a registry by their signals and tells the tracker store when
/// an item has been in state Playing for half of its duration or for four minutes, whichever is less. Pauses do not
/// count, nor does what seeking skips; an item that is played again counts again. GUI thread.
class KelvoPlayCounter : public QObject
{
    Q_OBJECT
public:
    explicit KelvoPlayCounter(KelvoRegistry *registry, QObject *parent = nullptr);
    ~KelvoPlayCounter() override;

    /// Milliseconds that an item of this duration in seconds (0: not known) has to play.
    static qint64 neededTime(int duration);

Q_SIGNALS:
    /// The item with this URL counts as played.
    void played(const QUrl &url);
    /// The renderer that plays the item with this URL says that it is so many seconds long.
    void lengthTold(const QUrl &url, int seconds);

private:
    void follow(KelvoRenderer *renderer);

    KelvoRegistry *const m_registry;
};
