// SPDX-License-Identifier: MIT
// The text file of addresses that the user keeps.
#include "FuzzSupport.h"
#include "UriListFile.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto lines = UriListFile::read(Fuzz::file(Fuzz::bytes(data, size), QStringLiteral("uris.txt")));
    Fuzz::require(lines && lines->size() <= qsizetype(size));
    for (const QString &line : *lines)
        Fuzz::require(!line.contains(QLatin1Char('\n')));
    return 0;
}
