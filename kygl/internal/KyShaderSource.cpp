#include "KyShaderSource.h"

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr std::string_view kDirective = "#include";
constexpr std::size_t kMaxDepth = 64;
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
        : mObserver(observer), mFolder(includeFolder(path)) {
        insert(path, true);
    }

    std::string run() {
        while (true) {
            const std::size_t at = mRest.view().find(kDirective);
            finish(std::min(at, mRest.size()));
            if (at == std::string_view::npos) return std::move(mDone);
            leaveEndedFiles();
            const std::string path = mFolder + takeDirective();
            insert(path, mRest.size() >= mOpenFiles.back().behind);
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

    // A file that we are in, by directives each of which stood in one file from its first character
    // to its quotes, gives the same directives once more: without an end.
    bool isEndless(const std::string& path, bool whole) const {
        for (auto file = mOpenFiles.rbegin(); whole && file != mOpenFiles.rend(); ++file) {
            if (file->path == path) return true;
            whole = file->whole;
        }
        return false;
    }

    FileText read(const std::string& path, bool whole) {
        if (isEndless(path, whole)) return {KyShaderRead::Endless, {}};
        if (mOpenFiles.size() > kMaxDepth) return {KyShaderRead::TooDeep, {}};
        return loadFile(path.c_str(), mBytesLeft);
    }

    // @param whole whether the directive stood in one file
    void insert(const std::string& path, bool whole) {
        const FileText file = read(path, whole);
        if (mObserver != nullptr) mObserver->file(path.c_str(), file.text, file.outcome);
        for (OpenFile& open : mOpenFiles)
            open.behind = std::min(open.behind, mRest.size());
        if (!file.text.empty()) mOpenFiles.push_back({mRest.size(), path, whole});
        mRest.prepend(file.text);
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
        while (!mOpenFiles.empty() && mRest.size() <= mOpenFiles.back().behind)
            mOpenFiles.pop_back();
    }

    struct OpenFile {
        std::size_t behind;  // length of the text behind it
        std::string path;
        bool whole;  // the directive that named it stood in one file
    };

    KyShaderSourceObserver* mObserver;   // may be null
    std::size_t mBytesLeft = kMaxBytes;  // that may still be read
    std::vector<OpenFile> mOpenFiles;    // that we are in, from the top-level one inwards
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
