// SPDX-License-Identifier: MIT
#include "SenseWatch.h"

#include "KelvoContent.h"
#include "SenseProgram.h"

#include <QEventLoop>
#include <QTimer>

namespace {
constexpr int lookInterval = 10; // milliseconds
constexpr double answerTime = 2; // seconds
} // namespace

SenseWatch::SenseWatch(KelvoRenderer *renderer, QObject *parent)
    : QObject(parent)
    , m_renderer(renderer)
    , m_begin(SenseProgram::now())
{
    connect(renderer, &QObject::destroyed, this, &SenseWatch::stop);
    connect(renderer, &KelvoRenderer::stateChanged, this, [this](KelvoRenderer::State state) {
        if (!m_states.contains(state))
            m_states.insert(state, SenseProgram::now() - m_begin);
    });
    connect(renderer, &KelvoRenderer::mediaChanged, this, [this](int, const KelvoContent &content) {
        m_medium = content.url;
        if (!m_announced.contains(m_medium))
            m_announced.insert(m_medium, SenseProgram::now() - m_begin);
    });
    connect(renderer, &KelvoRenderer::kelvoPropertyChanged, this,
        [this](const QString &name, const QVariant &value) {
            if (name == KelvoRenderer::PropertyVolume)
                m_volume = value.toInt();
        });
}

void SenseWatch::begin()
{
    m_begin = SenseProgram::now();
    m_states.clear();
    m_announced.clear();
}

std::optional<double> SenseWatch::saidAt(KelvoRenderer::State state) const
{
    return m_states.contains(state) ? std::optional(m_states.value(state)) : std::nullopt;
}

std::optional<double> SenseWatch::announcedAt(const QUrl &medium) const
{
    return m_announced.contains(medium) ? std::optional(m_announced.value(medium)) : std::nullopt;
}

bool SenseWatch::waitUntil(const std::function<bool()> &condition, double seconds)
{
    const double end = SenseProgram::now() + seconds;
    QEventLoop loop;
    QTimer look;
    connect(&look, &QTimer::timeout, &loop, [&] {
        if (m_isStopped || condition() || SenseProgram::now() > end)
            loop.quit();
    });
    look.start(lookInterval);
    loop.exec();
    return !m_isStopped && condition();
}

void SenseWatch::wait(double seconds)
{
    waitUntil([] { return false; }, seconds);
}

std::optional<SenseWatch::Position> SenseWatch::askPosition()
{
    const QVariant position = askProperty(KelvoRenderer::PropertyPosition);
    return position.isValid() ? std::optional(Position{position.toDouble(), m_cameOutThen}) : std::nullopt;
}

QVariant SenseWatch::askProperty(const QString &name)
{
    m_answer.reset();
    if (!m_renderer)
        return {};
    m_renderer->kelvoProperty(name, this, "takeAnswer(QString,QVariant)");
    waitUntil([this] { return m_answer.has_value(); }, answerTime);
    return m_answer.value_or(QVariant());
}

void SenseWatch::takeAnswer(const QString &, const QVariant &value)
{
    m_answer = value;
    m_cameOutThen = position();
}
