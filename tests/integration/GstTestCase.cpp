// SPDX-License-Identifier: MIT
#include "GstTestCase.h"

#include <QDir>
#include <QFile>
#include <QStandardItemModel>
#include <QTest>

#include <algorithm>

namespace {
const QString pluginFile = QStringLiteral("gst-renderer.so");
}

QString GstTestCase::mediaFile(const QString &name)
{
    return QStringLiteral(KELVO_TEST_MEDIA "/") + name;
}

QUrl GstTestCase::media(const QString &name)
{
    return QUrl::fromLocalFile(mediaFile(name));
}

QList<QUrl> GstTestCase::media(const QStringList &names)
{
    QList<QUrl> urls;
    for (const QString &name : names)
        urls.append(media(name));
    return urls;
}

std::unique_ptr<KelvoGeneralSourcePlaylist> GstTestCase::makePlaylist(const QList<QUrl> &urls)
{
    auto playlist = std::make_unique<KelvoGeneralSourcePlaylist>(
        KelvoPlaylist::getNewPlaylistId(), QStringLiteral("test list"), QStringLiteral("test source"));
    auto *model = new QStandardItemModel(int(urls.count()), 4, playlist.get());
    model->setHorizontalHeaderLabels(
        {QStringLiteral("id"), QStringLiteral("title"), QStringLiteral("url"), QStringLiteral("duration")});
    for (int row = 0; row < urls.count(); ++row) {
        model->setData(model->index(row, 0), row);
        model->setData(model->index(row, 1), urls.at(row).fileName());
        model->setData(model->index(row, 2), urls.at(row).toString());
        model->setData(model->index(row, 3), 2);
    }
    playlist->setUnderlyingModel(model);
    return playlist;
}

bool GstTestCase::loadRenderer()
{
    m_registry = std::make_unique<KelvoRegistry>();
    m_registry->loadPlugin(pluginFile);
    const auto found = [this] {
        return !m_registry->renderers().isEmpty();
    };
    if (!QTest::qWaitFor(found, 20000))
        return false;
    m_renderer = m_registry->renderers().constFirst();
    m_recorder = std::make_unique<RendererRecorder>(m_renderer);
    return true;
}

bool GstTestCase::engineRuns()
{
    return threadRuns("gst-engine");
}

bool GstTestCase::threadRuns(const QByteArray &name)
{
    return threadsNamed(name) > 0;
}

int GstTestCase::threadsNamed(const QByteArray &name)
{
    const QDir threads(QStringLiteral("/proc/self/task"));
    const QStringList ids = threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    return int(std::count_if(ids.cbegin(), ids.cend(), [&](const QString &id) {
        QFile comm(threads.filePath(id + QStringLiteral("/comm")));
        return comm.open(QIODevice::ReadOnly) && comm.readAll().trimmed() == name;
    }));
}

void GstTestCase::init()
{
    KelvoTestCase::init();
    QVERIFY(loadRenderer());
}

void GstTestCase::cleanup()
{
    m_recorder.reset();
    m_registry.reset();
}
