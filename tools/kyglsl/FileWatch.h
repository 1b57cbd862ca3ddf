#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

/// Waits for changes of files, through their folders: editors replace files by renaming others,
/// and a missing file or folder may come.
class FileWatch {
public:
    /// Throws a `UsageError` where the system has none left.
    FileWatch();
    ~FileWatch();
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    /// Watches these files and no others.
    /// @return whether there is a folder among theirs that was not watched before: what changed in
    ///     it earlier went unseen
    bool watch(const std::vector<std::string>& files);

    /// Returns after a file changed and then all of them were left alone for a moment.
    void wait();

private:
    using Folders = std::map<std::string, std::set<std::string>>;  // names in each

    static void addPath(const std::string& path, Folders& folders);
    bool readEvents();

    int mDescriptor;
    std::map<int, std::set<std::string>> mNames;  // by watch
};
