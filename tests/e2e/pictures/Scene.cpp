// SPDX-License-Identifier: MIT
#include "Scene.h"

#include "KelvoRegistry.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QPainter>

namespace {
QStringList titles()
{
    return {QStringLiteral("First Tone"), QStringLiteral("Second Tone"),
        QStringLiteral("Ein längerer Titel, größer"), QStringLiteral("أغنية طويلة"),
        QStringLiteral("夜の歌")};
}

QByteArray thumbnail()
{
    QImage image(120, 120, QImage::Format_RGB32);
    image.fill(QColor(0x3b, 0x6a, 0xa3));
    QPainter(&image).fillRect(30, 30, 60, 60, QColor(0xf2, 0xb8, 0x4b));
    QByteArray data;
    QBuffer buffer(&data);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return data;
}

/// Into the home of this run.
void writeUriList()
{
    QFile file(QDir::homePath() + QStringLiteral("/qkelvo-gui-uris.txt"));
    if (!file.open(QIODevice::WriteOnly))
        qFatal("no list of URIs");
    file.write("http://host/song.ogg\nfile:///tmp/list.pls\n");
}
} // namespace

Scene::Scene()
    : m_renderer(QStringLiteral("renderer-1"), QStringLiteral("KelvoGstRenderer"))
    , m_otherRenderer(QStringLiteral("renderer-2"), QStringLiteral("Simulator A"))
    , m_playlist(QStringLiteral("playlist-1"), QStringLiteral("Evening songs"), titles())
    , m_otherPlaylist(QStringLiteral("playlist-2"), QStringLiteral("Films"))
    , m_source(QStringLiteral("source-1"), QStringLiteral("tracker"), {QStringLiteral("deviceType")})
    , m_otherSource(QStringLiteral("source-2"), QStringLiteral("Media server of the room"))
{
    KelvoRegistry *registry = KelvoRegistry::instance();
    for (RecordingRenderer *renderer : {&m_renderer, &m_otherRenderer})
        registry->addRenderer(renderer);
    for (FakePlaylist *playlist : {&m_playlist, &m_otherPlaylist})
        registry->addPlaylist(playlist);
    for (RecordingSource *source : {&m_source, &m_otherSource})
        registry->addSource(source);
    for (const QString &title : titles())
        m_results.appendRow({new QStandardItem(title), new QStandardItem(title)});
    writeUriList();
    m_console = std::make_unique<ConsoleFixture>();
    m_console->find<QWidget>("m_music_playlistView")->setFocus();
    showPlayback();
    showResults();
}

Scene::~Scene()
{
    m_console.reset();
}

void Scene::showPlayback()
{
    constexpr int hour = 3600;
    Q_EMIT m_renderer.stateChanged(KelvoRenderer::Playing);
    window()->showPlaylist(m_playlist.itemModel());
    window()->updateCurrentPlaylistIndex(1);
    for (const auto &[key, value] : {std::pair("title", "Second Tone"), {"artist", "Bob Example"},
             {"album", "Two Tones"}, {"audio-output", "alsasink"}, {"video-output", "no video output"}})
        window()->showMetadata(QString::fromLatin1(key), QString::fromLatin1(value));
    window()->showDuration(2 * hour - 1);
    window()->showPosition(hour + 754);
    Q_EMIT m_renderer.stateChanged(KelvoRenderer::Paused); // "Resume" is the longest of its captions
    // As each renderer that is chosen tells.
    Q_EMIT m_renderer.kelvoPropertyChanged(KelvoRenderer::KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE, false);
}

void Scene::showResults()
{
    window()->showQueryResults(&m_results);
    window()->updateQueryErrorLabel(QStringLiteral("The store is busy"));
    window()->showFetchRestButton();
    window()->showBrowseResults(&m_results);
    window()->updateBrowseErrorLabel(QStringLiteral("Browsing failed"));
    window()->addBrowseMetadata(QStringLiteral("title"), QStringLiteral("Second Tone"));
    window()->showBrowseResultThumbnail(thumbnail());
    window()->showBrowseCancelButton();
}
