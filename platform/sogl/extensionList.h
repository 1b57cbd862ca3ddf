#pragma once

#include <cstdio>
#include <cstring>

/// Whether `name` is one of the blank-separated words of `list`; a longer word that begins with it
/// is another word. A null list holds nothing.
inline bool listHasWord(const char* list, const char* name) {
    if (list == nullptr) return false;
    const std::size_t length = std::strlen(name);
    for (const char* at = list; (at = std::strstr(at, name)) != nullptr; at += length) {
        const bool begins = at == list || at[-1] == ' ';
        const bool ends = at[length] == ' ' || at[length] == '\0';
        if (begins && ends) return true;
    }
    return false;
}

/// A version as two numbers, compared as a pair.
struct Version {
    int major = 0;
    int minor = 0;

    bool atLeast(int wantedMajor, int wantedMinor) const {
        return major > wantedMajor || (major == wantedMajor && minor >= wantedMinor);
    }
};

/// Reads the "major.minor" at the head of a version string; 0.0 where there is none.
inline Version parseVersion(const char* text) {
    Version version;
    if (text == nullptr || std::sscanf(text, "%d.%d", &version.major, &version.minor) != 2)
        return Version();
    return version;
}
