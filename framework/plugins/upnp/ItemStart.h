// SPDX-License-Identifier: MIT
#pragma once

#include "UpnpTypes.h"

#include <QElapsedTimer>
#include <QList>

#include <utility>

/// The way of an item from SetAVTransportURI until the device plays it.
///
/// Each way out of a refusal or a loss is tried once or a few times only, for each item.
class ItemStart
{
public:
    /// A new item. @param isStopSent  the device is stopped first
    void reset(bool isStopSent = false);

    /// A request that puts the item in, or starts it, is under way.
    void send() { m_isLoading = true; }
    bool isLoading() const { return m_isLoading; }
    /// False: of an item before.
    bool takeAnswer() { return std::exchange(m_isLoading, false); }
    /// Play was accepted.
    void accept();
    /// Accepted, and has not played yet.
    bool isStarting() const { return m_isStarting; }
    int playTries() const { return m_playTries; }
    void begin();
    /// It has stopped at once: it may still be on its way from the item before to this one. False: it did so before.
    bool doubt();
    bool isDoubted() const { return m_isDoubted; }
    /// Since the device has begun with the item.
    bool hasBegunWithin(int milliseconds) const;

    /// Some take no item while they play. False: a stop was tried.
    bool takeStopTry() { return !std::exchange(m_isStopTried, true); }
    /// Some cannot begin while they are still busy with the end of the item before. One that is given the item anew, after
    /// a stop, has had the time; what it refuses then it does not play.
    bool takeRefusalTry() { return !std::exchange(m_isRefusalTried, true); }

    /// The device has told what the item is.
    void setDescribed() { m_isDescribed = true; }
    bool isDescribed() const { return m_isDescribed; }
    /// An event may be quicker than the answer. What it tells of the item is not said again.
    /// @param trackUri  named last: what is not named has not changed
    void keepEarly(const Upnp::Report &report, const QString &trackUri);
    QList<Upnp::Report> takeEarly() { return std::exchange(m_early, {}); }

private:
    bool m_isLoading = false;
    bool m_isStarting = false;
    bool m_isDoubted = false;
    bool m_isStopTried = false;
    bool m_isRefusalTried = false;
    bool m_isDescribed = false;
    int m_playTries = 0;
    QElapsedTimer m_begun;
    QList<Upnp::Report> m_early;
};
