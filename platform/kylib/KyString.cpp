#include <kylib/KyString.h>

#include <cstdio>

KyString::KyString() {
    reserve(16);
    append('\0');
}

KyString::KyString(const char* text) {
    if (text == nullptr) text = "";
    assign(text, static_cast<long>(std::strlen(text)));
}

KyString::KyString(const KyString& other) : KyDArray<char>(), KyHandable(other) {
    assign(other.data, other.length());
}

KyString::KyString(int, const char* format, ...) : KyString() {
    std::va_list arguments;
    va_start(arguments, format);
    vprintf(format, arguments);
    va_end(arguments);
}

KyString::~KyString() = default;

KyString& KyString::operator=(const KyString& other) {
    if (this != &other) assign(other.data, other.length());
    return *this;
}

void KyString::printf(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    vprintf(format, arguments);
    va_end(arguments);
}

// The text is made aside and swapped in, because arguments may point into the present one.
void KyString::vprintf(const char* format, std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    KyDArray<char> made;
    try {
        made.resize(length < 0 ? 1 : long{length} + 1);
    } catch (...) {
        va_end(again);
        throw;
    }
    made[0] = '\0';
    if (length > 0) std::vsnprintf(made.data, static_cast<std::size_t>(made.size), format, again);
    va_end(again);
    swap(made);
}

void KyString::explode(char separator, KyDArray<KyString>& pieces) const {
    pieces.resize(0);
    const char* begin = data;
    const char* const end = data + length();
    while (true) {
        const void* const hit =
            std::memchr(begin, separator, static_cast<std::size_t>(end - begin));
        const char* const stop = hit != nullptr ? static_cast<const char*>(hit) : end;
        pieces.resize(pieces.size + 1);
        pieces[pieces.size - 1].assign(begin, stop - begin);
        if (hit == nullptr) return;
        begin = stop + 1;
    }
}

void KyString::assign(const char* bytes, long count) {
    reserve(count + 1);
    std::memmove(data, bytes, static_cast<std::size_t>(count));
    data[count] = '\0';
    size = count + 1;
}

KyString operator+(const KyString& left, const KyString& right) {
    KyString sum;
    sum.resize(left.length() + right.length() + 1);
    std::memcpy(sum.data, left.data, static_cast<std::size_t>(left.length()));
    std::memcpy(sum.data + left.length(), right.data, static_cast<std::size_t>(right.size));
    return sum;
}
