// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

/// The encoding that a text was most likely written in, by the statistics of languages:
/// UchardetCharsetGuess.cpp in a build with the library for that, otherwise NoCharsetGuess.cpp, which has none. Any thread.
namespace CharsetGuess {
/// Its name, as iconv knows it; empty when there is none that is more likely than others.
QByteArray of(const QByteArray &bytes);
} // namespace CharsetGuess
