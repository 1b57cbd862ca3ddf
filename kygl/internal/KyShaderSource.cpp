#include "KyShaderSource.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::string_view kDirective = "#include";
constexpr std::size_t kMaxDepth = 64;
constexpr std::size_t kMaxBytes = std::size_t{16} << 20;
constexpr long kMaxReads = 65536;

/// A file that is open for reading, or not.
class InputFile {
public:
    InputFile(const char* path, int flags) {
        do
            mDescriptor = open(path, O_RDONLY | O_CLOEXEC | flags);
        while (!isOpen() && errno == EINTR);
    }
    ~InputFile() {
        if (isOpen()) close(mDescriptor);
    }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    bool isOpen() const { return mDescriptor >= 0; }
    bool isRegular() const {
        struct stat status = {};
        return fstat(mDescriptor, &status) == 0 && S_ISREG(status.st_mode);
    }
    // As read(2), unless a signal interrupts it.
    ssize_t readSome(char* bytes, std::size_t room) const {
        ssize_t count = -1;
        do
            count = read(mDescriptor, bytes, room);
        while (count < 0 && errno == EINTR);
        return count;
    }

private:
    int mDescriptor = -1;
};

// Absence is a property of the tree and holds; these three are the system's present state.
KyShaderRead outcomeOf(int error) {
    if (error == ENOMEM) throw std::bad_alloc();
    const bool passes = error == EMFILE || error == ENFILE || error == EIO;
    return passes ? KyShaderRead::Failed : KyShaderRead::CannotRead;
}

struct FileText {
    KyShaderRead outcome;
    std::string text;
    int error = 0;  // of the system
};

FileText unread(int error) {
    return {outcomeOf(error), {}, error};
}

// The files of one expansion, within what it may read.
class FileReader {
public:
    /// A line feed in front of each line and none at the end, whatever the file ends in; all of a
    /// file or nothing. A file of more than is left counts as one that cannot be read and uses that
    /// up all the same: a runaway log is read once, however often it is named.
    FileText load(const char* path, KyShaderTop kind) {
        if (mReadsLeft == 0) return {KyShaderRead::TooMany, {}};
        if (mBytesLeft == 0) return {KyShaderRead::TooMuch, {}};
        --mReadsLeft;
        // To open or read a pipe or a device may take for ever.
        const bool any = kind == KyShaderTop::Any;
        const InputFile file(path, any ? 0 : O_NONBLOCK | O_NOCTTY);
        if (!file.isOpen()) return unread(errno);
        if (!any && !file.isRegular()) return {KyShaderRead::CannotRead, {}};
        return readAll(file);
    }

private:
    FileText readAll(const InputFile& file) {
        std::string text(1, '\n');
        char chunk[16384];
        while (const ssize_t some = file.readSome(chunk, sizeof chunk)) {
            if (some < 0) return unread(errno);
            const auto count = static_cast<std::size_t>(some);
            if (count > mBytesLeft) {
                mBytesLeft = 0;
                return {KyShaderRead::TooMuch, {}};
            }
            mBytesLeft -= count;
            text.append(chunk, count);
        }
        if (text.size() == 1) return {KyShaderRead::Done, {}};
        if (text.back() == '\n') text.pop_back();
        return {KyShaderRead::Done, std::move(text)};
    }

    std::size_t mBytesLeft = kMaxBytes;
    long mReadsLeft = kMaxReads;
};

// Text that shrinks and grows at its front: it is kept at the end of its buffer.
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
// the start. The text before the first directive contains none, so the new search need not go back
// further than a directive could reach into it.
class Expansion {
public:
    Expansion(const char* path, KyShaderSourceObserver* observer, KyShaderTop top)
        : mObserver(observer), mFolder(includeFolder(path)) {
        insert(path, mReader.load(path, top), true);
    }

