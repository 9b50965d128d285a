// SPDX-License-Identifier: MIT
#include "TextRepair.h"

#include "CharsetGuess.h"
#include "GlibHandles.h"
#include "store/FileUri.h"

#include <QUrl>

#include <glib.h>

#include <algorithm>

namespace {
constexpr qsizetype maximumLength = 1000;
constexpr char western[] = "WINDOWS-1252";

bool isHigh(char c)
{
    return uchar(c) >= 0x80;
}

// Western texts have a letter with an accent here and there; in Cyrillic, Greek or Asian ones of eight-bit
// encodings most letters lie in the upper half. Only there a guess by statistics is better than Windows-1252.
bool looksForeign(const QByteArray &bytes)
{
    const auto high = std::count_if(bytes.begin(), bytes.end(), isHigh);
    const auto letters
        = high + std::count_if(bytes.begin(), bytes.end(), [](char c) { return g_ascii_isalpha(c); });
    return high >= 4 && high * 2 > letters;
}

QString convert(const QByteArray &bytes, const QByteArray &encoding)
{
    gsize written = 0;
    const GlibHandles::Text text(g_convert_with_fallback(
        bytes.constData(), bytes.size(), "UTF-8", encoding.constData(), "?", nullptr, &written, nullptr));
    return text ? QString::fromUtf8(text.get(), qsizetype(written)) : QString();
}
} // namespace

QString TextRepair::decode(const QByteArray &bytes, const QByteArray &more)
{
    if (g_utf8_validate(bytes.constData(), bytes.size(), nullptr))
        return tidy(QString::fromUtf8(bytes));
    QString text;
    if (looksForeign(bytes)) {
        const QByteArray encoding = CharsetGuess::of(bytes + ' ' + more);
        if (!encoding.isEmpty())
            text = convert(bytes, encoding);
    }
    if (text.isEmpty())
        text = convert(bytes, western);
    return tidy(text.isEmpty() ? QString::fromLatin1(bytes) : text);
}

QString TextRepair::tidy(const QString &text)
{
    // Cut first: what is longer than this is no title, and normalising it would take long.
    QString result = text.left(2 * maximumLength).normalized(QString::NormalizationForm_C);
    for (QChar &c : result) {
        if (c.category() == QChar::Other_Control || c == QChar::LineSeparator
            || c == QChar::ParagraphSeparator)
            c = QLatin1Char(' ');
    }
    return result.trimmed().left(maximumLength);
}

QString TextRepair::fileName(const QByteArray &uri)
{
    QByteArray path = FileUri::toPath(uri);
    if (path.isEmpty())
        path = QByteArray::fromPercentEncoding(QUrl::fromEncoded(uri).path(QUrl::FullyEncoded).toLatin1());
    const QString name = decode(path.mid(path.lastIndexOf('/') + 1));
    return name.isEmpty() ? decode(uri) : name;
}
