#include "KyShaderKnownOrigins.h"

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <new>

namespace {

using Store = std::list<KyShaderOrigins>;

constexpr std::size_t kMost = 256;

std::mutex sMutex;
// The one that was used last comes first. Never destroyed: threads may still build while the
// process ends. Takes no memory while nobody listens.
alignas(Store) unsigned char sPlaceOfStore[sizeof(Store)];
Store& sStore = *new (sPlaceOfStore) Store;

Store::iterator find(const std::string& path, const KyString& source) {
    return std::find_if(sStore.begin(), sStore.end(), [&](const KyShaderOrigins& each) {
        return each.path() == path && compare(each.source(), source) == 0;
    });
}

}  // namespace

// Included files are looked for up to the last backslash, if there is any: one in the working
// folder would redirect them. And a folder above that one may be closed to the process.
KyString KyShaderKnownOrigins::fullPath(const KyString& path) {
    std::error_code failure;  // the path is empty, or the working folder is gone
    const std::string full = std::filesystem::absolute(path.dataPtr(), failure).string();
    if (failure || full.find('\\') != std::string::npos) return path;
    const bool isLost =
        !std::filesystem::exists(full, failure) && std::filesystem::exists(path.dataPtr(), failure);
    return isLost ? path : KyString(full.c_str());
}

KyShaderKnownOrigins::KyShaderKnownOrigins(const KyString& path) {
    mOrigins.emplace_back(path.dataPtr(), KyShaderTop::Regular);
}

KyShaderKnownOrigins::KyShaderKnownOrigins(const KyString& path, const KyString& source) {
    {
        const std::lock_guard<std::mutex> hold(sMutex);
        const auto known = find(path.dataPtr(), source);
        if (known != sStore.end()) mOrigins.splice(mOrigins.end(), sStore, known);
    }
    if (!mOrigins.empty()) return;
    mOrigins.emplace_back(path.dataPtr(), KyShaderTop::Regular);
    if (compare(mOrigins.front().source(), source) != 0) mOrigins.clear();
}

// Each variant of a shader reads its file for itself: equal texts of a file are kept once.
KyShaderKnownOrigins::~KyShaderKnownOrigins() {
    if (mOrigins.empty()) return;
    Store dropped;  // destroyed after the lock
    const std::lock_guard<std::mutex> hold(sMutex);
    const auto same = find(mOrigins.front().path(), mOrigins.front().source());
    if (same != sStore.end()) dropped.splice(dropped.end(), sStore, same);
    sStore.splice(sStore.begin(), mOrigins);
    if (sStore.size() > kMost) dropped.splice(dropped.end(), sStore, std::prev(sStore.end()));
}

void KyShaderKnownOrigins::clear() {
    Store dropped;
    const std::lock_guard<std::mutex> hold(sMutex);
    dropped.swap(sStore);
}
