#include "OutputFile.h"

#include "UsageError.h"

#include <fstream>

void writeFile(const std::string& path, const std::function<void(std::ostream&)>& print) {
    std::ofstream file(path, std::ios::binary);
    print(file);
    file.close();
    if (!file) throw UsageError(path + ": cannot be written");
}
