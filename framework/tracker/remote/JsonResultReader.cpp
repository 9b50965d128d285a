// SPDX-License-Identifier: MIT
#include "JsonResultReader.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace {
constexpr size_t deepest = 32;

QString noJson()
{
    return QStringLiteral("its answer is no JSON");
}

QString noResult()
{
    return QStringLiteral("its answer is no result of a query");
}
} // namespace

JsonResultReader::JsonResultReader(const RemoteLimits &limits)
    : ResultReader(limits)
{
}

QString JsonResultReader::take(const QByteArray &bytes)
{
    for (const char byte : bytes) {
        QString error = takeByte(byte);
        if (!error.isEmpty())
            return error;
    }
    return {};
}

QString JsonResultReader::finish()
{
    if (m_expected != Expected::Nothing || m_token != Token::None)
        return QStringLiteral("its answer ends before its end");
    return m_names.empty() ? noResult() : QString();
}

QString JsonResultReader::takeByte(char byte)
{
    if (++m_bytesSinceRow > m_limits.rowBytes)
        return tooLongRow();
    switch (m_token) {
    case Token::None:
        return takeBetween(byte);
    case Token::String:
        return takeInString(byte);
    case Token::Escape:
        return takeEscape(byte);
    case Token::CodeUnit:
        return takeCodeUnit(byte);
    case Token::Word:
        break;
    }
    if (std::isalnum(uchar(byte)) || std::strchr("+-.", byte)) {
        m_text.append(byte);
        return {};
    }
    const QString error = endWord();
    return error.isEmpty() ? takeBetween(byte) : error;
}

QString JsonResultReader::takeBetween(char byte)
{
    switch (byte) {
    case ' ':
    case '\t':
    case '\r':
    case '\n':
        return {};
    case '{':
    case '[':
        return begin(byte == '{');
    case '}':
    case ']':
        return end(byte == '}');
    case ':':
    case ',':
        return separate(byte);
    default:
        break;
    }
    const bool isKey = m_expected == Expected::Key || m_expected == Expected::KeyOrEnd;
    if (m_levels.empty() || !(expectsValue() || (isKey && byte == '"')))
        return noJson();
    m_text = byte == '"' ? QByteArray("") : QByteArray(1, byte);
    m_token = byte == '"' ? Token::String : Token::Word;
    return {};
}

QString JsonResultReader::takeInString(char byte)
{
    if (byte == '"')
        return endString();
    if (uchar(byte) < 0x20)
        return noJson();
    if (byte == '\\')
        m_token = Token::Escape;
    else
        m_text.append(byte);
    return {};
}

QString JsonResultReader::takeEscape(char byte)
{
    static const char letters[] = "\"\\/bfnrt";
    static const char meanings[] = "\"\\/\b\f\n\r\t";
    if (byte == 'u') {
        m_digits.clear();
        m_token = Token::CodeUnit;
        return {};
    }
    const char *const found = byte ? std::strchr(letters, byte) : nullptr;
    if (!found)
        return noJson();
    m_text.append(meanings[found - letters]);
    m_token = Token::String;
    return {};
}

QString JsonResultReader::takeCodeUnit(char byte)
{
    if (!std::isxdigit(uchar(byte)))
        return noJson();
    m_digits.append(byte);
    if (m_digits.size() < 4)
        return {};
    const auto unit = char16_t(m_digits.toUInt(nullptr, 16));
    const char16_t high = std::exchange(m_high, QChar::isHighSurrogate(unit) ? unit : char16_t(0));
    if (!m_high) {
        const char16_t pair[] = {high, unit};
        m_text.append(QChar::isLowSurrogate(unit) ? QString::fromUtf16(pair, 2).toUtf8()
                                                  : QString(QChar(unit)).toUtf8());
    }
    m_token = Token::String;
    return {};
}

QString JsonResultReader::begin(bool isObject)
{
    if (!expectsValue())
        return noJson();
    if (m_levels.size() >= deepest || (m_levels.empty() && !isObject))
        return noResult();
    if (isIn({"results", "bindings", ""})) {
        m_row.assign(m_names.size(), {});
        if (!isObject)
            return noResult();
    }
    m_levels.push_back({isObject, {}});
    m_expected = isObject ? Expected::KeyOrEnd : Expected::ValueOrEnd;
    return {};
}

QString JsonResultReader::end(bool isObject)
{
    const bool mayEnd = m_expected == Expected::CommaOrEnd
        || m_expected == (isObject ? Expected::KeyOrEnd : Expected::ValueOrEnd);
    if (!mayEnd || m_levels.empty() || m_levels.back().isObject != isObject)
        return noJson();
    m_levels.pop_back();
    if (isIn({"results", "bindings", ""})) {
        m_rows.push_back(std::exchange(m_row, {}));
        m_bytesSinceRow = 0;
    }
    endValue();
    return {};
}

QString JsonResultReader::separate(char byte)
{
    if (m_expected != (byte == ':' ? Expected::Colon : Expected::CommaOrEnd))
        return noJson();
    m_expected = byte == ':' || !m_levels.back().isObject ? Expected::Value : Expected::Key;
    return {};
}

QString JsonResultReader::endString()
{
    m_token = Token::None;
    if (!expectsValue()) {
        m_levels.back().key = std::exchange(m_text, {});
        m_expected = Expected::Colon;
        return {};
    }
    QString error = takeText();
    endValue();
    return error;
}

// A text that is a value.
QString JsonResultReader::takeText()
{
    if (isIn({"head", "vars", ""})) {
        m_names.push_back(std::exchange(m_text, {}));
        return int(m_names.size()) > m_limits.columns ? tooManyColumns() : QString();
    }
    constexpr size_t ofValue = 5;
    if (m_levels.size() != ofValue || m_levels.back().key != "value" || m_levels[0].key != "results"
        || m_levels[1].key != "bindings")
        return {};
    const auto found = std::find(m_names.begin(), m_names.end(), m_levels[ofValue - 2].key);
    const auto column = size_t(found - m_names.begin());
    if (column >= m_row.size())
        return QStringLiteral("it gives a value of a column that it did not name");
    m_row[column] = std::exchange(m_text, {});
    return {};
}

QString JsonResultReader::endWord()
{
    m_token = Token::None;
    const QByteArray word = std::exchange(m_text, {});
    const bool isNumber = std::all_of(word.begin(), word.end(),
        [](char byte) { return std::isdigit(uchar(byte)) || std::strchr("+-.eE", byte); });
    if (!isNumber && word != "true" && word != "false" && word != "null")
        return noJson();
    if (isIn({"boolean"}))
        return noResult();
    endValue();
    return {};
}

void JsonResultReader::endValue()
{
    m_expected = m_levels.empty() ? Expected::Nothing : Expected::CommaOrEnd;
}

bool JsonResultReader::expectsValue() const
{
    return m_expected == Expected::Value || m_expected == Expected::ValueOrEnd;
}

// Each is the key of a level from the outermost on; of an array it is empty.
bool JsonResultReader::isIn(std::initializer_list<const char *> keys) const
{
    return std::equal(
        m_levels.begin(), m_levels.end(), keys.begin(), keys.end(), [](const Level &level, const char *key) {
            return level.key == key && level.isObject == (*key != '\0');
        });
}
