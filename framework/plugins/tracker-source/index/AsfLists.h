// SPDX-License-Identifier: MIT
#pragma once

#include <tiostream.h>

/// The lists of tags in the header of an ASF file (.wma, .wmv), as Microsoft's specification of the format has them.
namespace AsfLists {
/// Whether one of them claims more entries than the rest of the file has room for. The tag library would make them all the
/// same: 65,535 of a file of a hundred bytes. False for files of other formats. The stream is at its beginning afterwards.
bool claimTooMuch(TagLib::IOStream *file);
} // namespace AsfLists
