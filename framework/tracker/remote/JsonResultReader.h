// SPDX-License-Identifier: MIT
#pragma once

#include "ResultReader.h"

#include <initializer_list>

/// SPARQL 1.1 Query Results JSON Format: the head with the names first. Reads byte by byte, since Qt's reader wants all of
/// a document.
class JsonResultReader : public ResultReader
{
public:
    explicit JsonResultReader(const RemoteLimits &limits);

    QString take(const QByteArray &bytes) override;
    QString finish() override;

private:
    /// What may come next, besides white space.
    enum class Expected { Value, ValueOrEnd, Key, KeyOrEnd, Colon, CommaOrEnd, Nothing };
    enum class Token { None, String, Escape, CodeUnit, Word };
    struct Level
    {
        bool isObject = false;
        QByteArray key; ///< of the member that is being read; empty in an array
    };

    QString takeByte(char byte);
    QString takeBetween(char byte);
    QString takeInString(char byte);
    QString takeEscape(char byte);
    QString takeCodeUnit(char byte);
    QString begin(bool isObject);
    QString end(bool isObject);
    QString separate(char byte);
    QString endString();
    QString takeText();
    QString endWord();
    void endValue();
    bool expectsValue() const;
    bool isIn(std::initializer_list<const char *> keys) const;

    std::vector<Level> m_levels;
    Expected m_expected = Expected::Value;
    Token m_token = Token::None;
    QByteArray m_text; ///< of the token
    QByteArray m_digits; ///< of a code unit
    char16_t m_high = 0; ///< the first half of a character of two
    qsizetype m_bytesSinceRow = 0;
    RemoteRow m_row;
};
