// SPDX-License-Identifier: MIT
#include "MetronomeRenderer.h"

#include <KelvoAnswer.h>

void MetronomeRenderer::play()
{
    if (m_uri.isEmpty())
        return report(KelvoError::NothingToPlay);
    playUri(m_uri);
}

void MetronomeRenderer::playUri(const QUrl &uri)
{
    playUriWithType(uri, {});
}

void MetronomeRenderer::playUriWithType(const QUrl &uri, const QString &contentType)
{
    m_uri = uri;
    m_playedBefore = 0;
    enter(Transitioning);
    QMetaObject::invokeMethod(
        this,
        [=, this] {
            Q_EMIT mediaChanged(-1, {{}, uri, contentType});
        },
        Qt::QueuedConnection);
    enter(Playing);
}

void MetronomeRenderer::stop()
{
    if (m_state != Stopped)
        enter(Stopped);
}

void MetronomeRenderer::pause()
{
    if (m_state == Playing)
        enter(Paused);
}

void MetronomeRenderer::resume()
{
    if (m_state == Paused)
        enter(Playing);
}

void MetronomeRenderer::pauseAt(uint)
{
    report(KelvoError::NotSupported);
}

void MetronomeRenderer::gotoIndex(uint)
{
    report(KelvoError::IndexOutOfRange);
}

void MetronomeRenderer::setPosition(int, int)
{
    report(KelvoError::NotSeekable);
}

void MetronomeRenderer::getStatus(QObject *receiver, const char *slot)
{
    KelvoAnswer(receiver, slot).deliver({QString(), 0U, int(m_state), QString()});
}

void MetronomeRenderer::getPosition(QObject *receiver, const char *slot)
{
    KelvoAnswer(receiver, slot).deliver({seconds()});
}

void MetronomeRenderer::assignPlaylist(KelvoPlaylist *) { }

void MetronomeRenderer::setKelvoProperty(const QString &, const QVariant &)
{
    report(KelvoError::NotSupported);
}

void MetronomeRenderer::kelvoProperty(const QString &name, QObject *receiver, const char *slot)
{
    KelvoAnswer(receiver, slot).deliver({name, QVariant()});
}

/// What comes of a command is reported from the event loop.
void MetronomeRenderer::enter(State state)
{
    if (m_state == Playing)
        m_playedBefore += m_sinceStart.elapsed();
    if (state == Stopped)
        m_playedBefore = 0;
    m_sinceStart.start();
    m_state = state;
    QMetaObject::invokeMethod(
        this, [=, this] { Q_EMIT stateChanged(state); }, Qt::QueuedConnection);
}

void MetronomeRenderer::report(KelvoError::Code code)
{
    QMetaObject::invokeMethod(
        this,
        [=, this] {
            Q_EMIT error({code, m_uri.toString()});
        },
        Qt::QueuedConnection);
}

uint MetronomeRenderer::seconds() const
{
    return uint((m_playedBefore + (m_state == Playing ? m_sinceStart.elapsed() : 0)) / 1000);
}
