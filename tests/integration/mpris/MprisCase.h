// SPDX-License-Identifier: MIT
#pragma once

#include "FakeMprisPlayer.h"
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "RendererProbe.h"

#include <QPointer>
#include <QStandardItemModel>
#include <QTest>

#include <memory>

/// The plug-in, loaded anew for each test, on a session bus that has only the players of the test.
class MprisCase : public KelvoTestCase
{
    Q_OBJECT
protected:
    static constexpr auto Stopped = KelvoRenderer::Stopped;
    static constexpr auto Playing = KelvoRenderer::Playing;
    static constexpr auto Paused = KelvoRenderer::Paused;
    static constexpr auto Transitioning = KelvoRenderer::Transitioning;

    KelvoRenderer *find(const QString &label) const
    {
        return m_registry->findRendererByUuid(QStringLiteral("mpris:") + label);
    }
    QStringList names() const
    {
        QStringList list;
        for (const KelvoRenderer *renderer : m_registry->renderers())
            list.append(renderer->name());
        list.sort();
        return list;
    }
    /// Listens to the renderer of that player once it is there.
    bool listen(const QString &label = QStringLiteral("fake"))
    {
        if (!QTest::qWaitFor([&] { return find(label) != nullptr; }))
            return false;
        m_renderer = find(label);
        m_heard = std::make_unique<RendererProbe>(*m_renderer);
        return true;
    }
    bool playing(const QString &url = QStringLiteral("http://media/song"))
    {
        m_renderer->playUri(QUrl(url));
        const bool plays = QTest::qWaitFor([this] { return m_heard->state() == KelvoRenderer::Playing; });
        m_heard->clear();
        return plays;
    }

    /// A list of http://media/0 and so on, of which the first item plays then.
    bool playingListOf(int count)
    {
        m_playlist = std::make_unique<KelvoGeneralSourcePlaylist>(
            KelvoPlaylist::getNewPlaylistId(), QStringLiteral("list"), QStringLiteral("KelvoTrackerSource"));
        auto *model = new QStandardItemModel(m_playlist.get());
        for (int i = 0; i < count; ++i)
            model->appendRow({new QStandardItem(QString::number(i)), new QStandardItem(QString::number(i)),
                new QStandardItem(QStringLiteral("http://media/%1").arg(i))});
        m_playlist->setUnderlyingModel(model);
        m_renderer->assignPlaylist(m_playlist.get());
        m_renderer->play();
        const bool plays = QTest::qWaitFor([this] { return m_heard->state() == KelvoRenderer::Playing; });
        m_heard->clear();
        return plays;
    }
    /// Whether the renderer answers with a position of at least so many seconds, in time.
    bool isPastSecond(uint seconds)
    {
        return QTest::qWaitFor([this, seconds] {
            m_renderer->getPosition(m_heard.get(), "positionAnswer(uint)");
            return !m_heard->positionAnswers.isEmpty() && m_heard->positionAnswers.constLast() >= seconds;
        });
    }

    std::unique_ptr<KelvoGeneralSourcePlaylist> m_playlist;
    std::unique_ptr<KelvoRegistry> m_registry;
    QPointer<KelvoRenderer> m_renderer;
    std::unique_ptr<RendererProbe> m_heard;

protected Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_registry = std::make_unique<KelvoRegistry>();
        m_registry->loadPlugin(QStringLiteral("mpris.so"));
        QTRY_COMPARE(m_registry->loadedPlugins(), QStringList{"mpris.so"});
    }
    void cleanup()
    {
        m_registry.reset();
        m_playlist.reset();
        QVERIFY(!m_renderer);
        const QStringList violations = m_heard ? m_heard->violations : QStringList();
        m_heard.reset();
        QCOMPARE(violations, QStringList());
    }
};
