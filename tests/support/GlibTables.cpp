// SPDX-License-Identifier: MIT
#include "GlibTables.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <link.h>

// The leak checker's interface, which is there in programs that have one.
extern "C" {
[[gnu::weak]] void __lsan_ignore_object(const void *);
[[gnu::weak]] int __sanitizer_get_ownership(const volatile void *);
[[gnu::weak]] std::size_t __sanitizer_get_allocated_size(const volatile void *);
}

namespace {
constexpr std::size_t tableSize = 2048 * sizeof(void *); // of GLib's first table

// The only pointer to the table is a variable of the library without a name that could be looked up.
void ignoreTablesIn(std::uintptr_t begin, std::size_t size)
{
    const auto *words = reinterpret_cast<const void *const *>(begin);
    for (std::size_t i = 0; i < size / sizeof(void *); ++i) {
        const void *candidate = words[i];
        if (candidate && __sanitizer_get_ownership(candidate) != 0
            && __sanitizer_get_allocated_size(candidate) == tableSize)
            __lsan_ignore_object(candidate);
    }
}

int lookAtLibrary(dl_phdr_info *library, std::size_t, void *)
{
    if (!std::strstr(library->dlpi_name, "/libglib-2.0.so"))
        return 0;
    for (int i = 0; i < library->dlpi_phnum; ++i) {
        const auto &segment = library->dlpi_phdr[i];
        if (segment.p_type == PT_LOAD && (segment.p_flags & PF_W))
            ignoreTablesIn(library->dlpi_addr + segment.p_vaddr, segment.p_memsz);
    }
    return 1;
}
} // namespace

void ignoreGlibTables()
{
    if (__lsan_ignore_object)
        dl_iterate_phdr(lookAtLibrary, nullptr);
}
