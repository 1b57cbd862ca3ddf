#include "MakeRule.h"

#include "UsageError.h"

#include <algorithm>

static bool hasControl(const std::string& path) {
    return std::any_of(path.begin(), path.end(),
                       [](unsigned char c) { return c < 0x20 || c == 0x7F; });
}

static std::string forMake(const std::string& path) {
    std::string out;
    for (const char c : path) {
        if (c == ' ' || c == '#' || c == ':') out += '\\';
        if (c == '$') out += '$';
        out += c;
    }
    return out;
}

void requireMakeTarget(const std::string& target) {
    if (hasControl(target)) throw UsageError(target + ": make cannot name such a file");
}

std::string makeRule(const std::string& target, const std::vector<std::string>& files,
                     const std::string& source) {
    std::string rule = forMake(target) + ":";
    std::string targets;
    for (const std::string& file : files) {
        if (hasControl(file)) continue;
        rule += " " + forMake(file);
        if (file != source) targets += forMake(file) + ":\n";
    }
    return rule + "\n" + targets;
}
