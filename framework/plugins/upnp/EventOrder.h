// SPDX-License-Identifier: MIT
#pragma once

#include "GupnpHandles.h"

#include <QByteArray>
#include <QHash>

#include <vector>

/// Gives GUPnP the events of a subscription only when it knows that subscription.
///
/// A device may be quicker with its first event than with the answer that tells the subscription's identifier, or they
/// come at once. GUPnP 1.6.3 drops such an event, takes the next one for a gap in their numbers, and subscribes anew,
/// which begins the same race: with a quick device it loses every event. It also finds gaps in what is still on its way
/// from a subscription that it has given up.
///
/// So an event waits for the answer to its subscription, and one of another subscription is refused (412), as the
/// standard wants it.
class EventOrder
{
public:
    /// For as long as the server lives; before the first subscription. Asked for again, nothing more happens.
    /// Thread of both.
    static void keep(SoupSession *session, SoupServer *server);

    ~EventOrder();
    Q_DISABLE_COPY_MOVE(EventOrder)

private:
    /// What comes to one path.
    struct Subscription
    {
        SoupMessage *question = nullptr; // under way; null: answered. Not owned
        QByteArray id = {};
    };
    struct Waiting
    {
        GlibHandles::Object<SoupServerMessage> event;
        QByteArray path;
    };

    explicit EventOrder(SoupSession *session);
    static EventOrder *of(SoupServer *server);
    static void asked(SoupSession *session, SoupMessage *message, void *self);
    static void answered(SoupSession *session, SoupMessage *message, void *self);
    static void eventBegins(SoupServer *server, SoupServerMessage *event, void *self);
    static void headersCame(SoupServerMessage *event, SoupServer *server);
    static void eventEnded(SoupServerMessage *event, SoupServer *server);
    static int releaseAnswered(void *self);
    static int releaseAll(void *self);
    void judge(SoupServerMessage *event);
    void refuseOther(SoupServerMessage *event, const QByteArray &path) const;
    void forget(const QByteArray &id);
    void release(bool isLate);

    const GlibHandles::Object<SoupSession> m_session;
    QHash<QByteArray, Subscription> m_subscriptions; // by path
    std::vector<Waiting> m_waiting;
    GlibHandles::Source m_release;
    GlibHandles::Source m_limit;
};
