#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Lines, comments and conditions in the text of one file, as the loader reads it: with a line
/// feed in front of each line. Offsets count from that first line feed on.
class KySourceText {
public:
    enum class Where { Code, LineComment, BlockComment };

    explicit KySourceText(std::string_view text);

    /// Counted from 1.
    long lineOf(std::size_t offset) const;
    Where where(std::size_t offset) const { return markAt(offset).where; }
    /// Whether more than blanks, comments and an `#include` follow from there on the line. A search
    /// in lists, because many directives may share a long line.
    bool hasCodeBehind(std::size_t offset) const;
    /// Whether a preprocessor condition decides on this byte. A guard around the whole file, as
    /// headers have it, does not count.
    bool isConditional(std::size_t offset) const { return markAt(offset).conditional; }

    /// Of the first such thing in the file; 0 where there is none.
    ///@{
    long versionLine() const { return mVersionLine; }
    long lineDirectiveLine() const { return mLineDirectiveLine; }
    long carriageReturnLine() const { return mCarriageReturnLine; }
    ///@}

private:
    struct Mark {
        std::size_t begin;
        Where where;
        bool conditional;
    };

    void scan(std::string_view text);
    void readDirective(std::string_view text, std::size_t at);
    void mark(std::size_t begin, Where where);
    const Mark& markAt(std::size_t offset) const;
    bool isCode(std::size_t offset) const;

    std::string mText;
    std::vector<std::size_t> mLineFeeds;
    std::vector<std::size_t> mWords;                       // where code begins, after anything else
    std::vector<Mark> mMarks = {{0, Where::Code, false}};  // each holds up to the next one
    std::vector<bool> mConditions;                         // that are open; false: a guard
    bool mHasDirectives = false;
    long mVersionLine = 0;
    long mLineDirectiveLine = 0;
    long mCarriageReturnLine = 0;
};
