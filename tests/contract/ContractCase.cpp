// SPDX-License-Identifier: MIT
#include "ContractCase.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QStandardItemModel>

namespace {
// Milliseconds of the subject's time; only a failing test waits that long.
constexpr qint64 patience = 12'000;
} // namespace

KelvoRenderer *RendererSubject::findIn(const KelvoRegistry &registry) const
{
    return registry.renderers().value(0);
}

void RendererSubject::letTimePass(KelvoRenderer *)
{
    QTest::qWait(5);
}

qint64 RendererSubject::time() const
{
    static QElapsedTimer timer = [] {
        QElapsedTimer started;
        started.start();
        return started;
    }();
    return timer.elapsed();
}

void ContractCase::init()
{
    KelvoTestCase::init();
    m_registry = std::make_unique<KelvoRegistry>();
    QSignalSpy added(m_registry.get(), &KelvoRegistry::rendererAdded);
    m_registry->loadPlugin(m_subject.pluginFile());
    // A large foreign library takes its time when nothing of it is in memory yet.
    while (!m_subject.findIn(*m_registry))
        QVERIFY2(
            added.wait(30'000), qPrintable(m_registry->pluginLoader()->status(m_subject.pluginFile()).error));
    m_renderer = m_subject.findIn(*m_registry);
    m_subject.prepare(*m_renderer);
    m_probe = std::make_unique<RendererProbe>(*m_renderer);
}

void ContractCase::cleanup()
{
    const QStringList violations = m_probe ? m_probe->violations : QStringList();
    m_registry.reset();
    m_probe.reset();
    for (const auto &playlist : m_playlists)
        delete playlist;
    m_playlists.clear();
    QCOMPARE(violations, QStringList());
    QVERIFY2(!m_renderer, "the renderer outlives its plug-in");
}

bool ContractCase::reaches(const std::function<bool()> &condition)
{
    const qint64 end = m_subject.time() + patience;
    while (!condition()) {
        if (m_subject.time() > end)
            return false;
        m_subject.letTimePass(m_renderer);
    }
    return true;
}

void ContractCase::settle()
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

QByteArray ContractCase::story(const char *expectation) const
{
    QByteArray text = QByteArray("expected: ") + expectation
        + "; heard: " + m_probe->events.join(QLatin1String(", ")).toUtf8();
    if (!m_probe->positionAnswers.isEmpty())
        text += "; last position: " + QByteArray::number(m_probe->positionAnswers.constLast());
    return text;
}

RendererProbe::Status ContractCase::status()
{
    const qsizetype before = m_probe->statusAnswers.size();
    renderer()->getStatus(m_probe.get(), "statusAnswer(QString, uint, int, QString)");
    if (!reaches([&] { return m_probe->statusAnswers.size() > before; }))
        return {{}, uint(-1), -1, {}};
    return m_probe->statusAnswers.constLast();
}

int ContractCase::position()
{
    const qsizetype before = m_probe->positionAnswers.size();
    renderer()->getPosition(m_probe.get(), "positionAnswer(uint)");
    if (!reaches([&] { return m_probe->positionAnswers.size() > before; }))
        return -1;
    return int(m_probe->positionAnswers.constLast());
}

KelvoGeneralSourcePlaylist *ContractCase::makePlaylist(const QList<QUrl> &urls)
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

KelvoGeneralSourcePlaylist *ContractCase::makeLongPlaylist(int count)
{
    return makePlaylist(QList<QUrl>(count, m_subject.longItem()));
}

void ContractCase::startPlaylist(KelvoPlaylist *playlist, uint index)
{
    renderer()->assignPlaylist(playlist);
    renderer()->gotoIndex(index);
    reaches([this] { return heard().state() == KelvoRenderer::Playing; });
    heard().clear();
}

bool ContractCase::isPlaying(uint index)
{
    const RendererProbe::Status now = status();
    return now.state == KelvoRenderer::Playing && now.index == index;
}
