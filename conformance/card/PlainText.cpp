// SPDX-License-Identifier: MIT
#include "PlainText.h"

#include <QChar>
#include <QStringList>

namespace {
/// Marks, embeddings, overrides and isolates, which change the direction of what follows.
bool isDirection(char32_t character)
{
    return character == 0x61C || character == 0x200E || character == 0x200F
        || (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
}

bool isHarmless(char32_t character)
{
    // Line and paragraph separators break lines in some programs.
    return character >= 0x20 && !(character >= 0x7F && character <= 0x9F) && !QChar::isNonCharacter(character)
        && !isDirection(character) && character != 0x2028 && character != 0x2029 && character != 0xFEFF;
}

QString visible(char32_t character)
{
    return QStringLiteral("\\u%1").arg(uint(character), 4, 16, QLatin1Char('0'));
}
} // namespace

QString plainText(const QString &text)
{
    QString plain;
    plain.reserve(text.size());
    // What is half a character becomes the mark for that.
    for (uint character : text.toUcs4()) {
        if (character == '\n' || character == '\t')
            plain += QLatin1Char(' ');
        else if (isHarmless(character))
            plain.append(QStringView(QChar::fromUcs4(character)));
        else
            plain += visible(character);
    }
    return plain;
}

QString plainLines(const QString &text)
{
    QStringList lines = text.split(QLatin1Char('\n'));
    for (QString &line : lines)
        line = plainText(line);
    return lines.join(QLatin1Char('\n'));
}
