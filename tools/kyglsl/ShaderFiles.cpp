#include "ShaderFiles.h"

#include "UsageError.h"

// All files stay in memory, with their lines, comments and pieces.
static constexpr std::size_t kMaxBytes = std::size_t{64} << 20;

const KyShaderOrigins& ShaderFiles::get(const std::string& name) {
    std::string path = name;
    std::string tree;
    if (!mRoot.empty()) {
        const std::size_t folder = name.find('/');
        if (folder == std::string::npos) throw UsageError(name + ": FOLDER/FILE expected");
        const std::string file = name.substr(folder + 1);
        path = shaderPath(mRoot.c_str(), name.substr(0, folder).c_str(), file.c_str()).dataPtr();
        tree = shaderPath(mRoot.c_str(), "", "").dataPtr();
    }
    if (mBytes > kMaxBytes && mFiles.count(name) == 0)
        throw UsageError(path + ": is beyond the 64 MiB that one run reads");
    const auto [found, isNew] = mFiles.try_emplace(name, path, KyShaderTop::Any, tree);
    const KyShaderOrigins& file = found->second;
    if (isNew) mBytes += file.bytesRead();
    if (!file.failedFile().empty())
        throw UsageError(file.failedFile() + ": an input error, or no file descriptor is left");
    if (file.outcome() == KyShaderRead::TooMuch) throw UsageError(path + ": is too large");
    if (file.outcome() != KyShaderRead::Done) throw UsageError(path + ": cannot be read");
    return file;
}
