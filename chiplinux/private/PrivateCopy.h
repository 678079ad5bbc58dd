/* What a private copy of libsensors takes from its host, and what it offers beside libsensors's own functions.
 *
 * The module PrivateCopy.c needs libsensors, and is loaded with it into a name space of the loader of its own. So there
 * are a C library and a libsensors that nobody else in the process knows: their locale, streams and state are theirs
 * alone. Only memory comes from the host: the host then knows every block, and no thread leaves behind a cache of the
 * private C library, which would never hear that the thread has ended. */
#ifndef ZELSENSORS_CHIPLINUX_PRIVATECOPY_H
#define ZELSENSORS_CHIPLINUX_PRIVATECOPY_H

#include <stddef.h> /* NOLINT(modernize-deprecated-headers): C reads it, too */

#ifdef __cplusplus
extern "C" {
#endif

/* As malloc, realloc and free, with the context in front; called by any thread. */
struct HostMemory {
    void* context;
    void* (*allocate)(void* context, size_t size);
    void* (*reallocate)(void* context, void* block, size_t size);
    void (*release)(void* context, void* block);
};

/* To be called first; the record must outlive the copy. */
void privateCopyUseMemory(const struct HostMemory* memory);

/* Between these two, what is opened is noted down, and so is a shortage. One thread at a time, and no other in the
 * copy meanwhile. The second closes what is still open, which is what a call left open that did not return, and answers
 * whether descriptors or memory ran out. */
void privateCopyWatch(void);
int privateCopyEndWatch(void);

/* Before each call from a thread that the private C library did not make: gives the thread its locale. */
void privateCopyEnterThread(void);

#ifdef __cplusplus
}
#endif

#endif
