// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

class KelvoRegistry;

/// Has what the command line names play before the tracker store is opened, which nobody who plays waits for, but which takes an
/// eighth of all that is computed until then. The store opens when a renderer plays, or two seconds later (see
/// KelvoTrackerModelFactory::holdBack()). GUI thread.
class PlayFirst : public QObject
{
public:
    /// Begins; before the first renderer is there.
    explicit PlayFirst(KelvoRegistry *registry);
    /// Ends it, if nothing else has.
    ~PlayFirst() override;

private:
    void follow(const QString &uuid);
    void end();

    KelvoRegistry *const m_registry;
    bool m_isOver = false;
};
