// SPDX-License-Identifier: MIT
#include "BoundedFileStream.h"

namespace {
// The library looks for frames and pages in pieces of a kilobyte, from several places of the file.
constexpr long readsOfAnyFile = 100'000;
constexpr long bytesForARead = 64;

// By its name alone the library would open the file for writing too.
constexpr bool isReadOnly = true;
} // namespace

BoundedFileStream::BoundedFileStream(TagLib::FileName path)
    : TagLib::FileStream(path, isReadOnly)
    , m_mostReads(readsOfAnyFile + length() / bytesForARead)
{
}

TagLib::ByteVector BoundedFileStream::readBlock(unsigned long length)
{
    ++m_reads;
    if (isExhausted())
        return {};
    TagLib::ByteVector bytes = TagLib::FileStream::readBlock(length);
    if (bytes.isEmpty() && length > 0)
        ++m_missed;
    return bytes;
}
