// SPDX-License-Identifier: MIT
#include "Player.h"

#include "ItemList.h"
#include "KelvoGeneralSourcePlaylist.h"
#include "Output.h"

#include <QMetaEnum>

#include <algorithm>

namespace {
using State = KelvoRenderer::State;

constexpr int askInterval = 250; // milliseconds
/// A renderer that refuses something before it plays tells it within this time. Milliseconds.
constexpr int patience = 1000;
constexpr uint lineInterval = 10; // seconds between two lines with the position
constexpr int step = 10; // seconds
constexpr int volumeStep = 5;
constexpr int loudest = 99;

QString stateName(State state)
{
    return QString::fromLatin1(QMetaEnum::fromType<State>().valueToKey(state));
}

QString clockText(uint seconds)
{
    return QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

QString joined(const QList<QVariant> &values)
{
    QStringList texts;
    for (const QVariant &value : values) {
        const QString text = value.toString();
        texts.append(
            text.isEmpty() ? QStringLiteral("(%1)").arg(QString::fromLatin1(value.typeName())) : text);
    }
    return texts.join(QStringLiteral(", "));
}
} // namespace

Player::Player(KelvoRenderer *renderer, Output *output, QObject *parent)
    : QObject(parent)
    , m_renderer(renderer)
    , m_output(output)
{
    connect(renderer, &KelvoRenderer::stateChanged, this, &Player::takeState);
    connect(renderer, &KelvoRenderer::metadataChanged, this, &Player::takeFact);
    connect(renderer, &KelvoRenderer::error, this, &Player::takeError);
    connect(renderer, &QObject::destroyed, this, &Player::takeVanishing);
    connect(renderer, &KelvoRenderer::mediaChanged, this, [this](int, const KelvoContent &content) {
        m_duration = 0;
        m_output->line(content.url.toDisplayString());
    });
    connect(renderer, &KelvoRenderer::bufferingInfo, this, [this](float fraction) {
        m_output->progress(QStringLiteral("buffering: %1 %").arg(qRound(100 * fraction)));
    });
    connect(&m_keyboard, &Keyboard::pressed, this, &Player::obey);
    connect(&m_clock, &QTimer::timeout, this, &Player::ask);
    m_patience.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, this, &Player::finished);
    renderer->kelvoProperty(KelvoRenderer::PropertyVolume, this, "takeVolume(QString,QVariant)");
    if (m_keyboard.isThere() && m_output->isTerminal())
        m_output->line(Keyboard::usage(), Output::Tone::Faint);
}

Player::~Player()
{
    // The renderer outlives the playlist that it knows.
    if (m_renderer && m_playlist)
        m_renderer->assignPlaylist(nullptr);
}

void Player::play(const QList<QUrl> &urls)
{
    if (urls.size() == 1) {
        m_renderer->playUri(urls.constFirst());
        return;
    }
    m_playlist = ItemList::make(QStringLiteral("kelvo-test"), urls);
    m_renderer->assignPlaylist(m_playlist.get());
    m_renderer->play();
}

void Player::takeState(State state)
{
    m_state = state;
    m_patience.stop();
    m_output->line(stateName(state), Output::Tone::Faint);
    if (state == KelvoRenderer::Playing || state == KelvoRenderer::Paused)
        m_clock.start(askInterval);
    else
        m_clock.stop();
    if (state == KelvoRenderer::Stopped)
        Q_EMIT finished();
}

void Player::takeFact(const QString &key, const QList<QVariant> &values)
{
    if (key == QLatin1String("duration"))
        m_duration = values.constFirst().toInt();
    m_output->line(key + QStringLiteral(": ") + joined(values));
}

void Player::takeError(const KelvoError &error)
{
    m_failed = true;
    m_output->line(QStringLiteral("error %1 (%2): %3")
                       .arg(error.code())
                       .arg(KelvoError::codeToString(error.code()), error.message()),
        Output::Tone::Bad);
    if (isStopped())
        m_patience.start(patience);
}

void Player::takeVanishing()
{
    m_failed = true;
    m_state = KelvoRenderer::Stopped;
    m_output->line(QStringLiteral("The renderer is gone"), Output::Tone::Bad);
    Q_EMIT finished();
}

void Player::ask()
{
    if (m_renderer)
        m_renderer->getPosition(this, "takePosition(uint)");
}

void Player::takePosition(uint seconds)
{
    m_position = seconds;
    m_output->progress(timeText());
    const bool isDue = seconds >= m_shown + lineInterval || seconds < m_shown;
    if (!m_output->isTerminal() && isDue) {
        m_shown = seconds;
        m_output->line(timeText());
    }
}

QString Player::timeText() const
{
    const QString at = clockText(m_position);
    return m_duration > 0 ? at + QStringLiteral(" of ") + clockText(uint(m_duration)) : at;
}

void Player::takeVolume(const QString &, const QVariant &value)
{
    m_volume = value.isValid() ? value.toInt() : -1;
}

void Player::changeVolume(int by)
{
    if (m_volume < 0)
        return;
    m_volume = std::clamp(m_volume + by, 0, loudest);
    m_renderer->setKelvoProperty(KelvoRenderer::PropertyVolume, m_volume);
}

void Player::obey(Keyboard::Key key)
{
    if (!m_renderer)
        return;
    switch (key) {
    case Keyboard::Space:
        if (m_state == KelvoRenderer::Paused)
            m_renderer->resume();
        else
            m_renderer->pause();
        break;
    case Keyboard::Quit:
        Q_EMIT finished();
        break;
    case Keyboard::Next:
        m_renderer->next();
        break;
    case Keyboard::Previous:
        m_renderer->previous();
        break;
    case Keyboard::Forward:
        m_renderer->setPosition(step, KelvoRenderer::SeekRelative);
        break;
    case Keyboard::Back:
        m_renderer->setPosition(-step, KelvoRenderer::SeekRelative);
        break;
    case Keyboard::Louder:
        changeVolume(volumeStep);
        break;
    case Keyboard::Quieter:
        changeVolume(-volumeStep);
        break;
    }
}
