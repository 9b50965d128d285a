// SPDX-License-Identifier: MIT
#include "Spelling.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace {
/// How many letters must be changed, added or taken away to make one of the other; capitals count as small ones.
int distance(const QString &one, const QString &other)
{
    std::vector<int> row(size_t(other.size()) + 1);
    std::iota(row.begin(), row.end(), 0);
    for (const QChar letter : one) {
        int diagonal = row[0]++;
        for (qsizetype j = 0; j < other.size(); ++j) {
            const int change = diagonal + (letter.toLower() == other[j].toLower() ? 0 : 1);
            diagonal = row[size_t(j) + 1];
            row[size_t(j) + 1] = std::min({change, diagonal + 1, row[size_t(j)] + 1});
        }
    }
    return row.back();
}
} // namespace

QString Spelling::closest(const QString &word, const QStringList &known)
{
    constexpr int longest = 40;
    if (word.size() > longest)
        return {};
    // A third of the letters may be wrong.
    int least = int(word.size()) / 3 + 1;
    QString found;
    for (const QString &candidate : known) {
        const int far = distance(word, candidate);
        if (far < least) {
            least = far;
            found = candidate;
        }
    }
    return found;
}

QString Spelling::suggestion(const QString &word, const QStringList &known)
{
    if (known.isEmpty())
        return {};
    const QString meant = closest(word, known);
    return meant.isEmpty() ? QStringLiteral("; there are: ") + known.join(QStringLiteral(", "))
                           : QStringLiteral("; did you mean \"%1\"?").arg(meant);
}
