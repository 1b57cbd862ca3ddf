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

extern "C" int open(const char* file, int oflag, ...) {
    if (tFaults != nullptr && fails(++tFaults->opened, tFaults->openErrors)) return -1;
    std::va_list arguments;
    va_start(arguments, oflag);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): it is, by the line above
    const mode_t mode = (oflag & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, file, oflag, mode));
}

extern "C" ssize_t read(int fd, void* buf, size_t nbytes) {
    if (tFaults != nullptr && fails(++tFaults->reads, tFaults->readErrors)) return -1;
    return syscall(SYS_read, fd, buf, nbytes);
}
