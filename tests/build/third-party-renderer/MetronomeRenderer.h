// SPDX-License-Identifier: MIT
#pragma once

#include <KelvoRenderer.h>

#include <QElapsedTimer>

/// Plays silence that never ends, whatever the URI: the smallest renderer that does something. It knows no playlists.
class MetronomeRenderer : public KelvoRenderer
{
    Q_OBJECT
public:
    QString uuid() const override { return QStringLiteral("third-party-metronome"); }
    QString name() const override { return QStringLiteral("Metronome"); }

    void play() override;
    void playUri(const QUrl &uri) override;
    void playUriWithType(const QUrl &uri, const QString &contentType) override;
    void stop() override;
    void pause() override;
    void resume() override;
    void next() override { }
    void previous() override { }
    void pauseAt(uint seconds) override;
    void gotoIndex(uint index) override;
    void setPosition(int seconds, int mode) override;
    void getStatus(QObject *receiver, const char *slot) override;
    void getPosition(QObject *receiver, const char *slot) override;
    void assignPlaylist(KelvoPlaylist *playlist) override;
    void setKelvoProperty(const QString &name, const QVariant &value) override;
    void kelvoProperty(const QString &name, QObject *receiver, const char *slot) override;

private:
    void enter(State state);
    void report(KelvoError::Code code);
    uint seconds() const;

    QUrl m_uri;
    State m_state = Stopped;
    qint64 m_playedBefore = 0; ///< milliseconds, up to the last pause
    QElapsedTimer m_sinceStart;
};
