/* The functions below stand before the C library's in the private name space, for it and for libsensors alike. The
 * declarations are written out where the system's would bring inline versions or attributes in. */
#define _GNU_SOURCE
#include "PrivateCopy.h"

#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <locale.h>
#include <sensors/error.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define OFFERED __attribute__((visibility("default")))

static const struct HostMemory* host;

enum { MOST_OPEN = 16 }; /* libsensors holds three at most: directories inside each other, or files of settings */
static FILE* openFiles[MOST_OPEN];
static DIR* openDirectories[MOST_OPEN];
static int watches;
static int ranShort;

static FILE* (*realFopen)(const char*, const char*);
static int (*realFclose)(FILE*);
static DIR* (*realOpendir)(const char*);
static int (*realClosedir)(DIR*);
static int (*realScandir)(const char*, struct dirent***, int (*)(const struct dirent*),
                          int (*)(const struct dirent**, const struct dirent**));

static void* allocated(size_t size) {
    return host == NULL ? NULL : host->allocate(host->context, size);
}

OFFERED void* malloc(size_t size) {
    return allocated(size);
}

OFFERED void* calloc(size_t count, size_t size) {
    if (size != 0 && count > SIZE_MAX / size) return NULL;
    void* block = allocated(count * size);
    return block == NULL ? NULL : memset(block, 0, count * size);
}

OFFERED void* realloc(void* block, size_t size) {
    return host == NULL ? NULL : host->reallocate(host->context, block, size);
}

OFFERED void free(void* block) {
    if (host != NULL && block != NULL) host->release(host->context, block);
}

static void noteShortage(void) {
    if (watches && (errno == ENOMEM || errno == EMFILE || errno == ENFILE)) ranShort = 1;
}

static void note(void** table, void* from, void* to) {
    if (!watches) return;
    for (int i = 0; i < MOST_OPEN; ++i) {
        if (table[i] != from) continue;
        table[i] = to;
        return;
    }
}

OFFERED FILE* fopen(const char* path, const char* mode) {
    FILE* file = realFopen(path, mode);
    if (file == NULL)
        noteShortage();
    else
        note((void**)openFiles, NULL, file);
    return file;
}

OFFERED int fclose(FILE* file) {
    note((void**)openFiles, file, NULL);
    return realFclose(file);
}

OFFERED DIR* opendir(const char* path) {
    DIR* directory = realOpendir(path);
    if (directory == NULL)
        noteShortage();
    else
        note((void**)openDirectories, NULL, directory);
    return directory;
}

OFFERED int closedir(DIR* directory) {
    note((void**)openDirectories, directory, NULL);
    return realClosedir(directory);
}

OFFERED int scandir(const char* path, struct dirent*** names, int (*isTaken)(const struct dirent*),
                    int (*compare)(const struct dirent**, const struct dirent**)) {
    const int count = realScandir(path, names, isTaken, compare);
    if (count < 0) noteShortage();
    return count;
}

/* The parser of settings, which a tool made, ends the process when memory is out, and not by libsensors's hook. */
OFFERED __attribute__((noreturn)) void exit(int status) {
    (void)status;
    sensors_fatal_error(__func__, "");
    __builtin_unreachable();
}

/* libsensors prints to standard error alone. */
OFFERED int fprintf(FILE* file, const char* format, ...) {
    (void)file;
    (void)format;
    return 0;
}

OFFERED int __fprintf_chk(FILE* file, int flag, const char* format, ...) {
    (void)file;
    (void)flag;
    (void)format;
    return 0;
}

OFFERED void privateCopyUseMemory(const struct HostMemory* memory) {
    host = memory;
    *(void**)&realFopen = dlsym(RTLD_NEXT, "fopen");
    *(void**)&realFclose = dlsym(RTLD_NEXT, "fclose");
    *(void**)&realOpendir = dlsym(RTLD_NEXT, "opendir");
    *(void**)&realClosedir = dlsym(RTLD_NEXT, "closedir");
    *(void**)&realScandir = dlsym(RTLD_NEXT, "scandir");
}

OFFERED void privateCopyWatch(void) {
    watches = 1;
    ranShort = 0;
}

OFFERED int privateCopyEndWatch(void) {
    watches = 0;
    for (int i = 0; i < MOST_OPEN; ++i) {
        if (openFiles[i] != NULL) realFclose(openFiles[i]);
        if (openDirectories[i] != NULL) realClosedir(openDirectories[i]);
        openFiles[i] = NULL;
        openDirectories[i] = NULL;
    }
    return ranShort;
}

OFFERED void privateCopyEnterThread(void) {
    uselocale(LC_GLOBAL_LOCALE);
}
