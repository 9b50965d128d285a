// SPDX-License-Identifier: MIT
#pragma once

#include "ItemRenderer.h"
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoTestCase.h"
#include "RemotePlayer.h"
#include "RendererProbe.h"
#include "ScriptedTransport.h"

#include <QStandardItemModel>
#include <QTest>

#include <memory>

using States = QList<KelvoRenderer::State>;
using enum KelvoRenderer::State;

/// A renderer over a transport that says what the test lets it say.
class RemoteCase : public KelvoTestCase
{
    Q_OBJECT
protected:
    void playing(const QUrl &uri = QUrl("http://media/song"))
    {
        m_renderer->playUri(uri);
        say(Playing);
        flush();
        m_transport->calls.clear();
        m_heard->clear();
    }
    void assign(int count)
    {
        m_playlist = std::make_unique<KelvoGeneralSourcePlaylist>(
            KelvoPlaylist::getNewPlaylistId(), QStringLiteral("list"), QStringLiteral("KelvoTrackerSource"));
        auto *model = new QStandardItemModel(m_playlist.get());
        for (int i = 0; i < count; ++i) {
            model->appendRow({new QStandardItem(QString::number(i)), new QStandardItem(QString::number(i)),
                new QStandardItem(QStringLiteral("http://media/%1").arg(i))});
        }
        m_playlist->setUnderlyingModel(model);
        m_renderer->assignPlaylist(m_playlist.get());
    }
    void say(KelvoRenderer::State state) { Q_EMIT m_transport->stateReported(m_transport->epoch(), state); }
    void flush() { QCoreApplication::processEvents(); }
    /// Lets that time pass; for what must not happen meanwhile.
    bool waitMs(int milliseconds)
    {
        QElapsedTimer timer;
        timer.start();
        return QTest::qWaitFor([&] { return timer.elapsed() >= milliseconds; }, 5 * milliseconds);
    }
    double position()
    {
        const qsizetype before = m_heard->propertyAnswers.size();
        m_renderer->kelvoProperty(
            KelvoRenderer::PropertyPosition, m_heard.get(), "propertyAnswer(QString,QVariant)");
        if (!QTest::qWaitFor([&] { return m_heard->propertyAnswers.size() > before; }))
            return -1;
        return m_heard->propertyAnswers.constLast().second.toDouble();
    }

    ScriptedTransport *m_transport = nullptr;
    std::unique_ptr<ItemRenderer> m_renderer;
    std::unique_ptr<RendererProbe> m_heard;
    std::unique_ptr<KelvoGeneralSourcePlaylist> m_playlist;

protected Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        auto transport = std::make_unique<ScriptedTransport>();
        m_transport = transport.get();
        m_renderer = std::make_unique<ItemRenderer>(
            std::make_unique<RemotePlayer>(std::move(transport), QStringLiteral("Player")),
            QStringLiteral("remote"));
        m_heard = std::make_unique<RendererProbe>(*m_renderer);
    }
    void cleanup()
    {
        QCOMPARE(m_heard->violations, QStringList());
        m_renderer.reset();
        m_heard.reset();
        m_playlist.reset();
    }
};
