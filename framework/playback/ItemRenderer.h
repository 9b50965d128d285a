// SPDX-License-Identifier: MIT
#pragma once

#include "Engine.h"
#include "KelvoRenderer.h"

#include <memory>

/// A renderer over an engine that plays one item at a time.
///
/// What plays next, the properties, the answers and the reports are here, the same for all; how one item plays is the
/// business of the engine. Everything that is reported goes through the event loop, so that whoever hears it may call
/// anything, and may delete the renderer. GUI thread.
class ItemRenderer : public KelvoRenderer
{
    Q_OBJECT
public:
    /// @param uuid  identity of the renderer, see KelvoRenderer::uuid()
    ItemRenderer(std::unique_ptr<Engine> engine, const QString &uuid, QObject *parent = nullptr);
    ~ItemRenderer() override;

    QString uuid() const override;
    /// That of the engine.
    QString name() const override;
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
    struct Private;
    const std::unique_ptr<Private> d;
};
