// SPDX-License-Identifier: MIT
#include "Trial.h"

#include <QDeadlineTimer>
#include <QRegularExpression>
#include <QStandardItemModel>

namespace {
// A large foreign library takes its time when nothing of it is in memory yet. Milliseconds.
constexpr int patienceForPlugins = 30'000;
} // namespace

Trial::Trial(Subject &subject)
    : m_subject(subject)
{
}

Trial::~Trial() = default;

Finding Trial::carryOut(const std::function<void()> &statement)
{
    m_began = m_subject.time();
    if (begin())
        statement();
    end();
    return m_finding;
}

bool Trial::begin()
{
    m_registry = std::make_unique<KelvoRegistry>();
    loadPlugin();
    if (appears(patienceForPlugins)) {
        m_probe = makeProbe();
        return true;
    }
    const QString reason = m_registry->pluginLoader()->failure(m_pluginFile);
    m_finding.kind = Finding::NotTried;
    m_finding.reason = reason.isEmpty() ? QStringLiteral("the renderer did not appear") : reason;
    return false;
}

void Trial::loadPlugin()
{
    m_pluginFile = m_subject.pluginFile();
    m_registry->loadPlugin(m_pluginFile);
}

bool Trial::appears(int milliseconds)
{
    const QDeadlineTimer limit(milliseconds);
    while (!m_subject.findIn(*m_registry)) {
        if (limit.hasExpired() || m_subject.isInterrupted()
            || !m_registry->pluginLoader()->failure(m_pluginFile).isEmpty())
            return false;
        Subject::wait(1);
    }
    m_renderer = m_subject.findIn(*m_registry);
    m_subject.prepare(*m_renderer);
    return true;
}

std::unique_ptr<RendererProbe> Trial::makeProbe()
{
    return std::make_unique<RendererProbe>(*m_renderer, [this] { return m_subject.time() - m_began; });
}

void Trial::end()
{
    if (m_probe) {
        m_finding.evidence.violations = m_probe->violations;
        m_finding.evidence.events = m_probe->timedEvents();
        m_finding.refusals = m_probe->refusals;
    }
    if (m_renderer)
        m_subject.finish(*m_renderer);
    m_registry.reset();
    m_probe.reset();
    for (const auto &playlist : m_playlists)
        delete playlist;
    m_playlists.clear();
    if (!m_finding.evidence.violations.isEmpty())
        fail(QStringLiteral("nothing that no renderer may ever do"),
            m_finding.evidence.violations.constFirst());
    if (m_renderer)
        fail(QStringLiteral("the renderer goes with its plug-in"), QStringLiteral("it outlives it"));
}

void Trial::fail(const Check &check, const QString &came)
{
    fail(QString::fromUtf8(check.text), came);
    if (m_finding.evidence.where.isEmpty())
        m_finding.evidence.where = QStringLiteral("%1:%2").arg(QLatin1String(check.file)).arg(check.line);
}

void Trial::fail(const QString &expected, const QString &came)
{
    m_finding.kind = Finding::Failed;
    // What failed first is what tells most.
    if (!m_finding.evidence.expected.isEmpty())
        return;
    m_finding.evidence.expected = expected;
    m_finding.evidence.came = came;
}

/// What most checks are about and no event tells.
QString Trial::lastPosition() const
{
    if (!m_probe || m_probe->positionAnswers.isEmpty())
        return {};
    return QStringLiteral("; the last position was %1").arg(m_probe->positionAnswers.constLast());
}

bool Trial::holds(bool condition, const Check &check)
{
    if (!condition)
        fail(check, QStringLiteral("not so") + lastPosition());
    return condition;
}

bool Trial::comes(const std::function<bool()> &condition, const Check &check, qint64 milliseconds)
{
    const qint64 patience = milliseconds < 0 ? m_subject.patience() : milliseconds;
    const bool came = reaches(condition, patience);
    if (!came)
        fail(check, QStringLiteral("not within %1 s").arg(double(patience) / 1000) + lastPosition());
    return came;
}

bool Trial::reaches(const std::function<bool()> &condition, qint64 milliseconds)
{
    const qint64 end = m_subject.time() + (milliseconds < 0 ? m_subject.patience() : milliseconds);
    while (!condition()) {
        if (m_subject.time() > end || m_subject.isInterrupted())
            return false;
        m_subject.letTimePass(m_renderer);
    }
    return true;
}

void Trial::settle()
{
    if (m_renderer)
        status();
    qsizetype known = m_probe->events.size();
    qint64 quietSince = m_subject.time();
    reaches([&] {
        if (known != m_probe->events.size()) {
            known = m_probe->events.size();
            quietSince = m_subject.time();
        }
        return m_subject.time() - quietSince >= m_subject.quietTime();
    });
}

RendererProbe::Status Trial::status()
{
    const qsizetype before = m_probe->statusAnswers.size();
    renderer()->getStatus(m_probe.get(), "statusAnswer(QString, uint, int, QString)");
    if (!reaches([&] { return m_probe->statusAnswers.size() > before; }))
        return {{}, uint(-1), -1, {}};
    return m_probe->statusAnswers.constLast();
}

int Trial::position()
{
    const qsizetype before = m_probe->positionAnswers.size();
    renderer()->getPosition(m_probe.get(), "positionAnswer(uint)");
    if (!reaches([&] { return m_probe->positionAnswers.size() > before; }))
        return -1;
    return int(m_probe->positionAnswers.constLast());
}

KelvoGeneralSourcePlaylist *Trial::makePlaylist(const QList<QUrl> &urls)
{
    auto *playlist = new KelvoGeneralSourcePlaylist(
        KelvoPlaylist::getNewPlaylistId(), QStringLiteral("contract"), QStringLiteral("KelvoTrackerSource"));
    auto *model = new QStandardItemModel(playlist);
    for (qsizetype i = 0; i < urls.size(); ++i) {
        model->appendRow({new QStandardItem(QString::number(i)),
            new QStandardItem(QStringLiteral("Item %1").arg(i, 2, 10, QLatin1Char('0'))),
            new QStandardItem(urls.at(i).toString())});
    }
    playlist->setUnderlyingModel(model);
    m_playlists.emplace_back(playlist);
    return playlist;
}

KelvoGeneralSourcePlaylist *Trial::makeLongPlaylist(int count)
{
    return makePlaylist(QList<QUrl>(count, m_subject.longItem()));
}

void Trial::startPlaylist(KelvoPlaylist *playlist, uint index)
{
    renderer()->assignPlaylist(playlist);
    renderer()->gotoIndex(index);
    reaches([this] { return heard().state() == KelvoRenderer::Playing; });
    heard().clear();
}

bool Trial::isPlaying(uint index)
{
    const RendererProbe::Status now = status();
    return now.state == KelvoRenderer::Playing && now.index == index;
}

QString rowId(const QString &id, const QString &row)
{
    static const QRegularExpression other(QStringLiteral("[^a-z0-9]+"));
    // "playUriWithType" is read as "play-uri-with-type".
    QString name;
    for (const QChar letter : row) {
        if (letter.isUpper() && !name.isEmpty() && name.back().isLetter())
            name += QLatin1Char('-');
        name += letter.toLower();
    }
    name.replace(other, QStringLiteral("-"));
    while (name.startsWith(QLatin1Char('-')))
        name.remove(0, 1);
    while (name.endsWith(QLatin1Char('-')))
        name.chop(1);
    return id + QLatin1Char('.') + name;
}
