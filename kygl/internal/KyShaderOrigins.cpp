#include "KyShaderOrigins.h"

#include "KyNormalPath.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace {

using Severity = KyShaderMessage::Severity;

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

// Columns count from the macro's first byte on, as its author sees it.
KyShaderPlace placeInMacro(std::string_view line, long column) {
    constexpr std::string_view kDefine = "#define ";
    KyShaderPlace place;
    const bool begins = line.substr(0, kDefine.size()) == kDefine;
    const auto skipped = begins ? static_cast<long>(kDefine.size()) : 0;
    place.macro = line.substr(static_cast<std::size_t>(skipped));
    place.column = column > skipped ? column - skipped : 0;
    return place;
}

// Why the system does not give a file.
std::string reason(int error) {
    return error != 0 ? std::generic_category().message(error) : "it is not a regular file";
}

}  // namespace

KyShaderOrigins::KyShaderOrigins(const std::string& path, KyShaderTop top, const std::string& tree)
    : mPath(kyNormalPath(path)), mTree(treeOf(path, tree)) {
    const KyShaderExpansion expansion = loadShader(path.c_str(), this, top);
    mText = expansion.text;
    mIsComplete = expansion.isComplete;
    finishText();
    if (mOutcome == KyShaderRead::Done && mText.length() == 0)
        warn({mPath}, Topic::Style, "empty", "no text: macro lines alone go to the compiler");
}

std::vector<KyShaderMessage> KyShaderOrigins::messages(bool behindMacros) const {
    std::vector<KyShaderMessage> all = mMessages;
    for (const File& each : mFiles)
        if (behindMacros && each.text.versionLine() > 0)
            all.push_back(
                {{{each.path, each.text.versionLine()}},
                 Severity::Warning,
                 "#version is not first, because macros are put in front of the file: leave it "
                 "out, or set no macros",
                 Topic::Version});
    return all;
}

void KyShaderOrigins::finishText() {
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
        warn(placeOfByte(length), Topic::Style, "NUL", "a NUL byte: the text ends in front of it");
}

KyShaderPlace KyShaderOrigins::placeInText(std::string_view macroLines, long line,
                                           long column) const {
    if (line < 1) return {};
    for (; !macroLines.empty(); --line) {
        const std::size_t end = macroLines.find('\n');
        if (line == 1) return placeInMacro(macroLines.substr(0, end), column);
        macroLines.remove_prefix(end + 1);
    }
    return placeOfLine(line, column);
}

KyShaderPlace KyShaderOrigins::placeInLog(std::string_view macroLines, long line,
                                          long column) const {
    return hasLineDirective() ? KyShaderPlace() : placeInText(macroLines, line, column);
}

// The driver's column is that of the line as a whole; it is dropped where the line is put together
// of several files and does not begin in its own.
KyShaderPlace KyShaderOrigins::placeOfLine(long line, long column) const {
    if (line > static_cast<long>(mLineStarts.size())) return {};
    const std::size_t start = mLineStarts[static_cast<std::size_t>(line - 1)];
    const auto length = static_cast<std::size_t>(mText.length());
    const bool isEmpty = start == length || mText.dataPtr()[start] == '\n';
    const std::size_t before = start > 0 ? start - 1 : 0;
    KyShaderPlace place = placeOfByte(isEmpty ? before : start);
    const KyShaderPlace lineFeed = placeOfByte(before);
    if (lineFeed.line == place.line && lineFeed.file == place.file) place.column = column;
    return place;
}

KyShaderPlace KyShaderOrigins::placeOfByte(std::size_t offset) const {
    if (mDone.empty()) return {mPath};
    const auto next = std::upper_bound(mDoneBegins.begin(), mDoneBegins.end(), offset);
    const auto index = static_cast<std::size_t>(next - mDoneBegins.begin() - 1);
    const Piece& piece = mDone[index];
    return placeOf({piece.reading, piece.begin + offset - mDoneBegins[index], 1});
}

bool KyShaderOrigins::hasLineDirective() const {
    return std::any_of(mFiles.begin(), mFiles.end(),
                       [](const File& each) { return each.text.lineDirectiveLine() > 0; });
}

std::vector<std::string> KyShaderOrigins::files() const {
    std::vector<std::string> paths;
    for (const File& each : mFiles)
        paths.push_back(each.path);
    return paths;
}

