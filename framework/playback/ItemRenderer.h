// SPDX-License-Identifier: MIT
#pragma once

#include "Engine.h"
#include "KelvoRenderer.h"
#include "Playback.h"
#include "RendererProperties.h"
#include "Reporter.h"

#include <memory>

/// A renderer over an engine that plays one item at a time.
///
/// What plays next, the properties, the answers and the reports are here, the same for all; how one item plays is the
/// business of the engine. Everything that is reported goes through the event loop, so that whoever hears it may call
/// anything, and may delete the renderer.
class ItemRenderer : public KelvoRenderer
{
    Q_OBJECT
public:
    ItemRenderer(std::unique_ptr<Engine> engine, const QString &uuid, QObject *parent = nullptr);
    ~ItemRenderer() override;

    QString uuid() const override { return m_uuid; }
    QString name() const override { return m_engine->name(); }
    void play() override;
    void playUri(const QUrl &uri) override;
    void playUriWithType(const QUrl &uri, const QString &contentType) override;
    void stop() override;
    void pause() override;
    void resume() override;
    void next() override;
    void previous() override;
    void pauseAt(uint seconds) override;
    void gotoIndex(uint index) override;
    void setPosition(int seconds, int mode) override;
    void getStatus(QObject *receiver, const char *slot) override;
    void getPosition(QObject *receiver, const char *slot) override;
    void assignPlaylist(KelvoPlaylist *playlist) override;
    void setKelvoProperty(const QString &name, const QVariant &value) override;
    void kelvoProperty(const QString &name, QObject *receiver, const char *slot) override;

private:
    void command(std::function<void()> call) { m_engine->command(std::move(call)); }
    void playAddress(const QUrl &uri, const QString &contentType);
    void setProperty(const QString &name, const QVariant &value);
    void takeProperty(const QString &name, const QVariant &value);
    void noteProperty(const QString &name, const QVariant &value);
    QVariant valueOf(const QString &name) const;

    const QString m_uuid;
    const std::unique_ptr<Engine> m_engine;
    RendererProperties m_properties;
    Reporter m_reporter;
    Playback m_playback;
};
