#pragma once

#include "Record.h"

#include <string>

/// Records in files. A file is read in windows and never mapped: one that is cut short meanwhile
/// gives an error, and memory does not grow with its size. What is wrong is thrown as
/// std::runtime_error that names the file.
namespace record {

Pairs readRecord(const std::string& path);

/// Gives the file a record of these values and of its size, in place of the one that it has. The
/// file is replaced as a whole by a copy, with its mode and owner, or stays as it was. Where the
/// path is a symbolic link, that is the file that it leads to.
void fillRecord(const std::string& path, Values values);

}  // namespace record
