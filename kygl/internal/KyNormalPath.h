#pragma once

#include <string>

/// The path without "." and "folder/..", relative if it was; as it is where that would be another
/// file, because a folder in it is a symbolic link.
std::string kyNormalPath(const std::string& path);
