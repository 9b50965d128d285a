// SPDX-License-Identifier: MIT
#pragma once

#include "EventLine.h"

#include <QVariantList>

#include <chrono>
#include <functional>
#include <string_view>

class EventRing;

/// Gives events their time and puts them into the ring. Any thread.
class EventWriter
{
public:
    using Clock = std::chrono::steady_clock;

    /// The ring is not owned and must outlive the writer.
    /// @param appended  called after each event; may be empty
    EventWriter(EventRing &ring, Clock::time_point begin, std::function<void()> appended = {});

    void note(const QString &uuid, std::string_view kind, std::string_view name,
        const QVariantList &arguments = {}) const;
    /// An event of now, without its arguments.
    EventLine begin(const QString &uuid, std::string_view kind, std::string_view name) const;
    void append(EventLine &line) const;

private:
    EventRing &m_ring;
    const Clock::time_point m_begin;
    const std::function<void()> m_appended;
};
