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

// Order counts: the same hashes in another order give another number.
unsigned long long extend(unsigned long long fingerprint, unsigned long long hash) {
    fingerprint = (fingerprint + hash + 1) * 0x9e3779b97f4a7c15ULL;
    return fingerprint ^ (fingerprint >> 29);
}

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
    return *this;
}

void KyShaderParametersMacros::clear() {
    mMacros.resize(0);
    mLines.resize(0);
}

bool KyShaderParametersMacros::hasMacro(const KyString& text) const {
    return find(Wanted(text)) >= 0;
}

bool KyShaderParametersMacros::pushMacro(const KyString& text) {
    return push(Wanted(text));
}

bool KyShaderParametersMacros::removeMacro(const KyString& text) {
    return remove(Wanted(text));
}

KyString KyShaderParametersMacros::getDefineMacros() const {
    KyString block;
    block.resize(mLines.size + 1);
    if (mLines.size > 0)
        std::memcpy(block.data, mLines.data, static_cast<std::size_t>(mLines.size));
    block[mLines.size] = '\0';
    return block;
}

KyShaderParametersMacros::Wanted::Wanted(const KyString& wanted)
    : text(wanted.dataPtr()),
      shown(std::strlen(text)),
      length(wanted.length()),
      hash(kyhash(text)) {}

bool KyShaderParametersMacros::push(const Wanted& wanted) {
    if (find(wanted) >= 0) return false;
    if (mMacros.capacity == 0) {
        mMacros.reserve(kUsualMacros);
        mLines.reserve(kUsualBytes);
    }
    const long begin = mLines.size;
    const long end = begin + static_cast<long>(kDefine.size() + wanted.shown) + 1;
    mMacros.reserve(mMacros.size + 1);
    mLines.resize(end);
    char* const line = mLines.data + begin;
    kDefine.copy(line, kDefine.size());
    std::memcpy(line + kDefine.size(), wanted.text, wanted.shown);
    mLines[end - 1] = '\n';
    mMacros.append({wanted.hash, extend(fingerprint(), wanted.hash), wanted.length, end});
    return true;
}

bool KyShaderParametersMacros::remove(const Wanted& wanted) {
    const long found = find(wanted);
    if (found < 0) return false;
    const long begin = lineBegin(found);
    const long end = mMacros[found].end;
    if (end < mLines.size)
        std::memmove(mLines.data + begin, mLines.data + end,
                     static_cast<std::size_t>(mLines.size - end));
    mLines.size -= end - begin;
    mMacros.remove(found);
    unsigned long long fingerprint = found > 0 ? mMacros[found - 1].fingerprint : 0;
    for (long i = found; i < mMacros.size; ++i) {
        fingerprint = extend(fingerprint, mMacros[i].hash);
        mMacros[i].fingerprint = fingerprint;
        mMacros[i].end -= end - begin;
    }
    return true;
}

// Texts are equal if they have the same length and the same bytes up to their first NUL. From the
// end, because the macros that come and go are the last ones.
long KyShaderParametersMacros::find(const Wanted& wanted) const {
    for (long i = mMacros.size - 1; i >= 0; --i)
        if (mMacros[i].hash == wanted.hash && isAt(i, wanted)) return i;
    return -1;
}

// Out of line, so that a search that finds nothing, as before each push, saves no registers.
[[gnu::noinline]] bool KyShaderParametersMacros::isAt(long index, const Wanted& wanted) const {
    const long begin = lineBegin(index) + static_cast<long>(kDefine.size());
    return mMacros[index].length == wanted.length &&
           mMacros[index].end - 1 - begin == static_cast<long>(wanted.shown) &&
           std::memcmp(mLines.data + begin, wanted.text, wanted.shown) == 0;
}

bool operator==(const KyShaderParametersMacros& a, const KyShaderParametersMacros& b) {
    if (a.mMacros.size != b.mMacros.size || a.mLines.size != b.mLines.size) return false;
    if (a.mMacros.size == 0) return true;
    return a.fingerprint() == b.fingerprint() && sameBytes(a.mMacros, b.mMacros) &&
           sameBytes(a.mLines, b.mLines);
}
