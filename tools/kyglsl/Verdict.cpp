#include "Verdict.h"

#include <KyPrintable.h>

#include <cstdio>
#include <set>

void Verdict::add(const std::string& name, const std::string& message, const std::string& text) {
    mLines[name].push_back({message, text});
}

const Verdict::Lines& Verdict::linesOf(const std::string& name) const {
    static const Lines kNone;
    const auto found = mLines.find(name);
    return found != mLines.end() ? found->second : kNone;
}

void Verdict::printChanges(const Verdict& before, const Verdict& after) {
    const auto missing = [](const Lines& from, const Lines& in, const char* sign) {
        std::set<std::string> known;
        for (const Line& line : in)
            known.insert(line.message);
        std::string out;
        for (const Line& line : from)
            if (known.insert(line.message).second) out += sign + line.text + "\n";
        return out;
    };
    std::set<std::string> names;
    for (const Verdict* verdict : {&before, &after})
        for (const auto& [name, lines] : verdict->mLines)
            names.insert(name);
    for (const std::string& name : names) {
        const std::string changes = missing(before.linesOf(name), after.linesOf(name), "- ") +
                                    missing(after.linesOf(name), before.linesOf(name), "+ ");
        if (!changes.empty()) std::printf("%s\n%s", kyPrintable(name).c_str(), changes.c_str());
    }
}

void VerdictOutput::warning(const KyShaderMessage& warning) {
    mVerdict.add("files", toString(warning));
}

void VerdictOutput::beginProgram(const Program& program) {
    mProgram = program.name();
    mMessages = {};
}

void VerdictOutput::endProgram() {
    for (const MessageList::Item& item : mMessages.items())
        mVerdict.add(mProgram, toString(item.message), mMessages.text(item));
}
