#include "JsonText.h"

#include <nlohmann/json.hpp>

#include <string>

void writeJson(std::FILE* out, const nlohmann::ordered_json& value) {
    constexpr auto kReplace = nlohmann::ordered_json::error_handler_t::replace;
    const std::string text = value.dump(-1, ' ', false, kReplace);
    std::fwrite(text.data(), 1, text.size(), out);
}

void JsonItems::separate() {
    std::fputs(mIsFirst ? "\n" : ",\n", mOut);
    mIsFirst = false;
}

void JsonItems::add(const nlohmann::ordered_json& item) {
    separate();
    writeJson(mOut, item);
}
