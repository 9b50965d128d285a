// SPDX-License-Identifier: MIT
#include "FakePlaylist.h"

#include <utility>

FakePlaylist::FakePlaylist(QString uuid, QString name, const QStringList &titles)
    : m_uuid(std::move(uuid))
    , m_name(std::move(name))
    , m_model(0, DurationColumn + 1)
{
    for (const QString &title : titles) {
        const QString id = QStringLiteral("item-%1").arg(m_model.rowCount());
        m_model.appendRow({new QStandardItem(id), new QStandardItem(title),
            new QStandardItem(QStringLiteral("file:///%1.ogg").arg(title)),
            new QStandardItem(QStringLiteral("60"))});
    }
}

QStringList FakePlaylist::takeCalls()
{
    return std::exchange(m_calls, {});
}

KelvoMediaInfo FakePlaylist::mediaInfoAt(uint index) const
{
    if (index >= uint(m_model.rowCount()))
        return {};
    const auto text = [&](int column) {
        return m_model.item(int(index), column)->text();
    };
    return {text(IdColumn), QUrl(text(UriColumn)), text(TitleColumn), 60};
}

void FakePlaylist::shuffle()
{
    m_calls.append(QStringLiteral("shuffle()"));
    m_shuffled = true;
}

void FakePlaylist::unshuffle()
{
    m_calls.append(QStringLiteral("unshuffle()"));
    m_shuffled = false;
}

void FakePlaylist::setRepeatMode(int mode)
{
    m_calls.append(QStringLiteral("setRepeatMode(%1)").arg(mode));
    m_repeatMode = mode;
}

void FakePlaylist::sort(const QString &key, int order)
{
    m_calls.append(QStringLiteral("sort(%1,%2)").arg(key).arg(order));
    m_shuffled = false;
}

void FakePlaylist::removeItem(uint index)
{
    m_calls.append(QStringLiteral("removeItem(%1)").arg(int(index)));
}

void FakePlaylist::removeItems(uint from, uint to)
{
    m_calls.append(QStringLiteral("removeItems(%1,%2)").arg(from).arg(to));
}

void FakePlaylist::clear()
{
    m_calls.append(QStringLiteral("clear()"));
}
