#include "KyShaderDeclarations.h"

#include <algorithm>

namespace {

constexpr std::string_view kLetters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
constexpr auto kNone = std::string_view::npos;

// The next word from `at` on, which ends up after it; empty at the end.
std::string_view takeWord(std::string_view text, std::size_t& at) {
    const std::size_t begin = std::min(text.find_first_of(kLetters, at), text.size());
    at = std::min(text.find_first_not_of(kLetters, begin), text.size());
    return text.substr(begin, at - begin);
}

bool isQualifier(std::string_view word) {
    constexpr std::string_view kWords[] = {"uniform", "varying", "attribute", "in", "out"};
    return std::find(std::begin(kWords), std::end(kWords), word) != std::end(kWords);
}

// Whether the statement that ends before `at` begins a declaration: a qualifier, and a type before
// the name. A parameter of a function is in parentheses.
bool isDeclaration(std::string_view text, std::size_t at) {
    const std::size_t begin = text.find_last_of(";{}()\n#", at - 1) + 1;
    const std::string_view before = text.substr(begin, at - begin);
    if (before.find("//") != kNone) return false;
    bool hasQualifier = false;
    bool hasType = false;
    for (std::size_t next = 0; next < before.size();) {
        const std::string_view word = takeWord(before, next);
        hasType = hasType || (hasQualifier && !word.empty());
        hasQualifier = hasQualifier || isQualifier(word);
    }
    return hasType && (begin == 0 || text[begin - 1] != '(');
}

// The first word of the message that is declared in the stage decides.
void placeDeclaration(const std::string& message, KyShaderPlace& place,
                      const KyShaderOrigins& origins) {
    const std::string_view text(origins.source().dataPtr());
    for (std::size_t at = 0; at < message.size();) {
        const std::string_view word = takeWord(message, at);
        const std::size_t found = kyFindDeclaration(text, word);
        if (found == kNone) continue;
        place = origins.placeOfByte(found);
        return;
    }
}

}  // namespace

std::size_t kyFindDeclaration(std::string_view text, std::string_view name) {
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view word = takeWord(text, at);
        if (word == name && !name.empty() && at > name.size() &&
            isDeclaration(text, at - name.size()))
            return at - name.size();
    }
    return kNone;
}

void kyPlaceDeclarations(std::vector<KyShaderMessage>& messages, const KyShaderOrigins* vertex,
                         const KyShaderOrigins* fragment) {
    for (KyShaderMessage& message : messages) {
        if (message.places.size() != 2) continue;
        if (vertex != nullptr) placeDeclaration(message.text, message.places[0], *vertex);
        if (fragment != nullptr) placeDeclaration(message.text, message.places[1], *fragment);
    }
}
