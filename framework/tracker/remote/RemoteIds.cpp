// SPDX-License-Identifier: MIT
#include "RemoteIds.h"

#include <QHash>

#include <mutex>
#include <vector>

namespace {
struct Numbers
{
    std::mutex mutex;
    QHash<QUrl, QHash<QByteArray, int>> ids;
    std::vector<RemoteIds::Resource> resources;
};

Numbers &numbers()
{
    static Numbers all;
    return all;
}
} // namespace

int RemoteIds::idOf(const QUrl &library, const QByteArray &iri)
{
    Numbers &all = numbers();
    const std::lock_guard lock(all.mutex);
    QHash<QByteArray, int> &ids = all.ids[library];
    const auto known = ids.constFind(iri);
    if (known != ids.constEnd())
        return *known;
    if (all.resources.size() >= size_t(most))
        return 0;
    const int id = first + int(all.resources.size());
    ids.insert(iri, id);
    all.resources.push_back({library, iri});
    return id;
}

std::optional<RemoteIds::Resource> RemoteIds::find(int id)
{
    if (!isRemote(id))
        return {};
    Numbers &all = numbers();
    const std::lock_guard lock(all.mutex);
    const auto index = size_t(id - first);
    return index < all.resources.size() ? std::optional(all.resources[index]) : std::nullopt;
}
