#include "ShaderFiles.h"

#include <KyNormalPath.h>
#include "UsageError.h"

#include <algorithm>

// All files stay in memory, with their lines, comments and pieces.
static constexpr std::size_t kMaxBytes = std::size_t{64} << 20;

std::string ShaderFiles::pathOf(const std::string& name) const {
    if (mRoot.empty() || name.front() == '/') return name;
    const std::size_t folder = name.find('/');
    if (folder == std::string::npos) throw UsageError(name + ": FOLDER/FILE expected");
    const std::string file = name.substr(folder + 1);
    return shaderPath(mRoot.c_str(), name.substr(0, folder).c_str(), file.c_str()).dataPtr();
}

const KyShaderOrigins& ShaderFiles::get(const std::string& name) {
    const std::string path = pathOf(name);
    const std::string tree =
        mRoot.empty() ? std::string() : shaderPath(mRoot.c_str(), "", "").dataPtr();
    if (mBytes > kMaxBytes && mFiles.count(name) == 0)
        throw UsageError(kyNormalPath(path) + ": is beyond the 64 MiB that one run reads");
    const auto [found, isNew] = mFiles.try_emplace(name, path, KyShaderTop::Any, tree);
    const KyShaderOrigins& file = found->second;
    if (isNew) mBytes += file.bytesRead();
    if (!file.failedFile().empty())
        throw UsageError(file.failedFile() + ": an input error, or no file descriptor is left");
    if (file.outcome() == KyShaderRead::TooMuch) throw UsageError(file.path() + ": is too large");
    if (file.outcome() != KyShaderRead::Done)
        for (const KyShaderMessage& message : file.messages(false))
            if (message.topic == KyShaderMessage::Topic::File)
                throw UsageError(file.path() + ": " + message.text);
    return file;
}

void ShaderFiles::ask(const std::string& name) {
    try {
        get(name);
    } catch (const UsageError&) {  // it was asked for
    }
}

std::vector<std::string> ShaderFiles::files() const {
    std::vector<std::string> all;
    for (const auto& [name, file] : mFiles)
        for (std::string& path : file.files())
            all.push_back(std::move(path));
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    return all;
}
