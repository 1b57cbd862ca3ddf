#include "ExpandedFile.h"

#include <algorithm>
#include <filesystem>

namespace {

constexpr std::string_view kDirective = "#include";

std::string normal(const std::filesystem::path& path) {
    std::error_code unused;  // an empty path stays empty
    return std::filesystem::absolute(path, unused).lexically_normal().string();
}

std::string inQuotes(const std::string& name) {
    return "'" + name + "'";
}

// The folder in front of "/share/shaders/", and that with it, or else the folder of the file.
std::string treeOf(const std::string& path, const std::string& tree) {
    if (!tree.empty()) return normal(tree + "/");
    constexpr std::string_view kTree = "/share/shaders/";
    const std::string full = normal(path);
    const std::size_t found = full.rfind(kTree);
    return full.substr(0, found == std::string::npos ? full.rfind('/') + 1 : found + kTree.size());
}

}  // namespace

ExpandedFile::ExpandedFile(std::string path, const std::string& tree)
    : mPath(std::move(path)), mTree(treeOf(mPath, tree)) {
    mText = loadShader(mPath.c_str(), this, KyShaderTop::Any).text;
    finishText();
    if (mOutcome == KyShaderRead::Done && mText.length() == 0)
        warn({mPath, 0}, "empty", "no text: macro lines alone go to the compiler");
}

std::vector<Message> ExpandedFile::warnings(bool behindMacros) const {
    std::vector<Message> all = mWarnings;
    for (const File& each : mFiles)
        if (behindMacros && each.text.versionLine() > 0)
            all.push_back({{each.path, each.text.versionLine()},
                           "warning",
                           "#version stands behind macro lines; drivers want it first"});
    return all;
}

void ExpandedFile::finishText() {
    const auto length = static_cast<std::size_t>(mText.length());
    const std::string_view text(mText.dataPtr(), length);
    std::size_t begin = 0;
    for (const Piece& piece : mDone) {
        mDoneBegins.push_back(begin);
        begin += piece.size;
    }
    mLineStarts.push_back(0);
    for (std::size_t i = text.find('\n'); i != std::string_view::npos; i = text.find('\n', i + 1))
        mLineStarts.push_back(i + 1);
    if (begin > length)
        warn(placeOfByte(length), "NUL", "a NUL byte: the text ends in front of it");
}

Place ExpandedFile::placeOfLine(long line) const {
    const std::size_t start = mLineStarts[static_cast<std::size_t>(line - 1)];
    const auto length = static_cast<std::size_t>(mText.length());
    const bool isEmpty = start == length || mText.dataPtr()[start] == '\n';
    return placeOfByte(isEmpty && start > 0 ? start - 1 : start);
}

Place ExpandedFile::placeOfByte(std::size_t offset) const {
    if (mDone.empty()) return {mPath, 0};
    const auto next = std::upper_bound(mDoneBegins.begin(), mDoneBegins.end(), offset);
    const auto index = static_cast<std::size_t>(next - mDoneBegins.begin() - 1);
    const Piece& piece = mDone[index];
    return placeOf({piece.reading, piece.begin + offset - mDoneBegins[index], 1});
}

bool ExpandedFile::hasLineDirective() const {
    return std::any_of(mFiles.begin(), mFiles.end(),
                       [](const File& each) { return each.text.lineDirectiveLine() > 0; });
}

std::vector<std::string> ExpandedFile::files() const {
    std::vector<std::string> paths;
    for (const File& each : mFiles)
        paths.push_back(each.path);
    return paths;
}

// ---- what the loader tells, in its order

void ExpandedFile::finished(std::size_t count) {
    for (const Piece& piece : takeFront(count)) {
        // Bytes that followed each other in their file make one piece.
        const bool continues = !mDone.empty() && mDone.back().reading == piece.reading &&
                               mDone.back().begin + mDone.back().size == piece.begin;
        if (continues)
            mDone.back().size += piece.size;
        else
            mDone.push_back(piece);
    }
}

void ExpandedFile::directive(std::string_view text, std::string_view name) {
    const std::vector<Piece> pieces = takeFront(text.size());
    const Piece& last = pieces.back();
    mDirective = pieces.front();
    mNestedIn = last.reading;
    warnOfDirective(text, name);
    const SourceText& in = mFiles[mReadings[last.reading].file].text;
    if (in.hasCodeBehind(last.begin + last.size))
        warn(placeOf(last), "behind",
             "text behind the directive continues the last line of the included file");
}

void ExpandedFile::file(const char* path, std::string_view text, KyShaderRead outcome) {
    const bool isTop = mReadings.empty();
    const std::size_t number = fileNumber(path, text);
    const Place place = isTop ? Place{mPath, 0} : placeOf(mDirective);
    const bool isRound = !isTop && mReadings[mNestedIn].isRound;
    mReadings.push_back({number, mDirective, mNestedIn, isRound});
    if (isTop) mOutcome = outcome;
    if (outcome == KyShaderRead::Failed && mFailed.empty()) mFailed = path;
    mBytesRead += text.size();
    if (mFiles[number].isOutside)
        warn(place, "tree", inQuotes(path) + " lies outside the shader tree " + mTree);
    if (!isTop && !includesItself(mReadings.back())) warnOfOutcome(place, path, outcome);
    if (!text.empty()) mRest.push_back({mReadings.size() - 1, 0, text.size()});
}

void ExpandedFile::searchAgain(std::size_t count) {
    while (count > 0) {
        Piece& last = mDone.back();
        const std::size_t taken = std::min(count, last.size);
        last.size -= taken;
        mRest.push_back({last.reading, last.begin + last.size, taken});
        if (last.size == 0) mDone.pop_back();
        count -= taken;
    }
}