// Those that put text there.
std::vector<std::size_t> KyShaderOrigins::readingsOf(const std::string& path) const {
    std::vector<std::size_t> readings;
    for (std::size_t i = 1; i < mReadings.size(); ++i)
        if (mReadings[i].hasText && mFiles[mReadings[i].file].path == path) readings.push_back(i);
    return readings;
}

// Each once.
std::vector<KyShaderPlace> KyShaderOrigins::directivesOf(
    const std::vector<std::size_t>& readings) const {
    std::vector<KyShaderPlace> places;
    std::set<std::pair<std::string, long>> known;
    for (const std::size_t reading : readings) {
        const KyShaderPlace place = placeOf(mReadings[reading].directive);
        if (known.emplace(place.file, place.line).second) places.push_back(place);
    }
    return places;
}

// A single directive that is read more than once is in a file that is there more than once, or
// names its file twice on the line.
std::vector<KyShaderMessage> KyShaderOrigins::notesOfInclusions(const std::string& path) const {
    constexpr std::size_t kMostNotes = 8;
    std::vector<std::size_t> readings = readingsOf(path);
    if (readings.size() < 2) return {};
    std::string file = path;
    std::vector<KyShaderPlace> places = directivesOf(readings);
    for (std::set<std::string> seen = {path}; places.size() == 1;) {
        const std::string above = places.front().file;
        readings = readingsOf(above);
        if (readings.size() < 2 || !seen.insert(above).second) break;
        file = above;
        places = directivesOf(readings);
    }
    const char* words = places.size() > 1 ? " is included here" : " is included here, repeatedly";
    std::vector<KyShaderMessage> notes;
    for (const KyShaderPlace& place : places) {
        if (notes.size() == kMostNotes) break;
        notes.push_back({{place}, Severity::Note, inQuotes(file) + words, Topic::Include});
        words = " is included here again";
    }
    return notes;
}

// ---- what the loader reports, in its order

