#pragma once

#include "Record.h"

#include <string>
#include <string_view>

/// Texts of unknown origin, made fit for a terminal and for JSON.
namespace record {

/// @return the text in one line that no terminal takes for a command: control characters and bytes
/// that are not UTF-8 as `\x1b`.
std::string printable(std::string_view text);

/// @return a line for each pair, the values beneath each other.
std::string toText(const Pairs& pairs);

/// @return one object whose values are strings. Bytes that are not UTF-8 become U+FFFD.
std::string toJson(const Pairs& pairs);

}  // namespace record
