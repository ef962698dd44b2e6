/* Loaded in front of a program (LD_PRELOAD), makes one of its allocations fail, or that one and all after it; and files
 * without a name, on request.
 *
 * TARN_FAIL_AT      the allocation that fails, from 1; without it none does
 * TARN_FAIL_ALL     if set, all later ones fail as well
 * TARN_COUNT_FILE   where the number of allocations is written when the program ends
 *
 * Taking memory from the system for large arrays (mmap without a file) counts as well; what the C library takes for
 * itself below malloc doesn't come by here. */

#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

extern void* __libc_malloc(size_t size);
extern void* __libc_calloc(size_t count, size_t size);
extern void* __libc_realloc(void* memory, size_t size);
extern void* __libc_memalign(size_t alignment, size_t size);

static atomic_long allocations;
static long failing_allocation = -1;
static int all_fail;
static const char* count_file;
static void* (*next_mmap)(void*, size_t, int, int, int, off_t);

__attribute__((constructor(101))) static void ReadEnvironment(void) {
    const char* const at = getenv("TARN_FAIL_AT");
    *(void**)&next_mmap = dlsym(RTLD_NEXT, "mmap");
    all_fail = getenv("TARN_FAIL_ALL") != NULL;
    count_file = getenv("TARN_COUNT_FILE");
    if (at != NULL) failing_allocation = atol(at);
    atomic_store(&allocations, 0); /* what the loader took is none of the program's */
}

__attribute__((destructor)) static void WriteCount(void) {
    char text[32];
    const int length = snprintf(text, sizeof text, "%ld\n", atomic_load(&allocations));
    const int file = count_file == NULL ? -1 : open(count_file, O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (file < 0) return;
    if (write(file, text, (size_t)length) < 0) abort();
    close(file);
}

static int FailsNow(void) {
    const long number = atomic_fetch_add(&allocations, 1) + 1;
    if (failing_allocation < 0) return 0;
    if (number != failing_allocation && !(all_fail && number > failing_allocation)) return 0;
    errno = ENOMEM;
    return 1;
}

void* malloc(size_t size) {
    return FailsNow() ? NULL : __libc_malloc(size);
}

void* calloc(size_t count, size_t size) {
    return FailsNow() ? NULL : __libc_calloc(count, size);
}

void* realloc(void* memory, size_t size) {
    return FailsNow() ? NULL : __libc_realloc(memory, size);
}

void* memalign(size_t alignment, size_t size) {
    return FailsNow() ? NULL : __libc_memalign(alignment, size);
}

void* aligned_alloc(size_t alignment, size_t size) {
    return FailsNow() ? NULL : __libc_memalign(alignment, size);
}

int posix_memalign(void** memory, size_t alignment, size_t size) {
    if (FailsNow()) return ENOMEM;
    *memory = __libc_memalign(alignment, size);
    return *memory == NULL ? ENOMEM : 0;
}

void* mmap(void* address, size_t size, int protection, int flags, int file, off_t offset) {
    if (file < 0 && FailsNow()) return MAP_FAILED;
    return next_mmap(address, size, protection, flags, file, offset);
}

/* For a host that goes on: calls `callable` without arguments, and while it runs allocation `at` of the process fails
 * (0 for none), or that one and all after it. Returns what the callable did; `taken` is how many allocations it tried.
 * It is called from Python, whose own function makes the call. */
void* TarnCallInHardTimes(void* callable, long at, int for_good, long* taken) {
    void* (*call)(void*);
    *(void**)&call = dlsym(RTLD_DEFAULT, "PyObject_CallNoArgs");
    all_fail = for_good;
    atomic_store(&allocations, 0);
    failing_allocation = at > 0 ? at : -1;
    void* const result = call(callable);
    failing_allocation = -1;
    *taken = atomic_load(&allocations);
    return result;
}

/* With TARN_NAMED_FILES set, the file system seems to be one that has no files without a name. */
int open(const char* path, int flags, ...) {
    static int (*next_open)(const char*, int, ...);
    mode_t mode = 0;
    if (next_open == NULL) *(void**)&next_open = dlsym(RTLD_NEXT, "open");
    if ((flags & (O_CREAT | O_TMPFILE)) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    if ((flags & O_TMPFILE) == O_TMPFILE && getenv("TARN_NAMED_FILES") != NULL) {
        errno = EOPNOTSUPP;
        return -1;
    }
    return next_open(path, flags, mode);
}
