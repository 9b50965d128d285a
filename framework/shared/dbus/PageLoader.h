// SPDX-License-Identifier: MIT
#pragma once

#include "PageTurns.h"
#include "PlaylistProtocol.h"

#include <QDBusConnection>
#include <QElapsedTimer>
#include <QObject>
#include <QSet>
#include <QTimer>

class QDBusPendingCallWatcher;

/// Where a playlist of another process is reached.
struct PlaylistAddress
{
    QDBusConnection connection;
    QString owner; ///< unique bus name of the process
    QString path;
    int timeout; ///< milliseconds that each call may take
};

/// Reads the items of another process's playlist, page by page, and again whenever they have changed.
///
/// One pass reads from item 0 to the first empty page; one request is under way at a time. The first pass
/// hands its pages on as they come, later ones hand over the whole list, so that nothing vanishes from view
/// meanwhile. All bounds hold whatever the other process does: waiting, tries, items, characters and passes
/// in a second.
class PageLoader : public QObject
{
    Q_OBJECT
public:
    /// @param turns     shared with the other lists of that process
    /// @param revision  of the list when it was announced
    PageLoader(PlaylistAddress address, PageTurns *turns, uint revision, QObject *parent = nullptr);
    ~PageLoader() override;

    /// Somebody wants the items. Nothing is read before the first call; later calls only make up for a pass
    /// that was given up because the process did not answer.
    void use();
    /// The owner says that its list is at this revision now.
    void noteRevision(uint revision);

Q_SIGNALS:
    /// The next items of the first pass.
    void itemsArrived(const SharedItems &items);
    /// All items.
    void itemsReplaced(const SharedItems &items);
    /// A pass ended with the list's own end, not with a bound of ours.
    void completed(uint revision, qsizetype items);
    /// The list stays as it is, but somebody should know.
    void complaint(const QString &text);
    /// The owner broke the protocol; nothing more is read.
    void broken(const QString &reason);

private:
    enum class State { Unused, Waiting, Reading, Settled, Stalled, Broken };

    void schedulePass();
    void restartLater();
    void startPass();
    void requestPage();
    void sendRequest();
    void endTurn();
    void handleReply(const QDBusPendingCallWatcher &call, uint asked);
    void handlePackedItems(const QVariantList &answer, uint asked);
    void handleItems(const QVariantList &answer, uint asked);
    void handleError(const QDBusError &error);
    void handleSilence();
    void handlePage(SharedItems items, uint revision);
    bool checkRevision(uint revision);
    void repair(SharedItems &items);
    bool withinBounds(SharedItems &items);
    void take(const SharedItems &items);
    void finishPass();
    void giveUp(const QString &why);
    void breakOff(const QString &reason);

    const PlaylistAddress m_address;
    const QPointer<PageTurns> m_turns;
    bool m_hasTurn = false;
    bool m_packed = true; // Until the owner turns out not to know the packed form.
    State m_state = State::Unused;
    uint m_newestRevision;
    uint m_passRevision = 0;
    bool m_firstPass = true;
    qsizetype m_received = 0;
    qsizetype m_characters = 0;
    SharedItems m_staged; // Of a later pass, until it is complete.
    QSet<QString> m_ids; // Of this pass.
    int m_attempt = 1;
    bool m_saidStalled = false; // Since the last pass that came to its end.
    QTimer m_nextPass;
    QElapsedTimer m_passClock;
    int m_pause = 0;
};
