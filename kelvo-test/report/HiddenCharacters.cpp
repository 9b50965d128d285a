// SPDX-License-Identifier: MIT
#include "HiddenCharacters.h"

namespace {
bool isHidden(char32_t character)
{
    // They join letters in some scripts, and pictures, and do nothing else.
    if (character == U'\u200c' || character == U'\u200d')
        return false;
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format: // marks of direction, among others
    case QChar::Other_Surrogate: // one without its other half
    case QChar::Other_PrivateUse:
    case QChar::Other_NotAssigned:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}
} // namespace

QString HiddenCharacters::shown(const QString &text)
{
    QString result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isPair
            = text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        const QStringView units = QStringView(text).sliced(i, isPair ? 2 : 1);
        i += units.size() - 1;
        if (isHidden(isPair ? QChar::surrogateToUcs4(units[0], units[1]) : units[0].unicode())) {
            for (const QChar unit : units)
                result += QStringLiteral("\\u%1").arg(int(unit.unicode()), 4, 16, QLatin1Char('0'));
        } else {
            result += units;
        }
    }
    return result;
}
