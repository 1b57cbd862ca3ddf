#pragma once

#include <nlohmann/json_fwd.hpp>

#include <cstdio>

/// The value on one line. Drivers quote files: what is no UTF-8 there becomes the
/// replacement character.
void writeJson(std::FILE* out, const nlohmann::ordered_json& value);

/// The items of an array, written as they come, each on a line of its own.
class JsonItems {
public:
    explicit JsonItems(std::FILE* out) : mOut(out) {}
    /// Writes what is between items.
    void separate();
    void add(const nlohmann::ordered_json& item);

private:
    std::FILE* mOut;
    bool mIsFirst = true;
};
