#include "Report.h"

#include <KyPrintable.h>

#include <algorithm>

bool VariantReport::hasWarning() const {
    return std::any_of(messages.begin(), messages.end(), [](const KyShaderMessage& message) {
        return message.severity == KyShaderMessage::Severity::Warning;
    });
}

std::string joined(const std::vector<std::string>& macros) {
    std::string all;
    for (const std::string& macro : macros)
        all += (all.empty() ? "" : "; ") + macro;
    return all;
}

void MessageList::add(const VariantReport& variant) {
    ++mVariants;
    for (const KyShaderMessage& message : variant.messages) {
        const auto [found, isNew] = mKnown.emplace(toString(message), mItems.size());
        if (isNew) {
            mItems.push_back({message, variant.macros, 0});
            mLast.push_back(0);
        }
        if (mLast[found->second] != mVariants) ++mItems[found->second].count;
        mLast[found->second] = mVariants;
    }
}

std::string MessageList::text(const Item& item) const {
    std::string text = toString(item.message);
    if (item.count == mVariants) return text;
    const std::string first = item.first.empty() ? "none" : kyPrintable(joined(item.first));
    const std::string which = " [" + std::to_string(item.count) + " of " +
                              std::to_string(mVariants) + " macro sets, first: " + first + "]";
    return text.insert(std::min(text.find('\n'), text.size()), which);
}
