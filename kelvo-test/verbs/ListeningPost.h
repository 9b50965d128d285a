// SPDX-License-Identifier: MIT
#pragma once

#include "Ear.h"
#include "EarSink.h"
#include "card/SenseRow.h"

#include <QList>

class Session;

/// Where a verb listens to what renderers play: the ear, and the sink that is made for it where the tester wants one. GUI
/// thread.
class ListeningPost
{
public:
    /// Before the back ends start. False, with the reason, where nothing can be heard.
    /// @param device  a source of the sound server; "auto": the monitor of a sink that is made
    bool prepare(const QString &device, QString *error);
    /// Listens from now on; the same.
    bool listen(Session &session, QString *error);
    const Ear &ear() const { return m_ear; }

    /// Plays media with a clock on a renderer, and sets what it says beside what is heard. Nothing where it has gone.
    QList<SenseRow> compare(Session &session, const QString &uuid);

private:
    /// How well the ear hears here: so far off is what it measures from now on.
    SenseRow calibrate(Session &session, const QUrl &medium);

    EarSink m_sink;
    QString m_device;
    Ear m_ear;
};
