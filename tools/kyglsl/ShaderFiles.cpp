#include "ShaderFiles.h"

#include <algorithm>

const ExpandedFile& ShaderFiles::get(const std::string& name) {
    const auto known = mFiles.find(name);
    if (known != mFiles.end()) return known->second;
    std::string path = name;
    std::string tree;
    if (!mRoot.empty()) {
        const std::size_t folder = std::min(name.find('/'), name.size());
        const std::string file = name.substr(std::min(folder + 1, name.size()));
        path = shaderPath(mRoot.c_str(), name.substr(0, folder).c_str(), file.c_str()).dataPtr();
        tree = shaderPath(mRoot.c_str(), "", "").dataPtr();
    }
    const ExpandedFile& file = mFiles.try_emplace(name, path, tree).first->second;
    if (file.outcome() == KyShaderRead::CannotRead) throw UsageError(path + ": cannot be read");
    if (file.outcome() != KyShaderRead::Done) throw UsageError(path + ": is too large");
    return file;
}
