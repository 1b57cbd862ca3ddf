#include "KyShaderSource.h"

#include <kygl/containers/KyDArray.h>

#include <algorithm>
#include <fstream>
#include <string>

namespace {

constexpr std::string_view kDirective = "#include";
constexpr long kMaxDepth = 64;
constexpr std::size_t kMaxBytes = std::size_t{16} << 20;

struct FileText {
    KyShaderRead outcome;
    std::string text;
};

// A line feed in front of each line and none at the end, whatever the file ends in. A file of more
// than `bytesLeft` counts as one that cannot be read and uses them up all the same: a device or a
// runaway log is read once, however often it is named.
FileText loadFile(const char* path, std::size_t& bytesLeft) {
    if (bytesLeft == 0) return {KyShaderRead::TooMuch, {}};
    std::ifstream file(path, std::ios_base::in);
    std::string text(1, '\n');
    char chunk[16384];
    while (file.good()) {
        file.read(chunk, sizeof chunk);
        text.append(chunk, static_cast<std::size_t>(file.gcount()));
        if (text.size() - 1 > bytesLeft) {
            bytesLeft = 0;
            return {KyShaderRead::TooMuch, {}};
        }
    }
    bytesLeft -= text.size() - 1;
    if (text.size() == 1) {
        const bool read = file.is_open() && !file.bad();  // a folder opens, and reads badly
        return {read ? KyShaderRead::Done : KyShaderRead::CannotRead, {}};
    }
    if (text.back() == '\n') text.pop_back();
    return {KyShaderRead::Done, std::move(text)};
}

// Text that shrinks and grows at its front: it lies at the end of its buffer.
class RestOfText {
public:
    explicit RestOfText(std::string text) : mBuffer(std::move(text)) {}

    std::string_view view() const { return std::string_view(mBuffer).substr(mBegin); }
    std::size_t size() const { return mBuffer.size() - mBegin; }

    void drop(std::size_t count) { mBegin += count; }

    void prepend(std::string_view text) {
        if (mBegin < text.size()) moveBack(text.size());
        mBegin -= text.size();
        text.copy(&mBuffer[mBegin], text.size());
    }

private:
    // At least doubles the buffer, so that each byte is moved a bounded number of times on average.
    void moveBack(std::size_t room) {
        std::string larger(2 * mBuffer.size() + room, '\0');
        const std::size_t begin = larger.size() - size();
        view().copy(&larger[begin], size());
        mBuffer.swap(larger);
        mBegin = begin;
    }

    std::string mBuffer;
    std::size_t mBegin = 0;
};

std::string includeFolder(std::string_view path) {
    const std::size_t backslash = path.rfind('\\');
    const std::size_t last = backslash != std::string_view::npos ? backslash : path.rfind('/');
    return std::string(path.substr(0, last + 1));  // npos + 1 is 0: no folder
}

// Expands a text. The rule is: find the first directive, replace it by the file, search again from
// the start. What stands in front of the first directive holds none, so the new search need not
// go back further than a directive could reach into it.
class Expansion {
public:
    Expansion(const char* path, KyShaderSourceObserver* observer)
        : mObserver(observer), mFolder(includeFolder(path)), mRest(read(path)) {}

    std::string run() {
        while (true) {
            const std::size_t at = mRest.view().find(kDirective);
            finish(std::min(at, mRest.size()));
            if (at == std::string_view::npos) return std::move(mDone);
            leaveEndedFiles();
            const std::string path = mFolder + takeDirective();
            insert(read(path.c_str()));
            searchAgain();
        }
    }

private:
    void finish(std::size_t count) {
        if (mObserver != nullptr) mObserver->finished(count);
        mDone.append(mRest.view().substr(0, count));
        mRest.drop(count);
    }

    // Takes the directive off the text and gives the name between its quotes. Without a closing
    // quote the name runs to the end of the text; without any, all of the text is the directive.
    std::string takeDirective() {
        const std::string_view rest = mRest.view();
        const std::size_t open = std::min(rest.find('"'), rest.size() - 1);
        const std::size_t close = std::min(rest.find('"', open + 1), rest.size());
        const std::size_t end = std::min(close + 1, rest.size());
        std::string name(rest.substr(open + 1, close - open - 1));
        if (mObserver != nullptr) mObserver->directive(rest.substr(0, end), name);
        mRest.drop(end);
        return name;
    }

    std::string read(const char* path) {
        FileText file = mOpenFiles.size < kMaxDepth ? loadFile(path, mBytesLeft)
                                                    : FileText{KyShaderRead::TooDeep, {}};
        if (mObserver != nullptr) mObserver->file(path, file.text, file.outcome);
        return std::move(file.text);
    }

    void insert(const std::string& text) {
        for (long i = 0; i < mOpenFiles.size; ++i)
            mOpenFiles[i] = std::min(mOpenFiles[i], mRest.size());
        if (!text.empty()) mOpenFiles.append(mRest.size());
        mRest.prepend(text);
    }

    // A directive may come together anew from the end of what is done, the inserted text and what
    // follows it, so all but one of a directive's bytes are searched once more.
    void searchAgain() {
        const std::size_t back = std::min(mDone.size(), kDirective.size() - 1);
        if (mObserver != nullptr) mObserver->searchAgain(back);
        mRest.prepend(std::string_view(mDone).substr(mDone.size() - back));
        mDone.resize(mDone.size() - back);
    }

    void leaveEndedFiles() {
        while (mOpenFiles.size > 0 && mRest.size() <= mOpenFiles[mOpenFiles.size - 1])
            mOpenFiles.remove(mOpenFiles.size - 1);
    }

    KyShaderSourceObserver* mObserver;   // may be null
    std::size_t mBytesLeft = kMaxBytes;  // that may still be read
    KyDArray<std::size_t> mOpenFiles;    // for each file that we are in: the text behind it
    std::string mFolder;
    std::string mDone;
    RestOfText mRest;
};

}  // namespace

KyString shaderPath(const KyString& root, const KyString& folder, const KyString& file) {
    return root + "/share/shaders/" + folder + "/" + file;
}

KyString loadShader(const char* path, KyShaderSourceObserver* observer) {
    return Expansion(path, observer).run().c_str();
}

KyString shaderText(const KyShaderParametersMacros& macros, const KyString& source) {
    return macros.getDefineMacros() + source;
}
