#pragma once

#include <kygl/KyShader.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

/// A shader tree of its own, which `KyShader::mFolderPath` points to while this lives.
struct TempShaders {
    explicit TempShaders(const char* folderName = "test") : folder(folderName) {
        std::string root = std::filesystem::temp_directory_path() / "kyglXXXXXX";
        mRoot = mkdtemp(root.data());
        std::filesystem::create_directories(path(""));
        KyShader::mFolderPath = mRoot.c_str();
    }
    ~TempShaders() {
        KyShader::mFolderPath = mFormer;
        std::filesystem::remove_all(mRoot);
    }

    const KyString folder;

    std::filesystem::path path(const std::string& file) const {
        return mRoot / "share/shaders" / folder.dataPtr() / file;
    }
    // A new file each time: some file systems flush a file to the disk that is cut and rewritten.
    void write(const std::string& file, const std::string& text) const {
        std::filesystem::remove(path(file));
        std::ofstream(path(file), std::ios::binary) << text;
    }

private:
    const KyString mFormer = KyShader::mFolderPath;
    std::filesystem::path mRoot;
};
