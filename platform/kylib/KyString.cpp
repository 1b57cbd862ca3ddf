#include <kylib/KyString.h>

#include <algorithm>
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

KyString::KyString(int, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    vprintf(format, arguments);
    va_end(arguments);
}

KyString::KyString(Room room) {
    resize(room.bytes);
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

// The text is made aside, because arguments may point into the present one.
void KyString::vprintf(const char* format, std::va_list arguments) {
    char aside[1024];
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(aside, sizeof aside, format, arguments);
    try {
        if (length < static_cast<int>(sizeof aside))
            assign(aside, std::max(length, 0));
        else
            vprintfLong(length, format, again);
    } catch (...) {
        va_end(again);
        throw;
    }
    va_end(again);
}

// Takes a block of its own, which replaces that of the array as if that had grown.
void KyString::vprintfLong(long length, const char* format, std::va_list arguments) {
    const long grown = std::max(length + 1, static_cast<long>(1.5 * static_cast<double>(size)));
    KyDArray<char> made;
    made.reserve(length < capacity ? capacity : grown);
    made.size = length + 1;
    std::vsnprintf(made.data, static_cast<std::size_t>(made.size), format, arguments);
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
    KyString sum(KyString::Room{left.length() + right.size});
    std::memcpy(sum.data, left.data, static_cast<std::size_t>(left.length()));
    std::memcpy(sum.data + left.length(), right.data, static_cast<std::size_t>(right.size));
    return sum;
}
