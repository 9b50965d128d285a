// SPDX-License-Identifier: MIT
#pragma once

#include "RemotePosition.h"
#include "RemoteTransport.h"

#include <QTimer>

#include <functional>

/// A remote player that plays in time and has no media: "pretended:x?duration=10&seekable=0&fails=1". Everything it is
/// told and everything it tells takes a few milliseconds on the way.
class PretendedPlayer : public RemoteTransport
{
    Q_OBJECT
public:
    explicit PretendedPlayer(QObject *parent = nullptr);

    Abilities abilities() const override;
    void load(const Item &item) override;
    void unload() override;
    void pause() override;
    void resume() override;
    void seek(double seconds) override;
    void setVolume(int volume) override;
    void setRate(double rate) override;
    void askPosition() override;

private:
    void onTheWay(std::function<void()> call);
    void begin(const Item &item);
    void enter(KelvoRenderer::State state);
    void watchEnds();
    void reachEnd();

    quint64 m_epoch = 0; ///< of what plays
    KelvoRenderer::State m_state = KelvoRenderer::Stopped;
    RemotePosition m_position;
    double m_duration = 0;
    bool m_seekable = true;
    QTimer m_end;
};
