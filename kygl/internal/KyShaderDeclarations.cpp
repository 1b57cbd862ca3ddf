#include "KyShaderDeclarations.h"

#include <algorithm>
#include <map>

namespace {

constexpr auto kNone = std::string_view::npos;

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// The word at `at`, which ends up after it.
std::string_view takeWord(std::string_view text, std::size_t& at) {
    const std::size_t begin = at;
    while (at < text.size() && isLetter(text[at]))
        ++at;
    return text.substr(begin, at - begin);
}

bool isQualifier(std::string_view word) {
    constexpr std::string_view kWords[] = {"uniform", "varying", "attribute", "in", "out"};
    return std::find(std::begin(kWords), std::end(kWords), word) != std::end(kWords);
}

/// Goes through a text once and finds the names that it declares: in one statement and on one line
/// after a qualifier and a type. A parameter of a function is in parentheses.
class Declarations {
public:
    explicit Declarations(std::string_view text) : mText(text) {}

    /// @return the next name, in the text; empty at its end
    std::string_view next() {
        while (mAt < mText.size()) {
            if (!isLetter(mText[mAt])) {
                skip();
                continue;
            }
            const bool isName = mStatement.hasType && !mStatement.isOther;
            const std::string_view word = takeWord(mText, mAt);
            mStatement.hasType = mStatement.hasType || mStatement.hasQualifier;
            mStatement.hasQualifier = mStatement.hasQualifier || isQualifier(word);
            if (isName) return word;
        }
        return {};
    }

private:
    struct Statement {
        bool isOther;  // parameters or a comment
        bool hasQualifier;
        bool hasType;
    };

    void skip() {
        const char c = mText[mAt];
        if (std::string_view(";{}()\n#").find(c) != kNone) mStatement = {c == '(', false, false};
        if (mText.substr(mAt, 2) == "//") mStatement.isOther = true;
        ++mAt;
    }

    std::string_view mText;
    std::size_t mAt = 0;
    Statement mStatement = {false, false, false};
};

/// Where one stage declares what: logs may be long, and so may texts.
class StageDeclarations {
public:
    explicit StageDeclarations(const KyShaderOrigins* origins) : mOrigins(origins) {
        if (origins == nullptr) return;
        const std::string_view text(origins->source().dataPtr());
        Declarations names(text);
        for (auto name = names.next(); !name.empty(); name = names.next())
            mOffsets.emplace(name, name.data() - text.data());
    }

    // The first word of the message that is declared decides.
    void place(std::string_view message, KyShaderPlace& place) const {
        for (std::size_t at = 0; at < message.size(); ++at) {
            const auto found = mOffsets.find(takeWord(message, at));
            if (found == mOffsets.end()) continue;
            place = mOrigins->placeOfByte(found->second);
            return;
        }
    }

private:
    const KyShaderOrigins* mOrigins;
    std::map<std::string_view, std::size_t> mOffsets;  // of the first declaration
};

}  // namespace

std::size_t kyFindDeclaration(std::string_view text, std::string_view name) {
    Declarations names(text);
    for (auto each = names.next(); !each.empty(); each = names.next())
        if (each == name) return static_cast<std::size_t>(each.data() - text.data());
    return kNone;
}

void kyPlaceDeclarations(std::vector<KyShaderMessage>& messages, const KyShaderOrigins* vertex,
                         const KyShaderOrigins* fragment) {
    if (messages.empty()) return;
    const StageDeclarations ofVertex(vertex);
    const StageDeclarations ofFragment(fragment);
    for (KyShaderMessage& message : messages) {
        if (message.places.size() != 2) continue;
        ofVertex.place(message.text, message.places[0]);
        ofFragment.place(message.text, message.places[1]);
    }
}
