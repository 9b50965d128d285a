// SPDX-License-Identifier: MIT
#pragma once

#include <QMetaType>
#include <QString>
#include <QVariant>

#include <chrono>
#include <string>
#include <string_view>

/// One event of a recording as its line of JSON; docs/recording.md describes it.
class EventLine
{
public:
    /// @param time  since the beginning of the recording
    /// @param uuid  of the renderer, source or playlist; empty for the process itself
    /// @param kind  and name: plain ASCII
    EventLine(
        std::chrono::nanoseconds time, const QString &uuid, std::string_view kind, std::string_view name);

    /// The next argument.
    void add(QMetaType type, const void *value);
    void add(const QVariant &value) { add(value.metaType(), value.constData()); }

    /// As in the field "time": seconds with six decimals, cut.
    static void appendSeconds(std::string &text, std::chrono::nanoseconds time);

    /// The whole line with its end. Nothing can be added after this.
    std::string_view finish();

private:
    std::string m_json;
    bool m_hasArguments = false;
};
