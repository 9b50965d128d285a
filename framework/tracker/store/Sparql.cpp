// SPDX-License-Identifier: MIT
#include "Sparql.h"

#include <QDateTime>

#include <algorithm>
#include <atomic>
#include <chrono>

namespace {
// What may not stand in a text as it is, and the letters that stand for it (SPARQL 1.1, section 19.7).
constexpr QByteArrayView plainCharacters("\b\t\n\f\r\"'\\");
constexpr QByteArrayView escapeLetters("btnfr\"'\\");
} // namespace

QByteArray Sparql::literal(const QByteArray &utf8)
{
    QByteArray result("\"");
    result.reserve(utf8.size() + 2);
    for (const char c : utf8) {
        if (const qsizetype at = plainCharacters.indexOf(c); at >= 0)
            result.append('\\').append(escapeLetters[at]);
        else if (c != '\0')
            result.append(c);
    }
    return result.append('"');
}

QByteArray Sparql::literal(const QString &text)
{
    return literal(text.toUtf8());
}

QByteArray Sparql::iri(const QByteArray &text)
{
    static const QByteArray forbidden(" <>\"{}|^`\\");
    QByteArray result("<");
    for (const char c : text) {
        if (uchar(c) <= 0x20 || forbidden.contains(c))
            result += '%' + QByteArray::number(uchar(c), 16).rightJustified(2, '0').toUpper();
        else
            result += c;
    }
    return result + '>';
}

namespace {
constexpr qint64 microsecondsPerSecond = 1'000'000;

qint64 clockTime()
{
    using namespace std::chrono;
    return duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
}
} // namespace

qint64 Sparql::nextTime(qint64 now, qint64 last)
{
    const qint64 next = std::max(now, last + 1);
    return next % microsecondsPerSecond ? next : next + 1;
}

QByteArray Sparql::now()
{
    static std::atomic<qint64> last{0};
    qint64 before = last;
    qint64 time = nextTime(clockTime(), before);
    while (!last.compare_exchange_weak(before, time))
        time = nextTime(clockTime(), before);
    const QDateTime second = QDateTime::fromSecsSinceEpoch(time / microsecondsPerSecond, Qt::UTC);
    const QByteArray fraction = QByteArray::number(time % microsecondsPerSecond).rightJustified(6, '0');
    return '"' + second.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")).toLatin1() + '.' + fraction + "Z\"";
}
