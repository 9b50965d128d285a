// SPDX-License-Identifier: MIT
#pragma once

#include "GupnpHandles.h"

#include <QByteArray>
#include <QString>

class QUrl;

/// Lets one renderer fetch a file of this computer by HTTP, with ranges. UPnP thread.
///
/// The server is the one that GUPnP runs on the network interface that faces the renderer; it listens on that address
/// only. One file at a time is there, the one that the renderer was told last, under a path that nobody can guess.
class FileHost
{
public:
    FileHost() = default;
    ~FileHost();
    Q_DISABLE_COPY_MOVE(FileHost)

    /// The address to give to the renderer; the file offered before is taken back. What is no file of this computer
    /// stays as it is. The file need not exist: its renderer will be told so.
    QString offer(GUPnPContext *context, const QString &url);

private:
    void takeBack();

    GlibHandles::Object<GUPnPContext> m_context;
    QString m_url; ///< of the file offered
    QByteArray m_path; ///< of the server; empty: none
};
