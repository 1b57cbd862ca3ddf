#include "FileWatch.h"

#include "UsageError.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

static constexpr unsigned int kEvents = IN_ATTRIB | IN_CLOSE_WRITE | IN_CREATE | IN_DELETE |
                                        IN_DELETE_SELF | IN_MOVE | IN_MOVE_SELF | IN_ONLYDIR;

FileWatch::FileWatch() : mDescriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (mDescriptor < 0) throw UsageError(std::string("inotify: ") + std::strerror(errno));
}

FileWatch::~FileWatch() {
    close(mDescriptor);
}

// Each folder on the way is watched for the next one: a whole tree may be replaced.
void FileWatch::addPath(const std::string& path, Folders& folders) {
    std::filesystem::path at = path.front() == '/' ? "" : ".";
    for (const std::filesystem::path& name : std::filesystem::path(path)) {
        if (!at.empty()) folders[at.string()].insert(name.string());
        at /= name;
    }
}

// A link is watched together with what it leads to.
bool FileWatch::watch(const std::vector<std::string>& files) {
    Folders folders;
    for (const std::string& file : files) {
        std::error_code error;
        const std::string target = std::filesystem::weakly_canonical(file, error).string();
        addPath(file, folders);
        if (!error && target != file) addPath(target, folders);
    }
    std::map<int, std::set<std::string>> names;
    for (const auto& [folder, inIt] : folders) {
        const int watch = inotify_add_watch(mDescriptor, folder.c_str(), kEvents);
        if (watch < 0 && errno == ENOSPC)
            throw UsageError(folder + ": the system lets no more folders be watched");
        if (watch >= 0) names[watch].insert(inIt.begin(), inIt.end());
    }
    bool isNew = false;
    for (const auto& [watch, inIt] : names)
        isNew = isNew || mNames.count(watch) == 0;
    for (const auto& [watch, inIt] : mNames)
        if (names.count(watch) == 0) inotify_rm_watch(mDescriptor, watch);
    mNames.swap(names);
    return isNew;
}

// What an event is of matters only with the folders that are watched for names.
bool FileWatch::readEvents() {
    alignas(inotify_event) char buffer[16384];
    bool hasChange = false;
    ssize_t size = 0;
    while ((size = read(mDescriptor, buffer, sizeof buffer)) > 0) {
        for (const char* at = buffer; at < buffer + size;) {
            inotify_event event = {};
            std::memcpy(&event, at, sizeof event);
            const std::string name = event.len > 0 ? at + sizeof event : "";
            at += sizeof event + event.len;
            const auto found = mNames.find(event.wd);
            const bool isOurs =
                found != mNames.end() && (name.empty() || found->second.count(name) > 0);
            if ((event.mask & IN_IGNORED) != 0 && found != mNames.end()) mNames.erase(found);
            hasChange = hasChange || isOurs || (event.mask & IN_Q_OVERFLOW) != 0;
        }
    }
    return hasChange;
}

void FileWatch::wait() {
    constexpr int kMoment = 50;  // ms: a file that is created is written next
    bool hasChange = false;
    for (;;) {
        pollfd descriptor = {mDescriptor, POLLIN, 0};
        const int count = poll(&descriptor, 1, hasChange ? kMoment : -1);
        if (count == 0) return;
        if (count > 0 && readEvents()) hasChange = true;
    }
}
