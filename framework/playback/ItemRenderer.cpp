// SPDX-License-Identifier: MIT
#include "ItemRenderer.h"

#include "KelvoAnswer.h"
#include "KelvoMessageHandler.h"
#include "KelvoPlaylist.h"

#include <QPointer>

#include <cmath>
#include <utility>

namespace {
/// Media are made of frames of some milliseconds: a position this close to a second counts as that second.
constexpr double tolerance = 0.01;
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
    command([this] { m_playback.play(); });
}

void ItemRenderer::playUri(const QUrl &uri)
{
    playUriWithType(uri, {});
}

void ItemRenderer::playUriWithType(const QUrl &uri, const QString &contentType)
{
    KelvoMediaInfo item({}, uri);
    item.setMimeType(contentType);
    command([this, item] { m_playback.playAddress(item); });
}

void ItemRenderer::stop()
{
    command([this] { m_playback.stop(); });
}

void ItemRenderer::pause()
{
    command([this] { m_playback.pause(); });
}

void ItemRenderer::resume()
{
    command([this] { m_playback.resume(); });
}

void ItemRenderer::next()
{
    command([this] { m_playback.next(); });
}

void ItemRenderer::previous()
{
    command([this] { m_playback.previous(); });
}

void ItemRenderer::pauseAt(uint seconds)
{
    command([this, seconds] { m_engine->setPauseAt(seconds); });
}

void ItemRenderer::gotoIndex(uint index)
{
    command([this, index] { m_playback.goTo(index); });
}

void ItemRenderer::setPosition(int seconds, int mode)
{
    command([this, seconds, mode] { m_playback.setPosition(seconds, mode); });
}

void ItemRenderer::assignPlaylist(KelvoPlaylist *playlist)
{
    // The playlist may be deleted before the command takes effect; then none is assigned.
    command([this, guarded = QPointer<KelvoPlaylist>(playlist)] { m_playback.assign(guarded); });
}

void ItemRenderer::getStatus(QObject *receiver, const char *slot)
{
    command([this, answer = KelvoAnswer(receiver, slot)] {
        // By way of the queue of reports, so that it comes after those made before.
        m_engine->post([answer, status = m_playback.status(), state = int(m_reporter.state())] {
            answer.deliver({status.playlistId, status.index, state, status.objectId});
        });
    });
}

void ItemRenderer::getPosition(QObject *receiver, const char *slot)
{
    command([this, answer = KelvoAnswer(receiver, slot)] {
        m_playback.answerPosition(
            [answer](double seconds) { answer.deliver({uint(std::floor(seconds + tolerance))}); });
    });
}

void ItemRenderer::setKelvoProperty(const QString &name, const QVariant &value)
{
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
    command([this, name, answer = KelvoAnswer(receiver, slot)] {
        if (name == PropertyPosition) {
            m_playback.answerPosition([answer, name](double seconds) { answer.deliver({name, seconds}); });
        } else {
            m_engine->post([answer, name, value = valueOf(name)] { answer.deliver({name, value}); });
        }
    });
}
