#include "ListedPrograms.h"

#include <KyNormalPath.h>

#include <filesystem>

std::vector<Program> listedPrograms(const std::string& list, const std::string& root) {
    std::vector<Program> programs = readProgramList(list);
    if (!root.empty()) return programs;
    const std::filesystem::path folder = std::filesystem::path(list).parent_path();
    for (Program& program : programs)
        for (std::string* name : {&program.vertex, &program.fragment})
            *name = kyNormalPath((folder / *name).string());
    return programs;
}
