#include "ShaderFiles.h"

#include <kygl/kyglShaderGLSL.h>
#include <kygl/KyShader.h>

#include <algorithm>
#include <fstream>
#include <regex>
#include <stdexcept>
#include <vector>

namespace {

// Where each line of a shader's text comes from, as "file:line". The loader puts a line feed in
// front of each line of a file, so each of them begins a line of the text, behind one that is
// empty.
class LineTrace {
public:
    explicit LineTrace(const std::string& file)
        : mFolder(KyShader::mFolderPath.getString() + std::string("/share/shaders/") +
                  kShaderFolder + "/") {
        add(file, "", 0);
    }

    std::string origin(long textLine) const {
        const auto last = static_cast<long>(mOrigins.size()) - 1;
        return mOrigins[static_cast<std::size_t>(std::clamp(textLine - 2, 0L, last))];
    }

private:
    void add(const std::string& file, const std::string& includedAt, int depth) {
        static const std::regex kDirective("#include[^\"]*\"([^\"]*)\"");
        const std::string path = mFolder + file;
        if (depth > 64) throw std::runtime_error(includedAt + ": includes nest too deep");
        std::ifstream stream(path);
        std::string line;
        long number = 0;
        while (std::getline(stream, line)) {
            mOrigins.push_back(path + ":" + std::to_string(++number));
            std::smatch found;
            if (std::regex_search(line, found, kDirective))
                add(found[1].str(), mOrigins.back(), depth + 1);
        }
        if (number > 0) return;
        const std::string place = includedAt.empty() ? path : includedAt + ": " + path;
        throw std::runtime_error(place + ": cannot be read or is empty");
    }

    std::string mFolder;
    std::vector<std::string> mOrigins;
};

// The first line of the driver's log in a result of the back-end.
std::string firstLine(const std::string& message) {
    const std::size_t begin = message.rfind("Shader Error: ", 0) == 0 ? 14 : 0;
    return message.substr(begin, message.find('\n') - begin);
}

// Throws the first complaint of a log whose lines read "0:12(3): error: ..." or "0(12) : error
// ...".
[[noreturn]] void throwLog(const std::string& file, long macroLines, const std::string& log) {
    static const std::regex kComplaint(R"(\b0[:(](\d{1,9})\)?(?:\(\d+\))?\s*:\s*(.*error.*))");
    std::smatch found;
    const bool placed = std::regex_search(log, found, kComplaint);
    const long line = placed ? std::stol(found[1].str()) - macroLines : 0;
    throw std::runtime_error(LineTrace(file).origin(line) +
                             ": does not compile: " + (placed ? found[2].str() : firstLine(log)));
}

template <typename Shader>
KyString shaderText(const std::string& file, const KyShaderParametersMacros& macros) {
    Shader shader(file.c_str(), kShaderFolder, false);
    shader.setParameters(macros);
    return shader.loadFromFile();
}

}  // namespace

void checkShaderFile(const std::string& file) {
    const LineTrace trace(file);
}

void explainFailure(const std::string& vertexFile, const std::string& fragmentFile,
                    const KyShaderParametersMacros& macros) {
    unsigned int vertex = 0;
    unsigned int fragment = 0;
    unsigned int program = 0;
    KyResult result = kyglShaderGLSLPrepareProgram(
        shaderText<KyVertexShader>(vertexFile, macros),
        shaderText<KyFragmentShader>(fragmentFile, macros), &vertex, &fragment, &program);
    if (result.failed())
        throwLog(vertex == 0 ? vertexFile : fragmentFile, macros.count(), result.message());
    result = kyglShaderGLSLLinkProgram(program);
    throw std::runtime_error(vertexFile + " and " + fragmentFile +
                             ": do not link: " + firstLine(result.message()));
}
