#pragma once

#include <string>
#include <vector>

/// Throws a `UsageError` for a target that no rule of make can name: one with controls.
void requireMakeTarget(const std::string& target);

/// A rule for make(1) and Ninja: the target depends on the files. Each of these is a target of its
/// own as well, unless it is the one `source`: one that goes away stops no build. Files with
/// controls in their names are left out.
std::string makeRule(const std::string& target, const std::vector<std::string>& files,
                     const std::string& source);
