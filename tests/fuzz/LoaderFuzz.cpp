/// Takes any bytes for a tree of shader files, and holds what is expanded against the plain rule.
#include "KyShaderSource.h"
#include "Require.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr int kEnough = 48;  // directives; fewer than may be nested

// Files in memory that have names in a folder of their own: "a" is the top-level one.
class Tree {
public:
    Tree() {
        char folder[] = "/tmp/kyglfuzzXXXXXX";
        require(mkdtemp(folder) != nullptr);
        mFolder = folder;
        for (std::size_t i = 0; i < mFiles.size(); ++i) {
            mFiles[i] = memfd_create("file", 0);
            const std::string target = "/proc/self/fd/" + std::to_string(mFiles[i]);
            require(symlink(target.c_str(), path(i).c_str()) == 0);
        }
    }
    ~Tree() {
        for (std::size_t i = 0; i < mFiles.size(); ++i)
            unlink(path(i).c_str());
        rmdir(mFolder.c_str());
    }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    // 0xFF begins the next file.
    void fill(std::string_view bytes) {
        for (std::size_t i = 0; i < mFiles.size(); ++i) {
            const std::string_view text = bytes.substr(0, bytes.find('\xFF'));
            bytes.remove_prefix(std::min(bytes.size(), text.size() + 1));
            require(ftruncate(mFiles[i], 0) == 0);
            require(pwrite(mFiles[i], text.data(), text.size(), 0) ==
                    static_cast<ssize_t>(text.size()));
        }
    }
    std::string path(std::size_t i) const { return mFolder + '/' + static_cast<char>('a' + i); }

    static std::string read(const std::string& path) {
        std::ifstream file(path.c_str());
        std::string text, line;
        while (std::getline(file, line))
            text += '\n' + line;
        return text;
    }

    // @return whether it came to an end
    bool expand(std::string& text) const {
        text = read(path(0));
        for (int i = 0; i < kEnough; ++i) {
            const std::size_t at = text.find("#include");
            if (at == std::string::npos) return true;
            const std::size_t open = text.find('"', at);
            if (open == std::string::npos) {
                text.erase(at);
                continue;
            }
            const std::size_t close = std::min(text.find('"', open + 1), text.size());
            const std::string name = text.substr(open + 1, close - open - 1);
            text.replace(at, close + 1 - at, read(mFolder + '/' + name));
        }
        return false;
    }

private:
    std::string mFolder;
    std::array<int, 4> mFiles{};
};

// Counts what an observer learns of.
struct Observer : KyShaderSourceObserver {
    void finished(std::size_t count) override {
        require(count <= rest);
        rest -= count;
        done += count;
    }
    void directive(std::string_view text, std::string_view name) override {
        require(text.size() <= rest && text.substr(0, 8) == "#include");
        require(name.size() + 9 <= text.size() || name.empty());
        rest -= text.size();
    }
    void file(const char*, std::string_view text, KyShaderRead outcome) override {
        require(outcome == KyShaderRead::Done || text.empty());
        rest += text.size();
    }
    void searchAgain(std::size_t count) override {
        require(count <= done);
        done -= count;
        rest += count;
    }
    std::size_t rest = 0, done = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static Tree tree;
    tree.fill({reinterpret_cast<const char*>(data), size});
    std::string expected;
    const bool ends = tree.expand(expected);
    // What grows up to the bounds takes its time; some of it does.
    if (!ends && data[size / 2] % 16 != 0) return 0;
    Observer observer;
    const KyShaderExpansion made = loadShader(tree.path(0).c_str(), &observer);
    const std::string text = made.text.dataPtr();
    require(made.isComplete && text.find("#include") == std::string::npos);
    require(observer.rest == 0 && observer.done >= text.size());
    require(text == loadShader(tree.path(0).c_str()).text.dataPtr());
    require(!ends || text == expected.c_str());
    return 0;
}
