// SPDX-License-Identifier: MIT
#pragma once

#include <QPair>
#include <QStringList>

/// What two orders have in common.
namespace CommonSequence {
/// The longest sequence of texts that both lists have in the same order, as pairs of indexes into the first and the
/// second. Of very long lists that differ in very much a sequence that need not be the longest.
QList<QPair<qsizetype, qsizetype>> of(const QStringList &first, const QStringList &second);

/// The indexes of the longest part of the numbers that rises.
QList<qsizetype> longestRising(const QList<qint64> &numbers);
} // namespace CommonSequence
