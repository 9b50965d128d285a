// SPDX-License-Identifier: MIT
#pragma once

#include <tfilestream.h>

/// A file for the tag library to read, which seems to end where it is read more often than tags need it: a few hundred bytes
/// can claim thousands of entries again and again, for which the library would take gigabytes.
class BoundedFileStream : public TagLib::FileStream
{
public:
    /// Nobody writes to it.
    explicit BoundedFileStream(TagLib::FileName path);

    TagLib::ByteVector readBlock(unsigned long length) override;
    /// It was read too often: what is known of it is not to be trusted.
    bool isExhausted() const { return m_reads > m_mostReads || m_missed > MostMissed; }

private:
    static constexpr long MostMissed = 2000; ///< reads behind its end

    const long m_mostReads;
    long m_reads = 0;
    long m_missed = 0;
};
