// SPDX-License-Identifier: MIT
#include "EventLine.h"

#include "JsonText.h"

#include <algorithm>
#include <array>
#include <utility>

using namespace std::chrono_literals;

namespace {
// What most events need.
constexpr size_t usualLength = 400;
} // namespace

EventLine::EventLine(
    std::chrono::nanoseconds time, const QString &uuid, std::string_view kind, std::string_view name)
{
    m_json.reserve(usualLength);
    m_json += R"({"time":)";
    appendSeconds(m_json, std::max(time, 0ns));
    m_json += R"(,"uuid":)";
    JsonText::appendText(m_json, uuid);
    m_json += R"(,"kind":)";
    JsonText::appendName(m_json, kind);
    m_json += R"(,"name":)";
    JsonText::appendName(m_json, name);
    m_json += R"(,"arguments":[)";
}

void EventLine::add(QMetaType type, const void *value)
{
    if (std::exchange(m_hasArguments, true))
        m_json += ',';
    JsonText::appendValue(m_json, type, value);
}

std::string_view EventLine::finish()
{
    m_json += "]}\n";
    return m_json;
}

void EventLine::appendSeconds(std::string &text, std::chrono::nanoseconds time)
{
    const auto whole = std::chrono::floor<std::chrono::seconds>(time);
    JsonText::appendNumber(text, whole.count());
    std::array<char, 7> fraction{'.', '0', '0', '0', '0', '0', '0'};
    auto rest = std::chrono::duration_cast<std::chrono::microseconds>(time - whole).count();
    for (size_t digit = fraction.size() - 1; digit > 0; --digit, rest /= 10)
        fraction[digit] = char('0' + rest % 10);
    text.append(fraction.data(), fraction.size());
}
