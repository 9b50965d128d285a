// SPDX-License-Identifier: MIT
#pragma once

#include "ItemFileReader.h"
#include "ItemIntake.h"
#include "PeerCalls.h"

#include <QElapsedTimer>
#include <QTimer>

class QDBusError;

/// Reads the items of another process's playlist, and again whenever they have changed.
///
/// One pass reads the first page and then a file with the whole list; or one page after the other to the first empty
/// one, where no file can be had. One request is under way at a time, and a file is read slice by slice. The first
/// pass hands its items on as they come, later ones hand over the whole list, so that nothing vanishes from view
/// meanwhile. All bounds hold whatever the other process does: waiting, tries, items, characters and passes in a
/// second.
class ItemLoader : public QObject
{
    Q_OBJECT
public:
    /// @param calls     to the process, shared with its other lists; nothing is read when they have gone
    /// @param revision  of the list when it was announced
    ItemLoader(PeerCalls *calls, QString path, uint revision, QObject *parent = nullptr);

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

    struct Pass
    {
        uint revision = 0;
        ItemIntake intake;
        SharedItems staged; // Of a later pass, until it is complete.
        std::unique_ptr<ItemFileReader> file;
        int attempt = 1;
        QElapsedTimer clock;
    };

    void schedulePass();
    void restartLater();
    void startPass();
    void requestMore();
    void requestPage();
    void requestFile();
    void handlePage(const QDBusMessage &reply, uint asked);
    void takePage(SharedItems items);
    void handleFile(const QDBusMessage &reply);
    void handleError(const QDBusError &error);
    void handleSilence();
    void readSlice();
    bool checkRevision(uint revision);
    bool isOfPass(uint revision);
    void show(const SharedItems &items);
    void endPass();
    void cutPass();
    void finishPass();
    void giveUp(const QString &why);
    void breakOff(const QString &reason);

    const QPointer<PeerCalls> m_calls;
    const QString m_path;
    State m_state = State::Unused;
    bool m_hasFiles; // Until the owner turns out to give none.
    bool m_firstPass = true;
    uint m_newestRevision;
    Pass m_pass;
    QTimer m_nextPass;
    QTimer m_nextSlice;
    int m_pause = 0;
    bool m_saidStalled = false; // Since the last pass that came to its end.
};
