#pragma once

#include <cstddef>
#include <string>

/// Number of bytes of the well-formed UTF-8 character that begins there; 0 for anything else.
std::size_t kyUtf8Length(const std::string& text, std::size_t at);

/// The text for a terminal, which obeys escape sequences from names, macros and shaders: controls
/// but tabs, and bytes that are no UTF-8, become "\\x1b" and the like.
std::string kyPrintable(const std::string& text);
