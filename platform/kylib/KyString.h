#pragma once

#include <kygl/containers/KyDArray.h>
#include <kygl/containers/KyHashTable.h>
#include <kylib/KyHandable.h>
#include <kylib/kyhash.h>
#include <kylib/kylibApi.h>

#include <cstdarg>
#include <cstring>

/// A text of bytes: an array of `char` that always ends in one NUL of its own.
///
/// The length is `size - 1`; the empty text is the NUL alone. Code that works on the array
/// directly (`resize`, `append`) puts the closing NUL back itself before it hands the text on.
/// A string belongs to one thread at a time. Failed allocations leave as `std::bad_alloc` and
/// leave the string as it was.
class KYLIB_API KyString : public KyDArray<char>, public KyHandable {
public:
    /// The empty text, with room for 16 bytes.
    KyString();
    /// A copy of `text`; null gives the empty text. Implicit, so that literals serve as arguments.
    KyString(const char* text);  // NOLINT(google-explicit-constructor)
    /// A copy of the text.
    KyString(const KyString& other);
    /// A text formatted as by `printf`. The first argument is 0 at all calls and has no effect; it
    /// tells this form apart from the one that takes its text as it stands.
    KyString(int, const char* format, ...) __attribute__((format(printf, 3, 4)));
    ~KyString() override;

    /// Replaces the text by a copy of the other.
    KyString& operator=(const KyString& other);

    /// The content becomes the formatted text. Arguments may point into this very string.
    /// A format that the C library refuses gives the empty text. Allocates once at most: for a text
    /// that does not fit in the capacity, and for one of 1024 bytes or more.
    ///@{
    void printf(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void vprintf(const char* format, std::va_list arguments) __attribute__((format(printf, 2, 0)));
    ///@}

    /// Splits at each separator and keeps empty pieces: n separators give n + 1 pieces.
    /// @param pieces replaced by the pieces; may not hold this string
    void explode(char separator, KyDArray<KyString>& pieces) const;

    /// The characters, never null, zero-terminated; valid until the string changes or dies.
    ///@{
    const char* dataPtr() const { return data; }
    const char* getString() const { return data; }
    ///@}
    /// As above, writable over `size` bytes: GL writes its logs here.
    char* getString() { return data; }

    /// Number of bytes in front of the closing NUL.
    long length() const { return size - 1; }

private:
    friend KYLIB_API KyString operator+(const KyString& left, const KyString& right);

    struct Room {
        long bytes;
    };
    explicit KyString(Room room);  // as many bytes, undefined

    void assign(const char* bytes, long count);
    void vprintfLong(long length, const char* format, std::va_list arguments);
};

/// The two texts, one after the other.
KYLIB_API KyString operator+(const KyString& left, const KyString& right);

/// 0 when both texts are equal, 1 when not; texts of different length are told apart unread.
template <>
inline int compare<KyString>(const KyString& a, const KyString& b) {
    if (a.size != b.size) return 1;
    return std::strcmp(a.dataPtr(), b.dataPtr()) == 0 ? 0 : 1;
}

/// The hash of a key runs over its zero-terminated text.
template <>
inline unsigned int kyKeyHash<KyString>(const KyString& key) {
    return kyhash(key.dataPtr());
}
