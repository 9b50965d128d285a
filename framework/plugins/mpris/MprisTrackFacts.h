// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QString>

#include <utility>

/// What was told of a track, by the keys of KelvoRenderer::metadataChanged().
class MprisTrackFacts
{
public:
    void clear() { *this = {}; }
    /// Whether it is worth telling: something, and something else than before.
    bool take(const QString &key, const QString &text)
    {
        if (text.isEmpty() || m_told.value(key) == text)
            return false;
        m_hasChanged = m_hasChanged || m_told.contains(key);
        m_told.insert(key, text);
        return true;
    }
    /// Whether any of it has changed since it was first told.
    bool hasChanged() const { return m_hasChanged; }
    /// Whether a title has not been asked for yet of the track with that id.
    bool isTitleToAsk(const QString &id) { return std::exchange(m_untitled, id) != id; }

private:
    QHash<QString, QString> m_told;
    bool m_hasChanged = false;
    QString m_untitled; ///< id of the track whose title was asked for
};
