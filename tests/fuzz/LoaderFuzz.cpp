/// Takes any bytes for a tree of shader files, and holds what is expanded against the plain rule.
#include "../support/TempShaders.h"
#include "KyShaderSource.h"
#include "Require.h"

#include <algorithm>

namespace {

constexpr int kEnough = 48;  // directives; fewer than may be nested

std::string read(const std::string& path) {
    std::ifstream file(path.c_str());
    std::string text, line;
    while (std::getline(file, line))
        text += '\n' + line;
    return text;
}

// @return whether it came to an end
bool expand(const std::string& path, std::string& text) {
    text = read(path);
    for (int i = 0; i < kEnough; ++i) {
        const std::size_t at = text.find("#include");
        if (at == std::string::npos) return true;
        const std::size_t open = text.find('"', at);
        const std::size_t close = open < text.size() ? text.find('"', open + 1) : open;
        std::string file;
        if (open < text.size())
            file = read(path.substr(0, path.rfind('/') + 1) +
                        text.substr(open + 1, close < text.size() ? close - open - 1 : close));
        text.replace(at, close < text.size() ? close + 1 - at : close, file);
    }
    return false;
}

// Counts what an observer learns of.
struct Observer : KyShaderSourceObserver {
    void finished(std::size_t count) override { move(rest, done, count); }
    void searchAgain(std::size_t count) override { move(done, rest, count); }
    void directive(std::string_view text, std::string_view name) override {
        require(text.substr(0, 8) == "#include" && name.size() < text.size());
        std::size_t gone = 0;
        move(rest, gone, text.size());
    }
    void file(const char*, std::string_view text, KyShaderRead outcome, int) override {
        require(outcome == KyShaderRead::Done || text.empty());
        rest += text.size();
    }
    static void move(std::size_t& from, std::size_t& to, std::size_t count) {
        require(count <= from);
        from -= count;
        to += count;
    }
    std::size_t rest = 0, done = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static const TempShaders tree;
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    for (const char* const name : {"a", "b", "c", "d"}) {  // 0xFF begins the next one
        const std::string_view text = bytes.substr(0, bytes.find('\xFF'));
        tree.write(name, std::string(text));
        bytes.remove_prefix(std::min(bytes.size(), text.size() + 1));
    }
    const std::string path = tree.path("a");
    std::string expected;
    const bool ends = expand(path, expected);
    // What grows up to the bounds takes its time; some of it does.
    if (!ends && data[size / 2] % 64 != 0) return 0;
    Observer observer;
    const KyShaderExpansion made = loadShader(path.c_str(), &observer);
    const std::string text = made.text.dataPtr();
    require(made.isComplete && text.find("#include") == std::string::npos);
    require(observer.rest == 0 && observer.done >= text.size());
    require(text == loadShader(path.c_str()).text.dataPtr());
    require(!ends || text == expected.substr(0, expected.find('\0')));
    return 0;
}
