// SPDX-License-Identifier: MIT
#pragma once

#include "MprisAddress.h"

#include <QElapsedTimer>
#include <QObject>

/// Whether a player answers (org.freedesktop.DBus.Peer.Ping). Also a refusal is a sign of life.
class MprisPings : public QObject
{
    Q_OBJECT
public:
    explicit MprisPings(MprisAddress address, QObject *parent = nullptr);

    /// Unless one is under way.
    void ping();
    /// The last one is some time ago.
    bool isDue() const;
    /// It has answered something else.
    void noteLife() { m_lastLife.start(); }
    /// It has answered nothing for long.
    bool isSilent() const;

Q_SIGNALS:
    void answered();

private:
    const MprisAddress m_address;
    bool m_isUnderWay = false;
    QElapsedTimer m_lastLife;
    QElapsedTimer m_lastPing;
};
