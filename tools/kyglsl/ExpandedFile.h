#pragma once

#include "Message.h"
#include "SourceText.h"

#include <KyShaderSource.h>

#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

/// A shader file as the library's own loader expands it, with what the loader does not tell: where
/// each line comes from, and what there is to warn of.
class ExpandedFile : private KyShaderSourceObserver {
public:
    /// Reads and expands the file, once.
    /// @param tree the folder that names should not leave; where it is empty, the one up to
    ///     "/share/shaders" in the path, or else that of the file
    explicit ExpandedFile(std::string path, const std::string& tree = {});
    ExpandedFile(const ExpandedFile&) = delete;
    ExpandedFile& operator=(const ExpandedFile&) = delete;

    const std::string& path() const { return mPath; }
    /// The text without macros, as the library keeps it.
    const KyString& source() const { return mText; }
    /// What became of the file itself.
    KyShaderRead outcome() const { return mOutcome; }
    /// The first file that failed to be read though it is there, or "": the text lacks it.
    const std::string& failedFile() const { return mFailed; }
    /// Its own and those of each file that it includes, as often as that is read.
    std::size_t bytesRead() const { return mBytesRead; }

    /// Where a line of the text comes from, counted from 1: where its first byte does, or the line
    /// feed in front of it if it is empty.
    Place placeOfLine(long line) const;
    Place placeOfByte(std::size_t offset) const;
    long lineCount() const { return static_cast<long>(mLineStarts.size()); }

    /// Whether a `#line` stands in it, from where on drivers count otherwise.
    bool hasLineDirective() const;

    /// Every file that was asked for, the missing ones too, in the order of the first reading.
    std::vector<std::string> files() const;

    /// @param behindMacros whether macro lines will stand in front of the text
    std::vector<Message> warnings(bool behindMacros) const;

private:
    struct File {
        std::string path;
        SourceText text;
        bool isOutside;  // of the shader tree
        bool isRead;     // and `text` is its text
    };
    struct Piece {  // bytes of one reading
        std::size_t reading;
        std::size_t begin;
        std::size_t size;
    };
    struct Reading {  // a file that is read twice stands twice in the text
        std::size_t file;
        Piece directive;       // the first bytes of it; none for the top-level file
        std::size_t nestedIn;  // the reading that closes its quotes
        bool isRound;          // of a file that includes itself, after the first
    };

    void finished(std::size_t count) override;
    void directive(std::string_view text, std::string_view name) override;
    void file(const char* path, std::string_view text, KyShaderRead outcome) override;
    void searchAgain(std::size_t count) override;

    std::vector<Piece> takeFront(std::size_t count);
    void finishText();
    std::size_t fileNumber(const char* path, std::string_view text);
    std::vector<std::size_t> filesAbove(const Reading& reading) const;
    bool includesItself(Reading& reading);
    void warnOfDirective(std::string_view text, std::string_view name);
    void warnOfOutcome(const Place& place, const std::string& path, KyShaderRead outcome);
    void warn(const Place& place, const std::string& kind, const std::string& text);
    Place placeOf(const Piece& piece) const;

    std::string mPath;
    std::string mTree;
    KyString mText;
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
    std::vector<Message> mWarnings;
    std::set<std::tuple<std::string, long, std::string>> mWarned;  // place and kind
};
