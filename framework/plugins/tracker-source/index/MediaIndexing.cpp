// SPDX-License-Identifier: MIT
#include "MediaIndexing.h"

#include "IndexSettings.h"
#include "Indexer.h"
#include "MediaItem.h"
#include "MediaReader.h"
#include "store/FileUri.h"

#include <QFile>
#include <QUrl>

std::shared_ptr<StoreIndexer> MediaIndexing::start(
    std::shared_ptr<StoreSession> session, Report report, std::shared_ptr<StoreIndexer> previous) const
{
    return Indexer::start(
        std::move(session), IndexSettings::fromEnvironment(), std::move(report), std::move(previous));
}

bool MediaIndexing::isLengthCounted(const QUrl &url) const
{
    MediaItem item;
    item.kind = MediaKind::Song;
    item.path = QFile::encodeName(url.toLocalFile());
    item.uri = FileUri::fromPath(item.path);
    return url.isLocalFile() && MediaReader().read(&item) && item.isLengthCounted;
}
