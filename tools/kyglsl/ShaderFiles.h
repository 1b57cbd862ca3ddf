#pragma once

#include <KyShaderOrigins.h>

#include <map>
#include <string>
#include <vector>

/// Shader files by the names that the user gives, each read and expanded once.
class ShaderFiles {
public:
    /// @param root as `KyShader::mFolderPath`: names are looked for below its "share/shaders".
    ///     With an empty one they are paths, as absolute ones always are
    explicit ShaderFiles(std::string root) : mRoot(std::move(root)) {}

    /// Throws a `UsageError` when the file cannot be read, at each call.
    const KyShaderOrigins& get(const std::string& name);

    /// The same, whether it can be read or not.
    void ask(const std::string& name);

    /// Every file that was asked for, the missing ones too.
    std::vector<std::string> files() const;

private:
    std::string pathOf(const std::string& name) const;

    std::string mRoot;
    std::map<std::string, KyShaderOrigins> mFiles;
    std::size_t mBytes = 0;  // that were read for them
};
