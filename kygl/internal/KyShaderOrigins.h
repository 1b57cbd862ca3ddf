#pragma once

#include "KyShaderMessage.h"
#include "KySourceText.h"

#include "KyShaderSource.h"

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

/// A shader file as the loader expands it, with what the loader does not keep: where each line
/// comes from, which files were asked for, and what there is to say of them.
class KyShaderOrigins : private KyShaderSourceObserver {
public:
    /// Reads and expands the file, once. Throws `std::bad_alloc`.
    /// @param tree the folder that names should not leave; where it is empty, the one up to
    ///     "/share/shaders" in the path, or else that of the file
    explicit KyShaderOrigins(const std::string& path, KyShaderTop top,
                             const std::string& tree = {});
    KyShaderOrigins(const KyShaderOrigins&) = delete;
    KyShaderOrigins& operator=(const KyShaderOrigins&) = delete;

    /// As `kyNormalPath` gives it; so are all paths below.
    const std::string& path() const { return mPath; }
    /// The text without macros, as the library keeps it.
    const KyString& source() const { return mText; }
    /// As `KyShaderExpansion::isComplete`.
    bool isComplete() const { return mIsComplete; }
    /// The result of reading the file itself.
    KyShaderRead outcome() const { return mOutcome; }
    /// The first file that failed to be read though it is there, or "": the text lacks it.
    const std::string& failedFile() const { return mFailed; }
    /// Its own and those of each file that it includes, as often as that is read.
    std::size_t bytesRead() const { return mBytesRead; }

    /// Where a line of the text that the GL is given comes from, counted from 1: where its first
    /// byte does, or the line feed in front of it if it is empty. Not known for a number that the
    /// text does not have.
    /// @param macroLines the lines in front of the source, each with its line feed
    KyShaderPlace placeInText(std::string_view macroLines, long line, long column = 0) const;
    /// The same for a line as a driver counts it; not known in a text with a `#line`.
    KyShaderPlace placeInLog(std::string_view macroLines, long line, long column) const;
    KyShaderPlace placeOfByte(std::size_t offset) const;

    /// Every file that was asked for, the missing ones too, in the order of the first reading.
    std::vector<std::string> files() const;

    /// Notes at the directives by which a file came into the text more than once, or by which the
    /// one did that includes it; none for a file that is there once.
    std::vector<KyShaderMessage> notesOfInclusions(const std::string& path) const;

    /// What there is to say of the files.
    /// @param behindMacros whether macro lines are in front of the text
    std::vector<KyShaderMessage> messages(bool behindMacros) const;

private:
    using Topic = KyShaderMessage::Topic;

    struct File {
        std::string path;
        KySourceText text;
        bool isOutside;  // of the shader tree
        bool isRead;     // and `text` is its text
    };
    struct Piece {  // bytes of one reading
        std::size_t reading;
        std::size_t begin;
        std::size_t size;
    };
    struct Reading {  // a file that is read twice is in the text twice
        std::size_t file;
        Piece directive;       // the first bytes of it; none for the top-level file
        std::size_t nestedIn;  // the reading that closes its quotes
        bool isRound;          // of a file that includes itself, after the first
        bool hasText;          // that went into the text
    };

    void finished(std::size_t count) override;
    void directive(std::string_view text, std::string_view name) override;
    void file(const char* path, std::string_view text, KyShaderRead outcome, int error) override;
    void searchAgain(std::size_t count) override;

    std::vector<Piece> takeFront(std::size_t count);
    void finishText();
    std::size_t fileNumber(const char* path, std::string_view text);
    std::vector<std::size_t> readingsOf(const std::string& path) const;
    std::vector<KyShaderPlace> directivesOf(const std::vector<std::size_t>& readings) const;
    std::vector<std::size_t> filesAbove(const Reading& reading) const;
    bool includesItself(Reading& reading);
    void warnOfDirective(std::string_view text, std::string_view name);
    void warnOfOutcome(const KyShaderPlace& place, const std::string& path, KyShaderRead outcome,
                       int error);
    void warn(const KyShaderPlace& place, Topic topic, const std::string& kind,
              const std::string& text);
    KyShaderPlace placeOfLine(long line, long column) const;
    bool hasLineDirective() const;
    KyShaderPlace placeOf(const Piece& piece) const;

    std::string mPath;
    std::string mTree;
    KyString mText;
    bool mIsComplete = true;
    KyShaderRead mOutcome = KyShaderRead::CannotRead;
    std::string mFailed;
    std::size_t mBytesRead = 0;
    std::vector<File> mFiles;
    std::map<std::string, std::size_t> mFileNumbers;
    std::vector<Reading> mReadings;
    std::vector<Piece> mRest;  // what is to be searched, its front at the end
    std::vector<Piece> mDone;
    std::vector<std::size_t> mDoneBegins;  // of each piece in the text
    std::vector<std::size_t> mLineStarts;
    Piece mDirective = {0, 0, 0};  // the first bytes of the one that was taken last
    std::size_t mNestedIn = 0;     // the reading of its last bytes
    std::vector<KyShaderMessage> mMessages;
    std::set<std::tuple<std::string, long, std::string>> mWarned;  // place and kind
};
