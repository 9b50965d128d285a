// SPDX-License-Identifier: MIT
#include "ItemRenderer.h"

#include "KelvoAnswer.h"
#include "KelvoCommandListener.h"
#include "KelvoMessageHandler.h"
#include "KelvoPlaylist.h"

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

ItemRenderer::ItemRenderer(std::unique_ptr<Engine> engine, const QString &uuid, QObject *parent)
    : KelvoRenderer(parent)
    , m_uuid(uuid)
    , m_engine(std::move(engine))
    , m_reporter(*this, *m_engine)
    , m_playback(*m_engine, m_reporter, m_properties)
{
    m_engine->describe(m_properties);
    connect(m_engine.get(), &Engine::troubled, this, [this](KelvoError::Code code, const QString &message) {
        m_properties.awaitNothing();
        m_reporter.tellError({code, message});
    });
    connect(m_engine.get(), &Engine::propertyReported, this, &ItemRenderer::noteProperty);
    connect(m_engine.get(), &Engine::nameReported, this,
        [this](const QString &name) { m_reporter.tellName(name); });
}

ItemRenderer::~ItemRenderer() = default;

void ItemRenderer::play()
{
    note(*this, "play");
    command([this] { m_playback.play(); });
}

void ItemRenderer::playUri(const QUrl &uri)
{
    note(*this, "playUri", uri);
    playAddress(uri, {});
}

void ItemRenderer::playUriWithType(const QUrl &uri, const QString &contentType)
{
    note(*this, "playUriWithType", uri, contentType);
    playAddress(uri, contentType);
}

void ItemRenderer::playAddress(const QUrl &uri, const QString &contentType)
{
    KelvoMediaInfo item({}, uri);
    item.setMimeType(contentType);
    command([this, item] { m_playback.playAddress(item); });
}

void ItemRenderer::stop()
{
    note(*this, "stop");
    command([this] { m_playback.stop(); });
}

void ItemRenderer::pause()
{
    note(*this, "pause");
    command([this] { m_playback.pause(); });
}

void ItemRenderer::resume()
{
    note(*this, "resume");
    command([this] { m_playback.resume(); });
}

void ItemRenderer::next()
{
    note(*this, "next");
    command([this] { m_playback.next(); });
}

void ItemRenderer::previous()
{
    note(*this, "previous");
    command([this] { m_playback.previous(); });
}

void ItemRenderer::pauseAt(uint seconds)
{
    note(*this, "pauseAt", seconds);
    command([this, seconds] { m_engine->setPauseAt(seconds); });
}

void ItemRenderer::gotoIndex(uint index)
{
    note(*this, "gotoIndex", index);
    command([this, index] { m_playback.goTo(index); });
}

void ItemRenderer::setPosition(int seconds, int mode)
{
    note(*this, "setPosition", seconds, mode);
    command([this, seconds, mode] { m_playback.setPosition(seconds, mode); });
}

void ItemRenderer::assignPlaylist(KelvoPlaylist *playlist)
{
    note(*this, "assignPlaylist", playlist);
    // The playlist may be deleted before the command takes effect; then none is assigned.
    command([this, guarded = QPointer<KelvoPlaylist>(playlist)] { m_playback.assign(guarded); });
}

void ItemRenderer::getStatus(QObject *receiver, const char *slot)
{
    note(*this, "getStatus");
    command([this, answer = KelvoAnswer(receiver, slot)] {
        // By way of the queue of reports, so that it comes after those made before.
        m_engine->post([this, answer, status = m_playback.status(), state = m_reporter.state()] {
            KelvoCommandListener::noteAnswer(
                *this, "getStatus", status.playlistId, status.index, state, status.objectId);
            answer.deliver({status.playlistId, status.index, int(state), status.objectId});
        });
    });
}

void ItemRenderer::getPosition(QObject *receiver, const char *slot)
{
    note(*this, "getPosition");
    command([this, answer = KelvoAnswer(receiver, slot)] {
        m_playback.answerPosition([guarded = QPointer(this), answer](double position) {
            const uint seconds = uint(std::floor(position + tolerance));
            noteAnswer(guarded, "getPosition", seconds);
            answer.deliver({seconds});
        });
    });
}

void ItemRenderer::setKelvoProperty(const QString &name, const QVariant &value)
{
    note(*this, "setKelvoProperty", name, value);
    if (!m_engine->setOwnProperty(name, value))
        command([this, name, value] { setProperty(name, value); });
}

void ItemRenderer::setProperty(const QString &name, const QVariant &value)
{
    const std::optional<QVariant> accepted = m_properties.accepted(name, value);
    if (!m_properties.isSettable(name)) {
        m_reporter.tellError({KelvoError::NotSupported, name});
        return;
    }
    if (RendererProperties::isOfWindow(name) && !m_engine->usesWindow()) {
        qCDebug(lcKelvo).noquote() << this->name() << "shows video in a window of its own and has no use for"
                                   << name;
    } else if (accepted) {
        takeProperty(name, *accepted);
    } else {
        m_reporter.tellError(
            {KelvoError::InvalidValue, QStringLiteral("%1 = %2").arg(name, value.toString())});
        return;
    }
    // With its window a renderer learns that somebody has chosen it.
    if (name == PropertyXid)
        m_playback.tellAgain();
}

void ItemRenderer::takeProperty(const QString &name, const QVariant &value)
{
    const QString refusal = m_engine->refusal(name, value);
    if (!refusal.isEmpty())
        m_reporter.tellError({KelvoError::NotSupported, refusal});
    else if (m_engine->applyProperty(name, value))
        m_properties.await(name, value);
    else
        noteProperty(name, value);
}

/// Takes the value that holds from now on and reports it.
void ItemRenderer::noteProperty(const QString &name, const QVariant &value)
{
    m_properties.set(name, value);
    m_reporter.tellProperty(name, value);
}

QVariant ItemRenderer::valueOf(const QString &name) const
{
    const QVariant own = m_engine->ownProperty(name);
    return own.isValid() ? own : m_properties.value(name);
}

void ItemRenderer::kelvoProperty(const QString &name, QObject *receiver, const char *slot)
{
    note(*this, "kelvoProperty", name);
    command([this, name, answer = KelvoAnswer(receiver, slot)] {
        if (name == PropertyPosition) {
            m_playback.answerPosition([guarded = QPointer(this), answer, name](double seconds) {
                noteAnswer(guarded, "kelvoProperty", name, seconds);
                answer.deliver({name, seconds});
            });
        } else {
            m_engine->post([this, answer, name, value = valueOf(name)] {
                KelvoCommandListener::noteAnswer(*this, "kelvoProperty", name, value);
                answer.deliver({name, value});
            });
        }
    });
}
