// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QString>

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

private:
    QHash<QString, QString> m_told;
    bool m_hasChanged = false;
};
