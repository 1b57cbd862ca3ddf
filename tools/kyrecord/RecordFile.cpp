#include "RecordFile.h"

#include "Output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <utility>

namespace record {

namespace {

constexpr std::size_t kWindow = std::size_t{256} * 1024;

[[noreturn]] void failErrno(const std::string& what) {
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

class File {
public:
    explicit File(int descriptor) : mDescriptor(descriptor) {}
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() { close(mDescriptor); }

    // Opens a regular file. One that is a pipe must not be waited for.
    static int open(const char* path) {
        const int descriptor = ::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (descriptor < 0) failErrno("cannot be read");
        return descriptor;
    }

    struct stat status() const {
        struct stat status = {};
        if (fstat(mDescriptor, &status) != 0) failErrno("cannot be read");
        if (!S_ISREG(status.st_mode)) throw std::runtime_error("not a regular file");
        return status;
    }

    // @return what is there of these bytes: less only at the end of the file.
    std::string_view read(char* buffer, std::size_t size, std::uint64_t offset) const {
        std::size_t done = 0;
        while (done < size) {
            const ssize_t count =
                pread(mDescriptor, buffer + done, size - done, static_cast<off_t>(offset + done));
            if (count < 0 && errno != EINTR) failErrno("cannot be read");
            if (count == 0) break;
            if (count > 0) done += static_cast<std::size_t>(count);
        }
        return {buffer, done};
    }

    void write(std::string_view bytes, std::uint64_t offset) const {
        while (!bytes.empty()) {
            const ssize_t count =
                pwrite(mDescriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset));
            if (count == 0) errno = ENOSPC;
            if (count == 0 || (count < 0 && errno != EINTR)) failErrno("cannot be written");
            if (count < 0) continue;
            bytes.remove_prefix(static_cast<std::size_t>(count));
            offset += static_cast<std::uint64_t>(count);
        }
    }

    int descriptor() const { return mDescriptor; }

private:
    int mDescriptor;
};

// Hands over the whole file, window after window. @return its size
template <class Use>
std::uint64_t readAll(const File& file, Use use) {
    const std::unique_ptr<char[]> buffer(new char[kWindow]);
    std::uint64_t offset = 0;
    while (true) {
        const std::string_view window = file.read(buffer.get(), kWindow, offset);
        if (window.empty()) return offset;
        use(window, offset);
        offset += window.size();
    }
}

struct Found {
    std::uint64_t offset;
    std::uint64_t fileSize;
};

Found findRecord(const File& file) {
    Search search;
    const std::uint64_t size =
        readAll(file, [&search](std::string_view window, std::uint64_t) { search.add(window); });
    return {search.offset(), size};
}

std::string readPayload(const File& file, std::uint64_t offset) {
    char bytes[kLength];
    return std::string(payloadOf(file.read(bytes, kLength, offset)));
}

// The copy that will take a file's place; removed unless it does.
class Replacement {
public:
    explicit Replacement(const std::string& path)
        : mPath(path), mTemporary(path + ".XXXXXX"), mFile(make(mTemporary)) {}
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement() {
        if (!mTemporary.empty()) unlink(mTemporary.c_str());
    }

    const File& file() const { return mFile; }

    void take(const struct stat& original) {
        const struct stat own = mFile.status();
        const int descriptor = mFile.descriptor();
        if ((own.st_uid != original.st_uid || own.st_gid != original.st_gid) &&
            fchown(descriptor, original.st_uid, original.st_gid) != 0)
            failErrno("its owner cannot be kept");
        if (fchmod(descriptor, original.st_mode & 07777) != 0) failErrno("its mode cannot be kept");
        if (fsync(descriptor) != 0) failErrno("cannot be written");  // a disk may tell this late
        struct stat now = {};
        if (lstat(mPath.c_str(), &now) != 0) failErrno("cannot be replaced");
        if (now.st_dev != original.st_dev || now.st_ino != original.st_ino)
            throw std::runtime_error("changed while it was read");
        if (std::rename(mTemporary.c_str(), mPath.c_str()) != 0) failErrno("cannot be replaced");
        mTemporary.clear();
    }

private:
    static int make(std::string& name) {
        const int descriptor = mkostemp(name.data(), O_CLOEXEC);
        if (descriptor < 0) failErrno("cannot be written beside");
        return descriptor;
    }

    std::string mPath;
    std::string mTemporary;
    File mFile;
};

// Root may write where no mode allows it: a file that nobody shall write is read-only to root, too.
void checkWritable(const std::string& path, const struct stat& status) {
    if ((status.st_mode & 0222) == 0 || access(path.c_str(), W_OK) != 0)
        throw std::runtime_error("is read-only");
}

std::string resolve(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr),
                                                               &std::free);
    if (!resolved) failErrno("cannot be read");
    return resolved.get();
}

void fill(const std::string& path, Values values) {
    const File file(File::open(path.c_str()));
    const struct stat status = file.status();
    checkWritable(path, status);
    const Found found = findRecord(file);
    values["size"] = std::to_string(found.fileSize);
    const std::string payload = compose(values);

    Replacement copy(path);
    const std::uint64_t copied =
        readAll(file, [&copy](std::string_view window, std::uint64_t offset) {
            copy.file().write(window, offset);
        });
    if (copied != found.fileSize) throw std::runtime_error("changed while it was read");
    readPayload(copy.file(), found.offset);
    copy.file().write(payload, found.offset + kMarkerLength);
    copy.take(status);
}

// Runs it, and says of which file it tells when it throws.
template <class Work>
auto naming(const std::string& path, Work work) {
    try {
        return work();
    } catch (const std::runtime_error& e) {
        throw std::runtime_error(printable(path) + ": " + e.what());
    }
}

}  // namespace

Pairs readRecord(const std::string& path) {
    return naming(path, [&path] {
        const File file(File::open(path.c_str()));
        static_cast<void>(file.status());
        return parse(readPayload(file, findRecord(file).offset));
    });
}

void fillRecord(const std::string& path, Values values) {
    naming(path, [&] { fill(resolve(path), std::move(values)); });
}

}  // namespace record
