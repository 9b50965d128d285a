// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCoreGlobal.h"

#include <QString>

#include <initializer_list>
#include <type_traits>

/// A foreign library that is loaded when it is first needed, not with the program, and then stays: what few need, or nobody at
/// the start, makes no start longer. Its functions are found by name; those of the libraries that it needs, too.
///
/// Any thread, one at a time. To load a library takes as long as its size and the disk make it, so never the GUI thread.
class KELVO_CORE_EXPORT ForeignLibrary
{
public:
    /// Loads the first of these that there is.
    /// @param names  as the dynamic linker knows them, with the version of their interface
    ForeignLibrary(std::initializer_list<const char *> names);

    /// Sets the pointer to the function of that name, or to null.
    template <typename Function> void find(Function &function, const char *name)
    {
        static_assert(std::is_pointer_v<Function>);
        function = reinterpret_cast<Function>(address(name));
    }
    /// It was loaded, and each function so far has been found.
    bool isWhole() const { return m_error.isEmpty(); }
    /// What was missing, fit to be shown; empty when it is whole.
    QString errorText() const { return m_error; }

private:
    void *address(const char *name);

    void *m_handle = nullptr;
    QString m_error;
};
