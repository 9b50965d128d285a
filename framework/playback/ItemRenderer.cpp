// SPDX-License-Identifier: MIT
#include "ItemRenderer.h"

#include "KelvoAnswer.h"
#include "KelvoCommandListener.h"
#include "KelvoMessageHandler.h"
#include "KelvoPlaylist.h"
#include "Playback.h"
#include "RendererProperties.h"
#include "Reporter.h"

#include <QPointer>

#include <cmath>
#include <utility>

namespace {
/// Media are made of frames of some milliseconds: a position this close to a second counts as that second.
constexpr double tolerance = 0.01;

template <typename... Arguments>
void note(const ItemRenderer &renderer, const char *command, const Arguments &...arguments)
{
    KelvoCommandListener::noteCommand(renderer, command, arguments...);
}

/// For an answer that may come when the renderer is gone.
template <typename... Arguments>
void noteAnswer(const QPointer<ItemRenderer> &renderer, const char *request, const Arguments &...arguments)
{
    if (renderer)
        KelvoCommandListener::noteAnswer(*renderer, request, arguments...);
}
} // namespace

struct ItemRenderer::Private
{
    Private(ItemRenderer &itsRenderer, std::unique_ptr<Engine> itsEngine, const QString &itsUuid)
        : renderer(itsRenderer)
        , uuid(itsUuid)
        , engine(std::move(itsEngine))
        , reporter(itsRenderer, *engine)
        , playback(*engine, reporter, properties)
    {
    }

    void command(std::function<void()> call) const { engine->command(std::move(call)); }
    void playAddress(const QUrl &uri, const QString &contentType);
    void setProperty(const QString &name, const QVariant &value);
    void takeProperty(const QString &name, const QVariant &value);
    void noteProperty(const QString &name, const QVariant &value);
    QVariant valueOf(const QString &name) const;

    ItemRenderer &renderer;
    const QString uuid;
    const std::unique_ptr<Engine> engine;
    RendererProperties properties;
    Reporter reporter;
    Playback playback;
};

ItemRenderer::ItemRenderer(std::unique_ptr<Engine> engine, const QString &uuid, QObject *parent)
    : KelvoRenderer(parent)
    , d(std::make_unique<Private>(*this, std::move(engine), uuid))
{
    d->engine->describe(d->properties);
    connect(d->engine.get(), &Engine::troubled, this, [this](KelvoError::Code code, const QString &message) {
        d->properties.awaitNothing();
        d->reporter.tellError({code, message});
    });
    connect(d->engine.get(), &Engine::propertyReported, this,
        [this](const QString &name, const QVariant &value) { d->noteProperty(name, value); });
    connect(d->engine.get(), &Engine::nameReported, this,
        [this](const QString &name) { d->reporter.tellName(name); });
}

ItemRenderer::~ItemRenderer() = default;

QString ItemRenderer::uuid() const
{
    return d->uuid;
}

QString ItemRenderer::name() const
{
    return d->engine->name();
}

void ItemRenderer::play()
{
    note(*this, "play");
    d->command([this] { d->playback.play(); });
}

void ItemRenderer::playUri(const QUrl &uri)
{
    note(*this, "playUri", uri);
    d->playAddress(uri, {});
}

void ItemRenderer::playUriWithType(const QUrl &uri, const QString &contentType)
{
    note(*this, "playUriWithType", uri, contentType);
    d->playAddress(uri, contentType);
}

void ItemRenderer::Private::playAddress(const QUrl &uri, const QString &contentType)
{
    KelvoMediaInfo item({}, uri);
    item.setMimeType(contentType);
    command([this, item] { playback.playAddress(item); });
}

void ItemRenderer::stop()
{
    note(*this, "stop");
    d->command([this] { d->playback.stop(); });
}

void ItemRenderer::pause()
{
    note(*this, "pause");
    d->command([this] { d->playback.pause(); });
}

void ItemRenderer::resume()
{
    note(*this, "resume");
    d->command([this] { d->playback.resume(); });
}

void ItemRenderer::next()
{
    note(*this, "next");
    d->command([this] { d->playback.next(); });
}

void ItemRenderer::previous()
{
    note(*this, "previous");
    d->command([this] { d->playback.previous(); });
}

void ItemRenderer::pauseAt(uint seconds)
{
    note(*this, "pauseAt", seconds);
    d->command([this, seconds] { d->engine->setPauseAt(seconds); });
}

