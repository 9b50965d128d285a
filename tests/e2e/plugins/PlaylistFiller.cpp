// SPDX-License-Identifier: MIT
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoPlugin.h"
#include "KelvoRegistry.h"

#include <QPointer>
#include <QStandardItemModel>
#include <QUrl>

/// A back end for scenarios: puts the files of KELVO_TEST_FILES (URLs separated by blanks) into each empty playlist
/// that the user makes. It needs no library that would have to be scanned first.
class PlaylistFiller : public QObject, public KelvoPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KelvoPlugin_iid FILE "playlist-filler.json")
    Q_INTERFACES(KelvoPlugin)
public:
    bool start(KelvoRegistry *registry, QString *) override
    {
        connect(registry, &KelvoRegistry::playlistAdded, this, [this, registry](const QString &uuid) {
            const QPointer<KelvoPlaylist> playlist = registry->findPlaylistByUuid(uuid);
            // Later: the playlist's publication comes first, as it does before a user appends something.
            QMetaObject::invokeMethod(
                this, [playlist] { fill(playlist); }, Qt::QueuedConnection);
        });
        return true;
    }

    void stop() override { disconnect(); }

private:
    static void fill(KelvoPlaylist *playlist)
    {
        const auto *own = qobject_cast<KelvoGeneralSourcePlaylist *>(playlist);
        auto *model = own ? qobject_cast<QStandardItemModel *>(own->underlyingModel()) : nullptr;
        if (!model)
            return;
        const QStringList urls = qEnvironmentVariable("KELVO_TEST_FILES").split(u' ', Qt::SkipEmptyParts);
        for (const QString &url : urls) {
            const QString title = QUrl(url).fileName().section(u'.', 0, 0);
            model->appendRow({new QStandardItem(url), new QStandardItem(title), new QStandardItem(url)});
        }
    }
};

#include "PlaylistFiller.moc"