void KyShaderOrigins::finished(std::size_t count) {
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

void KyShaderOrigins::directive(std::string_view text, std::string_view name) {
    const std::vector<Piece> pieces = takeFront(text.size());
    const Piece& last = pieces.back();
    mDirective = pieces.front();
    mNestedIn = last.reading;
    warnOfDirective(text, name);
    const KySourceText& in = mFiles[mReadings[last.reading].file].text;
    if (in.hasCodeBehind(last.begin + last.size))
        warn(placeOf(last), Topic::Style, "behind",
             "text after the directive continues the last line of the included file");
}

void KyShaderOrigins::file(const char* path, std::string_view text, KyShaderRead outcome,
                           int error) {
    const bool isTop = mReadings.empty();
    const std::size_t number = fileNumber(path, text);
    const KyShaderPlace place = isTop ? KyShaderPlace{mPath} : placeOf(mDirective);
    const bool isRound = !isTop && mReadings[mNestedIn].isRound;
    mReadings.push_back({number, mDirective, mNestedIn, isRound, !text.empty()});
    if (isTop) mOutcome = outcome;
    const std::string& shown = mFiles[number].path;
    if (outcome == KyShaderRead::Failed && mFailed.empty()) mFailed = shown;
    mBytesRead += text.size();
    if (mFiles[number].isOutside)
        warn(place, Topic::Style, "tree", inQuotes(shown) + " is outside the shader tree " + mTree);
    if (isTop || !includesItself(mReadings.back())) warnOfOutcome(place, shown, outcome, error);
    if (!text.empty()) mRest.push_back({mReadings.size() - 1, 0, text.size()});
}

void KyShaderOrigins::searchAgain(std::size_t count) {
    while (count > 0) {
        Piece& last = mDone.back();
        const std::size_t taken = std::min(count, last.size);
        last.size -= taken;
        mRest.push_back({last.reading, last.begin + last.size, taken});
        if (last.size == 0) mDone.pop_back();
        count -= taken;
    }
}

std::vector<KyShaderOrigins::Piece> KyShaderOrigins::takeFront(std::size_t count) {
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
std::size_t KyShaderOrigins::fileNumber(const char* path, std::string_view text) {
    const auto [found, isNew] = mFileNumbers.emplace(path, mFiles.size());
    const bool leaves = isNew && *path != '\0' && normal(path).compare(0, mTree.size(), mTree) != 0;
    if (isNew) mFiles.push_back({kyNormalPath(path), KySourceText({}), leaves, false});
    File& file = mFiles[found->second];
    if (file.isRead || text.empty()) return found->second;
    file.isRead = true;
    file.text = KySourceText(text);
    if (file.text.carriageReturnLine() > 0)
        warn({file.path, file.text.carriageReturnLine()}, Topic::Style, "CR",
             "carriage returns reach the compiler");
    if (file.text.lineDirectiveLine() > 0)
        warn({file.path, file.text.lineDirectiveLine()}, Topic::Style, "line",
             "#line: what the driver says of this text stays as it is, without places");
    if (text.substr(0, 4) == "\n\xEF\xBB\xBF")
        warn({file.path, 1}, Topic::Style, "BOM", "a UTF-8 byte order mark reaches the compiler");
    return found->second;
}

KyShaderPlace KyShaderOrigins::placeOf(const Piece& piece) const {
    const File& in = mFiles[mReadings[piece.reading].file];
    return {in.path, in.text.lineOf(piece.begin)};
}

// ---- what there is to warn of

// A file that includes itself comes to the same place at each round, and one message is enough.
void KyShaderOrigins::warn(const KyShaderPlace& place, Topic topic, const std::string& kind,
                           const std::string& text) {
    if (mWarned.emplace(place.file, place.line, kind).second)
        mMessages.push_back({{place}, Severity::Warning, text, topic});
}

void KyShaderOrigins::warnOfDirective(std::string_view text, std::string_view name) {
    const KyShaderPlace place = placeOf(mDirective);
    const KySourceText& in = mFiles[mReadings[mDirective.reading].file].text;
    const std::size_t at = mDirective.begin;
    if (in.where(at) == KySourceText::Where::LineComment)
        warn(place, Topic::Include, "comment",
             "#include in a comment: it is expanded, and its lines are code");
    if (in.where(at) == KySourceText::Where::BlockComment)
        warn(place, Topic::Include, "comment", "#include in a comment: it is expanded");
    if (in.isConditional(at))
        warn(place, Topic::Style, "condition",
             "#include between #if and #endif: it is expanded in any case");

    const std::size_t open = text.find('"');
    const std::string_view gap = text.substr(kDirective.size(), open - kDirective.size());
    if (open == std::string_view::npos)
        warn(place, Topic::Include, "read", "#include without quotes: the text ends here");
    else if (open + name.size() + 2 > text.size())
        warn(place, Topic::Include, "read", "#include without a closing quote: the text ends here");
    else if (gap.find_first_not_of(" \t") != std::string_view::npos)
        warn(place, Topic::Include, "quotes",
             (gap.find('<') == std::string_view::npos ? "#include without its quotes"
                                                      : "#include <...> is not known") +
                 std::string(": the next ones name ") + inQuotes(std::string(name)) +
                 ", and all up to there is gone");
    else if (name.find('\n') != std::string_view::npos)
        warn(place, Topic::Include, "quotes",
             "#include with quotes on different lines: the text between is gone");
}

// Of the top-level file nothing but the reason is to be said.
void KyShaderOrigins::warnOfOutcome(const KyShaderPlace& place, const std::string& path,
                                    KyShaderRead outcome, int error) {
    const bool isTop = mReadings.size() == 1;
    const std::string name = isTop ? "" : inQuotes(path) + " ";
    const char* const inItsPlace = isTop ? "" : "; nothing is put in its place";
    const auto warnThat = [&](Topic topic, const std::string& what) {
        warn(place, topic, "read", name + what + inItsPlace);
    };
    if (outcome == KyShaderRead::CannotRead || outcome == KyShaderRead::Failed)
        warnThat(Topic::File, "cannot be read: " + reason(error) +
                                  (isTop ? "" : " (looked for beside the top-level file)"));
    if (outcome == KyShaderRead::TooMuch)
        warnThat(Topic::Include, "does not fit into what one expansion may read");
    if (outcome == KyShaderRead::TooMany)
        warnThat(Topic::Include, "is one file more than one expansion may read");
    if (outcome == KyShaderRead::TooDeep) warnThat(Topic::Include, "is included too deep");
}

// The files that it is nested in, from the inside out: no more than the loader allows.
std::vector<std::size_t> KyShaderOrigins::filesAbove(const Reading& reading) const {
    std::vector<std::size_t> files;
    for (const Reading* at = &reading; at->directive.size > 0;) {
        at = &mReadings[at->nestedIn];
        files.push_back(at->file);
    }
    return files;
}

// What is in a file that included itself was there in the round before.
bool KyShaderOrigins::includesItself(Reading& reading) {
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
    warn(placeOf(reading.directive), Topic::Include, "itself",
         "a file includes itself: " + chain + "; this #include is ignored: remove it");
    return true;
}
