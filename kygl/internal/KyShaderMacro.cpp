#include <kygl/KyShaderMacro.h>

#include <cstring>
#include <string_view>
#include <type_traits>

namespace {

constexpr std::string_view kDefine = "#define ";

// The room that a set makes at its first push: enough for most, so that a set built for one switch
// allocates twice.
constexpr long kUsualMacros = 8;
constexpr long kUsualBytes = 240;

template <typename T>
void copyInto(KyDArray<T>& array, const KyDArray<T>& other) {
    array.size = other.size;
    if (other.size > 0)
        std::memcpy(array.data, other.data, static_cast<std::size_t>(other.size) * sizeof(T));
}

template <typename T>
bool sameBytes(const KyDArray<T>& a, const KyDArray<T>& b) {
    static_assert(std::has_unique_object_representations_v<T>);
    return std::memcmp(a.data, b.data, static_cast<std::size_t>(a.size) * sizeof(T)) == 0;
}

}  // namespace

KyShaderMacro::KyShaderMacro(const KyString& text) : mText(text), mHash(kyhash(text.dataPtr())) {}

KyString KyShaderMacro::getDefineString() const {
    return KyString(0, "#define %s\n", mText.dataPtr());
}

bool operator==(const KyShaderMacro& a, const KyShaderMacro& b) {
    return a.hash() == b.hash() && compare(a.text(), b.text()) == 0;
}

KyShaderParametersMacros::~KyShaderParametersMacros() = default;

KyShaderParametersMacros& KyShaderParametersMacros::operator=(
    const KyShaderParametersMacros& other) {
    if (this == &other) return *this;
    mMacros.reserve(other.mMacros.size);
    mLines.reserve(other.mLines.size);
    copyInto(mMacros, other.mMacros);
    copyInto(mLines, other.mLines);
    mFingerprint = other.mFingerprint;
    mFingerprinted = other.mFingerprinted;
    return *this;
}

void KyShaderParametersMacros::clear() {
    mMacros.resize(0);
    mLines.resize(0);
    mFingerprint = 0;
    mFingerprinted = 0;
}

bool KyShaderParametersMacros::hasMacro(const KyString& text) const {
    return find(wanted(text)) >= 0;
}

bool KyShaderParametersMacros::pushMacro(const KyString& text) {
    return push(wanted(text));
}

bool KyShaderParametersMacros::removeMacro(const KyString& text) {
    return remove(wanted(text));
}

KyString KyShaderParametersMacros::getDefineMacros() const {
    KyString block;
    block.resize(mLines.size + 1);
    if (mLines.size > 0)
        std::memcpy(block.data, mLines.data, static_cast<std::size_t>(mLines.size));
    block[mLines.size] = '\0';
    return block;
}

KyShaderParametersMacros::Wanted KyShaderParametersMacros::wanted(const KyString& text) {
    const std::size_t shown = std::strlen(text.dataPtr());
    return {text.dataPtr(), shown, text.length(), kyhash(text.dataPtr())};
}

bool KyShaderParametersMacros::push(const Wanted& macro) {
    if (find(macro) >= 0) return false;
    if (mMacros.capacity == 0) {
        mMacros.reserve(kUsualMacros);
        mLines.reserve(kUsualBytes);
    }
    const long begin = mLines.size;
    const long end = begin + static_cast<long>(kDefine.size() + macro.shown) + 1;
    mMacros.reserve(mMacros.size + 1);
    mLines.reserve(end);
    char* const line = mLines.data + begin;
    kDefine.copy(line, kDefine.size());
    std::memcpy(line + kDefine.size(), macro.text, macro.shown);
    mLines[end - 1] = '\n';
    mLines.size = end;
    if (mFingerprinted == mMacros.size) {
        mFingerprint = extend(mFingerprint, macro.hash);
        ++mFingerprinted;
    }
    mMacros[mMacros.size++] = {macro.hash, macro.length, end};
    return true;
}

bool KyShaderParametersMacros::remove(const Wanted& macro) {
    const long found = find(macro);
    if (found < 0) return false;
    while (mFingerprinted > found)
        mFingerprint = retract(mFingerprint, mMacros[--mFingerprinted].hash);
    const long begin = lineBegin(found);
    const long end = mMacros[found].end;
    if (end < mLines.size)
        std::memmove(mLines.data + begin, mLines.data + end,
                     static_cast<std::size_t>(mLines.size - end));
    mLines.size -= end - begin;
    --mMacros.size;
    for (long i = found; i < mMacros.size; ++i) {
        mMacros[i] = mMacros[i + 1];
        mMacros[i].end -= end - begin;
    }
    return true;
}

// Texts are equal if they have the same length and the same bytes up to their first NUL. From the
// end, because the macros that come and go are the last ones.
long KyShaderParametersMacros::find(const Wanted& macro) const {
    const Macro* const begin = mMacros.data;
    for (const Macro* at = begin + mMacros.size; at != begin;)
        if ((--at)->hash == macro.hash && isAt(at - begin, macro)) return at - begin;
    return -1;
}

// Out of line, so that a search that finds nothing, as before each push, saves no registers.
[[gnu::noinline]] bool KyShaderParametersMacros::isAt(long index, const Wanted& macro) const {
    const long begin = lineBegin(index) + static_cast<long>(kDefine.size());
    return mMacros[index].length == macro.length &&
           mMacros[index].end - 1 - begin == static_cast<long>(macro.shown) &&
           std::memcmp(mLines.data + begin, macro.text, macro.shown) == 0;
}

bool operator==(const KyShaderParametersMacros& a, const KyShaderParametersMacros& b) {
    if (a.mMacros.size != b.mMacros.size || a.mLines.size != b.mLines.size) return false;
    if (a.mFingerprinted == b.mFingerprinted && a.mFingerprint != b.mFingerprint) return false;
    return a.mMacros.size == 0 ||
           (sameBytes(a.mMacros, b.mMacros) && sameBytes(a.mLines, b.mLines));
}