void ItemRenderer::gotoIndex(uint index)
{
    note(*this, "gotoIndex", index);
    d->command([this, index] { d->playback.goTo(index); });
}

void ItemRenderer::setPosition(int seconds, int mode)
{
    note(*this, "setPosition", seconds, mode);
    d->command([this, seconds, mode] { d->playback.setPosition(seconds, mode); });
}

void ItemRenderer::assignPlaylist(KelvoPlaylist *playlist)
{
    note(*this, "assignPlaylist", playlist);
    // The playlist may be deleted before the command takes effect; then none is assigned.
    d->command([this, guarded = QPointer<KelvoPlaylist>(playlist)] { d->playback.assign(guarded); });
}

void ItemRenderer::getStatus(QObject *receiver, const char *slot)
{
    note(*this, "getStatus");
    d->command([this, answer = KelvoAnswer(receiver, slot)] {
        // By way of the queue of reports, so that it comes after those made before.
        d->engine->post([this, answer, status = d->playback.status(), state = d->reporter.state()] {
            KelvoCommandListener::noteAnswer(
                *this, "getStatus", status.playlistId, status.index, state, status.objectId);
            answer.deliver({status.playlistId, status.index, int(state), status.objectId});
        });
    });
}

void ItemRenderer::getPosition(QObject *receiver, const char *slot)
{
    note(*this, "getPosition");
    d->command([this, guarded = QPointer(this), answer = KelvoAnswer(receiver, slot)] {
        d->playback.answerPosition([guarded, answer](double position) {
            const uint seconds = uint(std::floor(position + tolerance));
            noteAnswer(guarded, "getPosition", seconds);
            answer.deliver({seconds});
        });
    });
}

void ItemRenderer::setKelvoProperty(const QString &name, const QVariant &value)
{
    note(*this, "setKelvoProperty", name, value);
    if (!d->engine->setOwnProperty(name, value))
        d->command([this, name, value] { d->setProperty(name, value); });
}

void ItemRenderer::Private::setProperty(const QString &name, const QVariant &value)
{
    const std::optional<QVariant> accepted = properties.accepted(name, value);
    if (!properties.isSettable(name)) {
        reporter.tellError({KelvoError::NotSupported, name});
        return;
    }
    if (RendererProperties::isOfWindow(name) && !engine->usesWindow()) {
        qCDebug(lcKelvo).noquote() << renderer.name()
                                   << "shows video in a window of its own and has no use for" << name;
    } else if (accepted) {
        takeProperty(name, *accepted);
    } else {
        reporter.tellError({KelvoError::InvalidValue, QStringLiteral("%1 = %2").arg(name, value.toString())});
        return;
    }
    // With its window a renderer learns that somebody has chosen it.
    if (name == KelvoRenderer::PropertyXid)
        playback.tellAgain();
}

void ItemRenderer::Private::takeProperty(const QString &name, const QVariant &value)
{
    const QString refusal = engine->refusal(name, value);
    if (!refusal.isEmpty())
        reporter.tellError({KelvoError::NotSupported, refusal});
    else if (engine->applyProperty(name, value))
        properties.await(name, value);
    else
        noteProperty(name, value);
}

/// Takes the value that holds from now on and reports it.
void ItemRenderer::Private::noteProperty(const QString &name, const QVariant &value)
{
    properties.set(name, value);
    reporter.tellProperty(name, value);
}

QVariant ItemRenderer::Private::valueOf(const QString &name) const
{
    const QVariant own = engine->ownProperty(name);
    return own.isValid() ? own : properties.value(name);
}

void ItemRenderer::kelvoProperty(const QString &name, QObject *receiver, const char *slot)
{
    note(*this, "kelvoProperty", name);
    d->command([this, guarded = QPointer(this), name, answer = KelvoAnswer(receiver, slot)] {
        if (name == PropertyPosition) {
            d->playback.answerPosition([guarded, answer, name](double seconds) {
                noteAnswer(guarded, "kelvoProperty", name, seconds);
                answer.deliver({name, seconds});
            });
        } else {
            d->engine->post([this, answer, name, value = d->valueOf(name)] {
                KelvoCommandListener::noteAnswer(*this, "kelvoProperty", name, value);
                answer.deliver({name, value});
            });
        }
    });
}
