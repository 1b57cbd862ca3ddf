#include <kygl/KyShaderMacro.h>

#include <cstring>

namespace {

// Order counts: the same hashes in another order give another number.
unsigned long long extend(unsigned long long fingerprint, const KyShaderMacro& macro) {
    fingerprint = (fingerprint + macro.hash() + 1) * 0x9e3779b97f4a7c15ULL;
    return fingerprint ^ (fingerprint >> 29);
}

}  // namespace

KyShaderMacro::KyShaderMacro(const KyString& text) : KyShaderMacro(text, kyhash(text.dataPtr())) {}

KyShaderMacro::KyShaderMacro(const KyString& text, unsigned int hash) : mText(text), mHash(hash) {}

KyString KyShaderMacro::getDefineString() const {
    return KyString(0, "#define %s\n", mText.dataPtr());
}

bool operator==(const KyShaderMacro& a, const KyShaderMacro& b) {
    return a.hash() == b.hash() && compare(a.text(), b.text()) == 0;
}

void KyShaderMacro::assign(const KyString& text, unsigned int hash) {
    mText = text;
    mHash = hash;
}

KyShaderParametersMacros::~KyShaderParametersMacros() {
    clear();
    delete mSpare;
}

// Sets that follow each other mostly differ in a macro or two, so macros that are the same at the
// same place stay. The others are copied aside first: running out of memory leaves this set as it
// was.
KyShaderParametersMacros& KyShaderParametersMacros::operator=(
    const KyShaderParametersMacros& other) {
    if (this == &other) return *this;
    KyShaderParametersMacros made;
    made.mMacros.reserve(other.mMacros.size);
    for (long i = 0; i < other.mMacros.size; ++i) {
        const bool stays = i < mMacros.size && *mMacros[i] == *other.mMacros[i];
        made.mMacros.append(stays ? nullptr : new KyShaderMacro(*other.mMacros[i]));
    }
    for (long i = 0; i < made.mMacros.size; ++i)
        if (made.mMacros[i] == nullptr) std::swap(made.mMacros[i], mMacros[i]);
    mMacros.swap(made.mMacros);
    mFingerprint = other.mFingerprint;
    return *this;
}

void KyShaderParametersMacros::clear() {
    for (long i = 0; i < mMacros.size; ++i)
        delete mMacros[i];
    mMacros.resize(0);
    mFingerprint = 0;
}

bool KyShaderParametersMacros::hasMacro(const KyString& text) const {
    return find(text, kyhash(text.dataPtr())) >= 0;
}

bool KyShaderParametersMacros::pushMacro(const KyString& text) {
    const unsigned int hash = kyhash(text.dataPtr());
    if (find(text, hash) >= 0) return false;
    if (mSpare == nullptr)
        mSpare = new KyShaderMacro(text, hash);
    else
        mSpare->assign(text, hash);
    mMacros.append(mSpare);
    mFingerprint = extend(mFingerprint, *mSpare);
    mSpare = nullptr;
    return true;
}

bool KyShaderParametersMacros::removeMacro(const KyString& text) {
    const long found = find(text, kyhash(text.dataPtr()));
    if (found < 0) return false;
    delete mSpare;
    mSpare = mMacros[found];
    mMacros.remove(found);
    mFingerprint = 0;
    for (long i = 0; i < mMacros.size; ++i)
        mFingerprint = extend(mFingerprint, *mMacros[i]);
    return true;
}

KyString KyShaderParametersMacros::getDefineMacros() const {
    KyString block;
    for (long i = 0; i < mMacros.size; ++i) {
        const KyString line = mMacros[i]->getDefineString();
        const long end = block.length();
        block.resize(block.size + line.length());
        std::memcpy(block.data + end, line.data, static_cast<std::size_t>(line.size));
    }
    return block;
}

long KyShaderParametersMacros::find(const KyString& text, unsigned int hash) const {
    for (long i = 0; i < mMacros.size; ++i)
        if (mMacros[i]->hash() == hash && compare(mMacros[i]->text(), text) == 0) return i;
    return -1;
}

bool operator==(const KyShaderParametersMacros& a, const KyShaderParametersMacros& b) {
    if (a.mMacros.size != b.mMacros.size || a.mFingerprint != b.mFingerprint) return false;
    for (long i = 0; i < a.mMacros.size; ++i)
        if (!(*a.mMacros[i] == *b.mMacros[i])) return false;
    return true;
}
