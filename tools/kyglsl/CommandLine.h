#pragma once

/// Does what the arguments ask for. @return the exit status. Throws a `std::exception` for
/// status 2.
int runCommandLine(int argc, const char* const* argv);
