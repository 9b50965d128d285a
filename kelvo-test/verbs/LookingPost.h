// SPDX-License-Identifier: MIT
#pragma once

#include "Eye.h"
#include "card/SenseRow.h"

#include <QList>

class Ear;
class KelvoRenderer;
class Session;

/// Where a verb looks at what renderers show. GUI thread.
class LookingPost
{
public:
    /// Looks from now on; waits until it does. False, with the reason, where nothing can be seen.
    /// @param place  as of Eye::look()
    bool look(const QString &place, Session &session, QString *error);
    const Eye &eye() const { return m_eye; }

    /// Shows media with a clock on a renderer, and sets what it says beside what is seen. Nothing where it has gone.
    /// @param ear  hears it too; null: nobody does
    QList<SenseRow> compare(Session &session, const QString &uuid, const Ear *ear);

    /// A renderer shows what it plays in the window that the eye has made, until it is taken back; where none was made
    /// nothing changes. What it reports of that is no answer to a tester's command.
    static void lendWindow(const Eye &eye, KelvoRenderer *renderer);
    static void takeWindowBack(const Eye &eye, KelvoRenderer *renderer);

private:
    /// How well the eye sees here: so far off is what it measures from now on.
    SenseRow calibrate(Session &session, const QUrl &medium);

    Eye m_eye;
};
