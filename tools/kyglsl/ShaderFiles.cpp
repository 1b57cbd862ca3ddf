#include "ShaderFiles.h"

const ExpandedFile& ShaderFiles::get(const std::string& name) {
    const auto known = mFiles.find(name);
    if (known != mFiles.end()) return known->second;
    std::string path = name;
    std::string tree;
    if (!mRoot.empty()) {
        const std::size_t folder = name.find('/');
        if (folder == std::string::npos) throw UsageError(name + ": FOLDER/FILE expected");
        const std::string file = name.substr(folder + 1);
        path = shaderPath(mRoot.c_str(), name.substr(0, folder).c_str(), file.c_str()).dataPtr();
        tree = shaderPath(mRoot.c_str(), "", "").dataPtr();
    }
    const ExpandedFile& file = mFiles.try_emplace(name, path, tree).first->second;
    if (file.outcome() == KyShaderRead::CannotRead) throw UsageError(path + ": cannot be read");
    if (file.outcome() != KyShaderRead::Done) throw UsageError(path + ": is too large");
    return file;
}
