// SPDX-License-Identifier: MIT
#pragma once

#include "GupnpHandles.h"

#include <QtGlobal>

#include <list>

/// What the HTTP server of one network interface puts up with. It is there for the devices of that network, who send
/// events and fetch files, but anybody may connect to it. UPnP thread.
///
/// - A request comes from the network that the server faces, from this computer, or not at all (403).
/// - It names the server by its address (403): a web page that gives its own name this address gets nothing.
/// - It is here within `asking`, whatever its sender makes of that, and has at most `body` bytes: far more than an event
///   needs, as it should be told what is wrong with a long one.
/// - Of more connections than `connections` the one goes that has waited longest without a whole request.
class ServerGuard
{
public:
    struct Limits
    {
        size_t connections = 256;
        int asking = 10'000; ///< milliseconds from the connection to the last byte of the request
        qint64 body = 16 * 1024 * 1024; ///< bytes
        qint64 bodies = 64 * 1024 * 1024; ///< bytes of all requests that are being taken in
    };

    /// From now on, for as long as the server lives; of further calls for the same context the first one counts.
    static void keep(GUPnPContext *context);
    static void keep(GUPnPContext *context, const Limits &limits);

    Q_DISABLE_COPY_MOVE(ServerGuard)

private:
    struct Visit;

    ServerGuard(GUPnPContext *context, const Limits &limits);
    ~ServerGuard();
    static void started(SoupServer *server, SoupServerMessage *message, void *self);
    static void ended(SoupServer *server, SoupServerMessage *message, void *self);
    static int ticked(void *self);

    qint64 taken() const;
    void makeRoom();
    void keepTime();
    void tick();

    GSSDPClient *const m_network; // owns the server, and so this object
    const Limits m_limits;
    std::list<Visit *> m_visits; // in the order of their coming; each belongs to its message
    GlibHandles::Source m_ticks; // while there are any
};
