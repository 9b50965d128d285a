// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// What somebody meant who wrote a word that there is none of.
namespace Spelling {
/// The known word that is closest; empty when none is close.
QString closest(const QString &word, const QStringList &known);
/// For the end of a message: "; did you mean "pauseAt"?", or the known words, or nothing where there are none.
QString suggestion(const QString &word, const QStringList &known);
} // namespace Spelling
