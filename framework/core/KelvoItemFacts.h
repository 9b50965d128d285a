// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoContent.h"
#include "KelvoCoreGlobal.h"

#include <QList>
#include <QString>
#include <QVariant>

#include <vector>

/// What a renderer has told about its item by metadataChanged().
///
/// For back ends. Whoever shows facts appends each one, so that what is told twice stands there twice: here a back
/// end asks whether a fact is news, and finds what it has told when somebody new chooses it.
class KELVO_CORE_EXPORT KelvoItemFacts
{
public:
    /// What one metadataChanged() tells.
    struct Fact
    {
        QString key; ///< "title", "duration" and so on, see KelvoRenderer::metadataChanged()
        QList<QVariant> values; ///< never empty
    };

    /// mediaChanged() is told. Another item of a playlist begins anew, the same one goes on; an item that belongs to
    /// no playlist always begins anew, as playlistChanged(nullptr) is told before it.
    void announce(const KelvoContent &content, bool belongsToPlaylist);
    /// Takes in a fact about the item announced last; true: it is to be told. News is a key, or another text of it:
    /// the first value is the one that is shown.
    bool take(const QString &key, const QList<QVariant> &values);
    /// Nothing counts as told any more.
    void clear() { m_facts.clear(); }
    /// Of the item announced last, each key once, in the order in which they became known.
    std::vector<Fact> told() const;

private:
    KelvoContent m_item;
    QUrl m_of; ///< what the facts are about: within one item, each entry of a list is another medium
    std::vector<Fact> m_facts;
};
