#include "KyNormalPath.h"

#include <filesystem>
#include <system_error>

std::string kyNormalPath(const std::string& path) {
    const std::string normal = std::filesystem::path(path).lexically_normal().string();
    if (normal == path) return path;
    std::error_code error;  // of two files one of which is there: they are not the same
    const bool isThere = std::filesystem::exists(path, error);
    const bool isSame = std::filesystem::equivalent(path, normal, error);
    return isSame || !isThere ? normal : path;
}
