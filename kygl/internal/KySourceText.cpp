#include "KySourceText.h"

#include <algorithm>

namespace {

constexpr std::string_view kBlanks = " \t\r";

// The word after blanks, which are skipped together with it.
std::string_view takeWord(std::string_view text, std::size_t& at) {
    const std::size_t begin = std::min(text.find_first_not_of(kBlanks, at), text.size());
    constexpr std::string_view kLetters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
    at = std::min(text.find_first_not_of(kLetters, begin), text.size());
    return text.substr(begin, at - begin);
}

// Whether "#define NAME" is the next thing after "#ifndef NAME".
bool isGuard(std::string_view text, std::size_t at) {
    const std::string_view name = takeWord(text, at);
    at = std::min(text.find_first_not_of(" \t\r\n", at), text.size());
    if (name.empty() || text.substr(at, 1) != "#") return false;
    ++at;
    return takeWord(text, at) == "define" && takeWord(text, at) == name;
}

// The first one that is not in front of the offset, or npos.
std::size_t firstFrom(const std::vector<std::size_t>& offsets, std::size_t offset) {
    const auto found = std::lower_bound(offsets.begin(), offsets.end(), offset);
    return found != offsets.end() ? *found : std::string_view::npos;
}

}  // namespace

KySourceText::KySourceText(std::string_view text) : mText(text) {
    for (std::size_t i = text.find('\n'); i != std::string_view::npos; i = text.find('\n', i + 1))
        mLineFeeds.push_back(i);
    const std::size_t carriageReturn = text.find('\r');
    if (carriageReturn != std::string_view::npos) mCarriageReturnLine = lineOf(carriageReturn);
    scan(text);
}

long KySourceText::lineOf(std::size_t offset) const {
    return std::upper_bound(mLineFeeds.begin(), mLineFeeds.end(), offset) - mLineFeeds.begin();
}

bool KySourceText::hasCodeBehind(std::size_t offset) const {
    const std::size_t code = isCode(offset) ? offset : firstFrom(mWords, offset);
    return code < std::min(firstFrom(mLineFeeds, offset), mText.size()) &&
           mText.compare(code, 8, "#include") != 0;
}

bool KySourceText::isCode(std::size_t offset) const {
    return offset < mText.size() && mText[offset] != '\n' &&
           kBlanks.find(mText[offset]) == std::string_view::npos && where(offset) == Where::Code;
}

void KySourceText::scan(std::string_view text) {
    bool atLineStart = true;
    bool inWord = false;
    std::size_t i = 0;
    while (i < text.size()) {
        const std::string_view two = text.substr(i, 2);
        if (two == "//") {
            mark(i, Where::LineComment);
            i = std::min(text.find('\n', i), text.size());
            mark(i, Where::Code);
            inWord = false;
        } else if (two == "/*") {
            mark(i, Where::BlockComment);
            i = std::min(text.find("*/", i + 2), text.size() - 2) + 2;
            mark(i, Where::Code);
            inWord = false;
        } else {
            if (text[i] == '#' && atLineStart) readDirective(text, i);
            const bool isLineFeed = text[i] == '\n';
            const bool isBlank = kBlanks.find(text[i]) != std::string_view::npos;
            atLineStart = isLineFeed || (isBlank && atLineStart);
            if (!isLineFeed && !isBlank && !inWord) mWords.push_back(i);
            inWord = !isLineFeed && !isBlank;
            ++i;
        }
    }
}

void KySourceText::readDirective(std::string_view text, std::size_t at) {
    std::size_t behind = at + 1;
    const std::string_view word = takeWord(text, behind);
    if (word == "if" || word == "ifdef" || word == "ifndef")
        mConditions.push_back(mHasDirectives || word != "ifndef" || !isGuard(text, behind));
    else if (word == "endif" && !mConditions.empty())
        mConditions.pop_back();
    else if (word == "version" && mVersionLine == 0)
        mVersionLine = lineOf(at);
    else if (word == "line" && mLineDirectiveLine == 0)
        mLineDirectiveLine = lineOf(at);
    mHasDirectives = true;
    mark(at, Where::Code);
}

void KySourceText::mark(std::size_t begin, Where where) {
    const bool conditional =
        std::find(mConditions.begin(), mConditions.end(), true) != mConditions.end();
    mMarks.push_back({begin, where, conditional});
}

const KySourceText::Mark& KySourceText::markAt(std::size_t offset) const {
    const auto next =
        std::upper_bound(mMarks.begin(), mMarks.end(), offset,
                         [](std::size_t value, const Mark& mark) { return value < mark.begin; });
    return *(next - 1);
}
