#include "FileFaults.h"

#include <cerrno>
#include <cstdarg>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

thread_local FileFaults* tFaults = nullptr;

bool fails(int call, const std::map<int, int>& errors) {
    const auto found = errors.find(call);
    if (found == errors.end()) return false;
    ++tFaults->failed;
    errno = found->second;
    return true;
}

}  // namespace

FileFaults::FileFaults() {
    tFaults = this;
}

FileFaults::~FileFaults() {
    tFaults = nullptr;
}

extern "C" int open(const char* path, int flags, ...) {
    if (tFaults != nullptr && fails(++tFaults->opened, tFaults->openErrors)) return -1;
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

extern "C" ssize_t read(int file, void* bytes, size_t count) {
    if (tFaults != nullptr && fails(++tFaults->reads, tFaults->readErrors)) return -1;
    return syscall(SYS_read, file, bytes, count);
}
