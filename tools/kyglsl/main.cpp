/// kyglsl: shows what the library makes of shader files, and what the driver says to that.
#include <KyPrintable.h>
#include "CommandLine.h"

#include <cstdio>
#include <exception>

int main(int argc, char** argv) {
    try {
        return runCommandLine(argc, argv);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "kyglsl: %s\n", kyPrintable(e.what()).c_str());
        return 2;
    }
}
