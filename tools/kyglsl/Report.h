#pragma once

#include <KyShaderMessage.h>
#include "ProgramList.h"

#include <map>
#include <string>
#include <vector>

/// What came of one program with one macro set.
struct VariantReport {
    std::vector<std::string> macros;
    bool good = false;
    std::vector<KyShaderMessage> messages;
    struct Log {
        const char* of;  // "vertex", "fragment" or "link"
        std::string text;
    };
    std::vector<Log> logs;  // none unless asked for

    bool hasWarning() const;  ///< of the driver
};

/// "A; B 2"
std::string joined(const std::vector<std::string>& macros);

/// The messages of one program, each once, in the order in which they came.
class MessageList {
public:
    struct Item {
        KyShaderMessage message;
        std::vector<std::string> first;  // the macros of a variant
        long count;                      // of the variants that have it
    };

    void add(const VariantReport& variant);
    const std::vector<Item>& items() const { return mItems; }
    long variants() const { return mVariants; }

    /// The message as text. One that not all variants have comes with how many do and the first of
    /// them.
    std::string text(const Item& item) const;

private:
    std::map<std::string, std::size_t> mKnown;
    std::vector<Item> mItems;
    std::vector<long> mLast;  // of the variants, for each item
    long mVariants = 0;
};
