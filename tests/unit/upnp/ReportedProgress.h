// SPDX-License-Identifier: MIT
#pragma once

#include "ItemProgress.h"
#include "RemoteTransport.h"

/// The progress of a transport's item, as whoever is above the transport keeps it by the reports. Lives longer than the
/// transport is used.
class ReportedProgress : public QObject
{
public:
    explicit ReportedProgress(RemoteTransport *transport)
    {
        transport->setProgress(&item);
        connect(
            transport, &RemoteTransport::stateReported, this, [this](quint64, KelvoRenderer::State state) {
                if (state == KelvoRenderer::Transitioning)
                    item.begin();
                item.setRunning(state == KelvoRenderer::Playing);
            });
        connect(transport, &RemoteTransport::positionReported, this,
            [this](quint64, double seconds) { item.take(seconds, !item.isRunning()); });
        connect(transport, &RemoteTransport::seeked, this, [this](quint64, double seconds, int settling) {
            item.seekTo(seconds); // All are ours.
            item.confirmSeek(seconds, settling);
        });
    }

    ItemProgress item;
};