std::vector<ExpandedFile::Piece> ExpandedFile::takeFront(std::size_t count) {
    std::vector<Piece> taken;
    while (count > 0) {
        Piece& front = mRest.back();
        taken.push_back({front.reading, front.begin, std::min(count, front.size)});
        count -= taken.back().size;
        front.begin += taken.back().size;
        front.size -= taken.back().size;
        if (front.size == 0) mRest.pop_back();
    }
    return taken;
}

// A file may be named where it is not read before it is named where it is.
std::size_t ExpandedFile::fileNumber(const char* path, std::string_view text) {
    const auto [found, isNew] = mFileNumbers.emplace(path, mFiles.size());
    const bool leaves = isNew && *path != '\0' && normal(path).compare(0, mTree.size(), mTree) != 0;
    if (isNew) mFiles.push_back({path, SourceText({}), leaves, false});
    File& file = mFiles[found->second];
    if (file.isRead || text.empty()) return found->second;
    file.isRead = true;
    file.text = SourceText(text);
    if (file.text.carriageReturnLine() > 0)
        warn({path, file.text.carriageReturnLine()}, "CR", "carriage returns reach the compiler");
    if (file.text.lineDirectiveLine() > 0)
        warn({path, file.text.lineDirectiveLine()}, "line",
             "#line: what the driver says of this text stays as it is, without places");
    if (text.substr(0, 4) == "\n\xEF\xBB\xBF")
        warn({path, 1}, "BOM", "a UTF-8 byte order mark reaches the compiler");
    return found->second;
}

Place ExpandedFile::placeOf(const Piece& piece) const {
    const File& in = mFiles[mReadings[piece.reading].file];
    return {in.path, in.text.lineOf(piece.begin)};
}

// ---- what there is to warn of

// A file that includes itself stands in the same place at each round, and there one warning does.
void ExpandedFile::warn(const Place& place, const std::string& kind, const std::string& text) {
    if (mWarned.emplace(place.file, place.line, kind).second)
        mWarnings.push_back({place, "warning", text});
}

void ExpandedFile::warnOfDirective(std::string_view text, std::string_view name) {
    const Place place = placeOf(mDirective);
    const SourceText& in = mFiles[mReadings[mDirective.reading].file].text;
    const std::size_t at = mDirective.begin;
    if (in.where(at) == SourceText::Where::LineComment)
        warn(place, "comment", "#include in a comment: it is expanded, and its lines are code");
    if (in.where(at) == SourceText::Where::BlockComment)
        warn(place, "comment", "#include in a comment: it is expanded");
    if (in.isConditional(at))
        warn(place, "condition", "#include between #if and #endif: it is expanded in any case");

    const std::size_t open = text.find('"');
    const std::string_view gap = text.substr(kDirective.size(), open - kDirective.size());
    if (open == std::string_view::npos)
        warn(place, "read", "#include without quotes: the text ends here");
    else if (open + name.size() + 2 > text.size())
        warn(place, "read", "#include without a closing quote: the text ends here");
    else if (gap.find_first_not_of(" \t") != std::string_view::npos)
        warn(place, "quotes",
             (gap.find('<') == std::string_view::npos ? "#include without its quotes"
                                                      : "#include <...> is not known") +
                 std::string(": the next ones name ") + inQuotes(std::string(name)) +
                 ", and all up to there is gone");
    else if (name.find('\n') != std::string_view::npos)
        warn(place, "quotes", "#include with quotes on different lines: the text between is gone");
}

void ExpandedFile::warnOfOutcome(const Place& place, const std::string& path,
                                 KyShaderRead outcome) {
    const auto warnThat = [&](const char* what) {
        warn(place, "read", inQuotes(path) + what + "; nothing is put in its place");
    };
    if (outcome == KyShaderRead::CannotRead)
        warnThat(" cannot be read (looked for beside the top-level file)");
    if (outcome == KyShaderRead::TooMuch)
        warnThat(" does not fit into what one expansion may read");
    if (outcome == KyShaderRead::TooMany) warnThat(" is one file more than one expansion may read");
    if (outcome == KyShaderRead::TooDeep) warnThat(" is included too deep");
}

// The files that it is nested in, from the inside out: no more than the loader allows.
std::vector<std::size_t> ExpandedFile::filesAbove(const Reading& reading) const {
    std::vector<std::size_t> files;
    for (const Reading* at = &reading; at->directive.size > 0;) {
        at = &mReadings[at->nestedIn];
        files.push_back(at->file);
    }
    return files;
}

// What is in a file that included itself was there in the round before.
bool ExpandedFile::includesItself(Reading& reading) {
    if (reading.isRound) return true;
    const std::vector<std::size_t> above = filesAbove(reading);
    const auto same = std::find(above.begin(), above.end(), reading.file);
    if (same == above.end()) return false;
    reading.isRound = true;
    std::string chain = mFiles[reading.file].path;
    // A long chain is shown by its ends: there may be one for each line of a file.
    constexpr auto kEnd = 4;
    for (auto file = above.begin(); file <= same; ++file) {
        const bool isLong = file - above.begin() == kEnd && same - file > kEnd;
        if (isLong) file = same - kEnd;
        chain.insert(0, mFiles[*file].path + (isLong ? " -> ... -> " : " -> "));
    }
    warn(placeOf(reading.directive), "itself", "a file includes itself: " + chain);
    return true;
}
