// SPDX-License-Identifier: MIT
#include "KelvoEvidenceSource.h"

#include <mutex>
#include <vector>

namespace {
struct Sources
{
    std::mutex mutex; ///< held while they are read, so that none goes meanwhile
    std::vector<KelvoEvidenceSource *> all;
};

/// Never destroyed: plug-ins may be unloaded after the destructors of statics.
Sources &sources()
{
    static Sources &instance = *new Sources;
    return instance;
}
} // namespace

KelvoEvidenceSource::KelvoEvidenceSource(QString fileName, std::function<QByteArray()> read)
    : m_fileName(std::move(fileName))
    , m_read(std::move(read))
{
    const std::lock_guard lock(sources().mutex);
    sources().all.push_back(this);
}

KelvoEvidenceSource::~KelvoEvidenceSource()
{
    const std::lock_guard lock(sources().mutex);
    std::erase(sources().all, this);
}

QList<KelvoEvidenceSource::File> KelvoEvidenceSource::readAll()
{
    const std::lock_guard lock(sources().mutex);
    QList<File> files;
    for (const KelvoEvidenceSource *source : sources().all) {
        const QByteArray contents = source->m_read();
        if (!contents.isEmpty())
            files.append({source->m_fileName, contents});
    }
    return files;
}
