// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// What libFuzzer calls with data that it has made up. A crash, a sanitizer's report, a time above the limit and abort()
/// are findings.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace Fuzz {

/// A copy of the data: a read beyond its end shows.
QByteArray bytes(const uint8_t *data, size_t size);

/// Puts the data into a file of that name, in the folder for temporary files. Returns its path.
QString file(const QByteArray &data, const QString &name);

/// Ends the program with a finding when what was read breaks a promise of its reader.
inline void require(bool isKept)
{
    if (!isKept)
        abort();
}

/// Whether a text can be written in XML and shown on one line: no control character, no half of a character.
bool isClean(const QString &text);

} // namespace Fuzz
