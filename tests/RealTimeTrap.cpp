#include "tests/RealTimeTrap.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <semaphore.h>
#include <stdio.h>
#include <sys/types.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cstdarg>
#include <cstddef>

// What a program defines goes before what its libraries define, also for the modules that it loads:
// each call below is noted and handed on.

namespace {

constexpr std::size_t kMostCalls = 16;

thread_local bool g_fTrapping = false;
thread_local std::size_t g_nCalls = 0;
thread_local std::array<char const*, kMostCalls> g_Calls{};

void Note(char const* szCall) {
    if (g_fTrapping && g_nCalls < kMostCalls) g_Calls[g_nCalls++] = szCall;
}

template <typename Function>
Function* Next(char const* szName) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, szName));
}

}  // namespace

CRealTimeTrap::CRealTimeTrap() {
    g_nCalls = 0;
    g_fTrapping = true;
}

CRealTimeTrap::~CRealTimeTrap() {
    g_fTrapping = false;
}

std::vector<std::string> CRealTimeTrap::Calls() const {
    g_fTrapping = false;
    return {g_Calls.begin(), g_Calls.begin() + g_nCalls};
}

#define TRAP(result, name, parameters, arguments)                 \
    extern "C" result name parameters {                           \
        static auto* const next = Next<result parameters>(#name); \
        Note(#name);                                              \
        return next arguments;                                    \
    }

TRAP(int, pthread_mutex_lock, (pthread_mutex_t * mutex), (mutex))
TRAP(int, pthread_mutex_trylock, (pthread_mutex_t * mutex), (mutex))
TRAP(int, pthread_cond_signal, (pthread_cond_t * condition), (condition))
TRAP(int, pthread_cond_broadcast, (pthread_cond_t * condition), (condition))
TRAP(int, sem_wait, (sem_t * semaphore), (semaphore))
TRAP(int, sem_post, (sem_t * semaphore), (semaphore))
TRAP(int, nanosleep, (const timespec* time, timespec* rest), (time, rest))
TRAP(int, clock_nanosleep, (clockid_t clock, int flags, const timespec* time, timespec* rest),
     (clock, flags, time, rest))
TRAP(int, usleep, (useconds_t time), (time))
TRAP(int, sched_yield, (), ())
TRAP(ssize_t, read, (int file, void* data, size_t size), (file, data, size))
TRAP(ssize_t, write, (int file, const void* data, size_t size), (file, data, size))
TRAP(FILE*, fopen, (const char* name, const char* mode), (name, mode))
TRAP(size_t, fwrite, (const void* data, size_t size, size_t count, FILE* file),
     (data, size, count, file))
TRAP(int, fputs, (const char* text, FILE* file), (text, file))
TRAP(int, fflush, (FILE * file), (file))
TRAP(int, close, (int file), (file))
TRAP(int, unlink, (const char* name), (name))

extern "C" int open(const char* szName, int nFlags, ...) {
    static auto* const next = Next<int(const char*, int, mode_t)>("open");
    va_list arguments;
    va_start(arguments, nFlags);
    const auto mode = static_cast<mode_t>(va_arg(arguments, unsigned));
    va_end(arguments);
    Note("open");
    return next(szName, nFlags, mode);
}

// Memory: glibc's own names, because dlsym itself needs memory.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* data, size_t size);
void __libc_free(void* data);

void* malloc(size_t size) {
    Note("malloc");
    return __libc_malloc(size);
}
void* calloc(size_t count, size_t size) {
    Note("calloc");
    return __libc_calloc(count, size);
}
void* realloc(void* data, size_t size) {
    Note("realloc");
    return __libc_realloc(data, size);
}
void free(void* data) {
    Note("free");
    __libc_free(data);
}
}
