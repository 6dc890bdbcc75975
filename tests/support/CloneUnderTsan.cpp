// Linked into every program of a thread sanitizer build. Qt starts processes with clone() sharing memory with
// the child, as vfork does. The sanitizer's own clone() takes every child for a fork with memory of its own,
// resets the state that parent and child share here, and stops the parent with a failed check of its
// internals. So this one goes straight to the C library.

#include <sched.h>

#include <cstdarg>

extern "C" {

int __clone(int (*body)(void *), void *stack, int flags, void *argument, ...);

int clone(int (*body)(void *), void *stack, int flags, void *argument, ...)
{
    std::va_list rest;
    va_start(rest, argument);
    auto *parentId = va_arg(rest, pid_t *);
    auto *threadStorage = va_arg(rest, void *);
    auto *childId = va_arg(rest, pid_t *);
    va_end(rest);
    return __clone(body, stack, flags, argument, parentId, threadStorage, childId);
}
}
