// Expansion of a megabyte with a thousand directives, three deep, the files read each time: beside
// an expander written by hand, the plain algorithm, and the C preprocessor.

#include "support.h"

#include <kygl/KyShader.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace {

// 10 files, each with 9, each with 10: 1,000 directives in all.
std::string writeTree(const std::string& file, int depth) {
    constexpr int kBranches[] = {10, 9, 10, 0};
    std::string text;
    for (int line = 0; line < 26; ++line)
        text += "float " + file + "_" + std::to_string(line) + "(float x) { return 2.0 * x; }\n";
    for (int i = 0; i < kBranches[depth]; ++i) {
        const std::string child = file + "_" + std::to_string(i);
        writeTree(child, depth + 1);
        text += "#include \"" + child + "\"\n";
    }
    return writeShader(file, text);
}

const std::string& topFile() {
    static const std::string path = writeTree("loader", 0);
    return path;
}

// The text of a file as the shader tree wants it: a line feed in front of each line, none behind.
std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::ate);
    const std::streamoff size = file.tellg();
    if (size <= 0) return {};
    std::string text(static_cast<std::size_t>(size) + 1, '\n');
    file.seekg(0);
    file.read(&text[1], size);
    if (text.back() == '\n') text.pop_back();
    return text;
}

struct Directive {
    std::size_t begin;
    std::size_t end;
    std::string file;

    Directive(const std::string& text, std::size_t from) : begin(text.find("#include", from)) {
        if (begin == text.npos) return;
        const std::size_t open = text.find('"', begin) + 1;
        end = text.find('"', open) + 1;
        file = text.substr(open, end - 1 - open);
    }
};

void appendExpanded(const std::string& folder, const std::string& file, std::string& out) {
    const std::string text = readFile(folder + file);
    std::size_t done = 0;
    for (Directive next(text, 0); next.begin != text.npos; next = Directive(text, done)) {
        out.append(text, done, next.begin - done);
        appendExpanded(folder, next.file, out);
        done = next.end;
    }
    out.append(text, done);
}

std::string expandByHand() {
    const std::size_t slash = topFile().rfind('/') + 1;
    std::string out;
    appendExpanded(topFile().substr(0, slash), topFile().substr(slash), out);
    return out;
}

std::string expandPlainly() {
    const std::string folder = topFile().substr(0, topFile().rfind('/') + 1);
    std::string text = readFile(topFile());
    for (Directive next(text, 0); next.begin != text.npos; next = Directive(text, 0))
        text.replace(next.begin, next.end - next.begin, readFile(folder + next.file));
    return text;
}

KyString expandInLibrary() {
    return KyVertexShader("loader", "bench", false).loadFromFile();
}

void preprocess() {
    const std::string command = "cpp -P '" + topFile() + "' '" + topFile() + ".out'";
    if (std::system(command.c_str()) != 0) throw std::runtime_error("cannot run cpp -P");
}

// The library's side stands only if it gives what the others give.
void agree() {
    const std::string text = expandPlainly();
    if (text.size() < 1'000'000 || text != expandByHand() || text != expandInLibrary().dataPtr())
        throw std::runtime_error("the expansions differ");
}

}  // namespace

void addLoader() {
    const auto add = [](const char* name, auto step) {
        addSide(name,
                [step] {
                    agree();
                    return step;
                })
            ->UseRealTime()
            ->Unit(benchmark::kMillisecond);
    };
    add("loader/library", [] { benchmark::DoNotOptimize(expandInLibrary().length()); });
    add("loader/hand", [] { benchmark::DoNotOptimize(expandByHand().size()); });
    add("loader/naive", [] { benchmark::DoNotOptimize(expandPlainly().size()); });
    add("loader/cpp", preprocess);
    addRatio({"loader/library", "loader/hand", 1.5});
    addRatio({"loader/library", "loader/naive"});
    addRatio({"loader/library", "loader/cpp", 0.25});
}
