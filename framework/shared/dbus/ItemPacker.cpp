// SPDX-License-Identifier: MIT
#include "ItemPacker.h"

#include "ExportedPlaylist.h"

#include <QElapsedTimer>

using namespace PlaylistProtocol;

namespace {
constexpr qint64 sliceTime = 4; // milliseconds
constexpr uint itemsBetweenLooks = 16; // at the clock
} // namespace

ItemPacker::ItemPacker(const ExportedPlaylist *playlist)
    : m_playlist(playlist)
    , m_count(playlist->itemCount())
    , m_revision(playlist->revision())
{
}

bool ItemPacker::isOf(const ExportedPlaylist *playlist) const
{
    return m_playlist == playlist && (m_state == State::Going || playlist->revision() == m_revision);
}

ItemPacker::State ItemPacker::goOn()
{
    if (m_state == State::Going)
        m_state = packSlice();
    return m_state;
}

ItemPacker::State ItemPacker::packSlice()
{
    if (!m_playlist || m_playlist->revision() != m_revision)
        return State::Changed;
    if (m_count > maxItems)
        return State::TooLong;
    QElapsedTimer timer;
    timer.start();
    while (m_packed < m_count && (m_packed % itemsBetweenLooks != 0 || timer.elapsed() < sliceTime)) {
        const SharedItem item = m_playlist->itemAt(m_packed++);
        m_characters += item.characters();
        if (m_characters > maxCharacters)
            return State::TooLong;
        m_writer.add(item);
    }
    m_writer.flush();
    if (m_writer.isGood() && m_packed < m_count)
        return State::Going;
    m_file = m_writer.finish();
    return m_file.isValid() ? State::Done : State::Failed;
}