    KyShaderExpansion run() {
        while (true) {
            const std::size_t at = mRest.view().find(kDirective);
            finish(std::min(at, mRest.size()));
            if (at == std::string_view::npos) return {mDone.c_str(), mIsComplete};
            leaveFilesThatEndBefore(mRest.size() - 1);
            const Directive directive = takeDirective();
            // The file is nested in the one that closes the quotes.
            leaveFilesThatEndBefore(mRest.size());
            if (directive.hasName) include(mFolder + directive.name, directive.isClosed);
            searchAgain();
        }
    }

private:
    struct Directive {
        std::string name;
        bool hasName;   // there is an opening quote
        bool isClosed;  // and a closing one; the name runs to the end of the text otherwise
    };
    struct OpenFile {
        std::size_t after;  // length of the text after it
        std::string path;
        bool isClosed;  // whether the directive that named it is
    };

    void finish(std::size_t count) {
        if (mObserver != nullptr) mObserver->finished(count);
        mDone.append(mRest.view().substr(0, count));
        mRest.drop(count);
    }

    // Without an opening quote all of the text is the directive.
    Directive takeDirective() {
        const std::string_view rest = mRest.view();
        const std::size_t open = rest.find('"');
        const bool hasName = open != std::string_view::npos;
        const std::size_t close = hasName ? rest.find('"', open + 1) : open;
        const bool isClosed = close != std::string_view::npos;
        const std::string_view text = rest.substr(0, isClosed ? close + 1 : close);
        Directive directive{{}, hasName, isClosed};
        if (hasName) directive.name = rest.substr(open + 1, isClosed ? close - open - 1 : close);
        if (mObserver != nullptr) mObserver->directive(text, directive.name);
        mRest.drop(text.size());
        return directive;
    }

    // A file that we are in comes to the same directives once more, without an end, if it came to
    // this one by closed directives, which what follows it has no part in, or if nothing follows
    // it, as nothing did then.
    bool isEndless(const std::string& path, bool isClosed) const {
        for (auto file = mOpenFiles.rbegin(); file != mOpenFiles.rend(); ++file) {
            const bool isLast = file->after == 0 && mRest.size() == 0;
            if ((isClosed || isLast) && file->path == path) return true;
            isClosed = isClosed && file->isClosed;
        }
        return false;
    }

    FileText read(const std::string& path, bool isClosed) {
        if (isEndless(path, isClosed)) return {KyShaderRead::Endless, {}};
        if (mOpenFiles.size() > kMaxDepth) return {KyShaderRead::TooDeep, {}};
        return mReader.load(path.c_str(), KyShaderTop::Regular);
    }

    void include(const std::string& path, bool isClosed) {
        insert(path, read(path, isClosed), isClosed);
    }

    void insert(const std::string& path, const FileText& file, bool isClosed) {
        if (mObserver != nullptr)
            mObserver->file(path.c_str(), file.text, file.outcome, file.error);
        if (file.outcome == KyShaderRead::Failed) mIsComplete = false;
        if (!file.text.empty()) mOpenFiles.push_back({mRest.size(), path, isClosed});
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

    // @param rest length of the text from there on
    void leaveFilesThatEndBefore(std::size_t rest) {
        while (mOpenFiles.back().after > rest)
            mOpenFiles.pop_back();
    }

    KyShaderSourceObserver* mObserver;  // may be null
    FileReader mReader;
    bool mIsComplete = true;
    std::vector<OpenFile> mOpenFiles;  // that we are in, from the top-level one inwards
    std::string mFolder;
    std::string mDone;
    RestOfText mRest;
};

}  // namespace

KyString shaderPath(const KyString& root, const KyString& folder, const KyString& file) {
    return root + "/share/shaders/" + folder + "/" + file;
}

KyShaderExpansion loadShader(const char* path, KyShaderSourceObserver* observer, KyShaderTop top) {
    return Expansion(path, observer, top).run();
}

KyString shaderText(const KyShaderParametersMacros& macros, const KyString& source) {
    return macros.getDefineMacros() + source;
}
