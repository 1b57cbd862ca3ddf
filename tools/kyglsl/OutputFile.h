#pragma once

#include <functional>
#include <iosfwd>
#include <string>

/// Writes a file anew. Throws a `UsageError` where that fails.
void writeFile(const std::string& path, const std::function<void(std::ostream&)>& print);
