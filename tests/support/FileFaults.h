#pragma once

#include <map>

/// While it lives, the calling thread's `open` and `read` are counted and fail where they are told
/// to. One at a time on each thread.
struct FileFaults {
    FileFaults();
    ~FileFaults();
    FileFaults(const FileFaults&) = delete;
    FileFaults& operator=(const FileFaults&) = delete;

    /// The nth call from now on fails with `error`.
    void failOpen(int nth, int error) { openErrors[opened + nth] = error; }
    void failRead(int nth, int error) { readErrors[reads + nth] = error; }

    int opened = 0;  ///< calls of `open`
    int reads = 0;   ///< calls of `read`
    int failed = 0;  ///< how many have failed
    std::map<int, int> openErrors, readErrors;
};
