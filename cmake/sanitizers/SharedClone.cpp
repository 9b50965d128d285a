// SPDX-License-Identifier: MIT
// Part of each program that is watched for races.
//
// QProcess makes a child that works in the memory of its parent, which waits, until it runs another program. The
// sanitizer takes each clone() for a fork: into what it takes for the child's copy of its own notes it writes that all
// other threads are gone and that this one need not be watched, and gives free locks that the parent then gives free
// once more. The parent hangs or is ended with the next thread that it starts, or goes on without being watched.
// Therefore such a call goes past the sanitizer.
#include <cstdarg>

#include <sched.h>
#include <sys/types.h>

extern "C" {
// The C library's own, and the sanitizer's.
int __clone(int (*function)(void *), void *stack, int flags, void *argument, ...) noexcept;
int __interceptor_clone(int (*function)(void *), void *stack, int flags, void *argument, pid_t *parentId,
    void *storage, pid_t *childId) noexcept;

[[gnu::visibility("default")]] int clone(
    int (*function)(void *), void *stack, int flags, void *argument, ...) noexcept
{
    va_list rest;
    va_start(rest, argument);
    auto *parentId = va_arg(rest, pid_t *);
    void *storage = va_arg(rest, void *);
    auto *childId = va_arg(rest, pid_t *);
    va_end(rest);
    if (flags & CLONE_VM)
        return __clone(function, stack, flags, argument, parentId, storage, childId);
    return __interceptor_clone(function, stack, flags, argument, parentId, storage, childId);
}
}
