// SPDX-License-Identifier: MIT
#include "ForeignLibrary.h"

#include <dlfcn.h>

ForeignLibrary::ForeignLibrary(std::initializer_list<const char *> names)
{
    for (const char *name : names) {
        // For good: libraries that registered types with GLib must never be unmapped.
        m_handle = ::dlopen(name, RTLD_LAZY | RTLD_LOCAL | RTLD_NODELETE);
        if (m_handle) {
            m_error.clear();
            return;
        }
        m_error = QString::fromLocal8Bit(::dlerror());
    }
}

void *ForeignLibrary::address(const char *name)
{
    void *address = m_handle ? ::dlsym(m_handle, name) : nullptr;
    if (!address && isWhole())
        m_error = QString::fromLocal8Bit(::dlerror());
    return address;
}
