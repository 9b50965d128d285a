// SPDX-License-Identifier: MIT
#pragma once

#include "GupnpHandles.h"

#include <QString>

#include <memory>

/// Lets one renderer fetch a file of this computer by HTTP, with ranges. UPnP thread.
///
/// The server is the one that GUPnP runs on the network interface that faces the renderer; it listens on that address
/// only, and a ServerGuard bounds it. One file at a time is there, the one that the renderer was told last, under a path that
/// nobody can guess: the file that was there when it was told, whatever its name leads to later. GET and HEAD only.
class FileHost
{
public:
    /// @param patience  milliseconds that a reader of a file that is no longer offered may stand still
    explicit FileHost(int patience = 30'000);
    ~FileHost();
    Q_DISABLE_COPY_MOVE(FileHost)

    /// The address to give to the renderer; the file offered before is taken back. What is no file of this computer
    /// stays as it is. The file need not exist: its renderer will be told so.
    QString offer(GUPnPContext *context, const QString &url);

private:
    struct Offer;

    static void asked(
        SoupServer *server, SoupServerMessage *message, const char *path, GHashTable *query, void *data);
    void takeBack();

    const int m_patience;
    GlibHandles::Object<GUPnPContext> m_context;
    std::shared_ptr<const Offer> m_offer; // null: none
};
