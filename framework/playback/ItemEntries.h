// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoContent.h"
#include "KelvoError.h"
#include "KelvoMediaInfo.h"

#include <QList>
#include <QUrl>

#include <optional>

/// The item in play as what is played one after the other: itself, or the entries of the list that it turns out to be.
///
/// Until the first entry plays, the list is searched for one, and what does not play is told in one piece.
class ItemEntries
{
public:
    /// Another item, or the same one from its beginning. `entries`: of one that is known to be a list.
    void begin(const KelvoMediaInfo &item, const QList<QUrl> &entries = {});
    /// It is a list of these, at least one.
    void becomeList(const QList<QUrl> &entries);
    void goTo(int entry) { m_entry = entry; }

    const KelvoMediaInfo &item() const { return m_item; }
    bool isList() const { return m_isList; }
    /// Place of the entry in play.
    int entry() const { return m_entry; }
    bool hasNext() const { return m_entry + 1 < m_entries.size(); }
    const QUrl &uri() const { return m_entries.at(m_entry); }
    /// Of the entry in play. An entry has no content type: the item's is that of the list.
    KelvoContent content() const;

    /// Whether it is still open that the item is a list.
    bool mayBeList() const { return !m_isList && !m_isLookedInto; }
    /// It is looked into now, where need be because of how it failed as a medium.
    void lookInto(const KelvoError &failure = {});
    /// The failure it was looked into for, once.
    KelvoError takeHeldFailure();

    /// An entry plays.
    void notePlaying() { m_hasPlayed = true; }
    bool hasPlayed() const { return m_hasPlayed; }
    /// The entry is passed over in the search. How far that has come, 0..1.
    float passOver(const KelvoError &failure);
    /// What is to be told of those passed over, once.
    std::optional<KelvoError> takePassedOver();

private:
    KelvoMediaInfo m_item;
    QList<QUrl> m_entries{QUrl()}; ///< never empty
    int m_entry = 0;
    bool m_isList = false;
    bool m_isLookedInto = false; ///< what fails from now on is a medium
    bool m_hasPlayed = false;
    KelvoError m_heldFailure;
    int m_passedOver = 0;
    KelvoError m_firstFailure;
};
