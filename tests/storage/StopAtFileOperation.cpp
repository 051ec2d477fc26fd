#include "storage/StopAtFileOperation.h"

#include <atomic>
#include <cstdio>

#include <dlfcn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kStopped = 77;
/// How many operations are left to the process; below 0 in every process but that of a test's work.
std::atomic<int> operationsLeft{-1};

void countOperation() {
    if (operationsLeft > 0 && --operationsLeft == 0) ::_exit(kStopped);
}

template <class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

} // namespace

// The program's own functions come before the C library's, so every change of the disk passes by here.

extern "C" int rename(const char* from, const char* to) noexcept {
    countOperation();
    static const auto original = next<int(const char*, const char*)>("rename");
    return original(from, to);
}

extern "C" int unlink(const char* path) noexcept {
    countOperation();
    static const auto original = next<int(const char*)>("unlink");
    return original(path);
}

extern "C" int mkdir(const char* path, mode_t mode) noexcept {
    countOperation();
    static const auto original = next<int(const char*, mode_t)>("mkdir");
    return original(path, mode);
}

extern "C" int fsync(int fd) {
    countOperation();
    static const auto original = next<int(int)>("fsync");
    return original(fd);
}

extern "C" ssize_t write(int fd, const void* bytes, size_t count) {
    countOperation();
    static const auto original = next<ssize_t(int, const void*, size_t)>("write");
    return original(fd, bytes, count);
}

namespace morvelin {

bool stopsAtFileOperation(int operation, const std::function<void()>& work) {
    const pid_t child = ::fork();
    if (child == 0) {
        operationsLeft = operation;
        work();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == kStopped;
}

} // namespace morvelin
