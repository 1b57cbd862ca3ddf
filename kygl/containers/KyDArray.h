#pragma once

#include <kylib/kymemory.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <cwchar>
#include <new>
#include <type_traits>
#include <utility>

/// A growing array with sorted insertion and binary search.
///
/// Elements move by raw memory moves, so `T` must be movable that way: plain values, pointers and
/// `KyString`. Elements of a class type are constructed and destroyed as they come and go; a gap
/// opened by `insertMemory` is the one exception, and its caller constructs into it.
///
/// An array belongs to one thread at a time. Nothing is checked: an index outside the array is a
/// fault of the caller. Failed allocations leave as `std::bad_alloc` and the array as it was, save
/// that `resize` keeps what elements of a class type it made.
template <typename T>
class KyDArray {
public:
    long size = 0;      ///< number of elements in use; changed by the operations below
    long capacity = 0;  ///< number of elements that `data` has room for; falls only by `swap`
    T* data = nullptr;  ///< the storage, null while nothing was allocated

    KyDArray() = default;
    ~KyDArray() {
        destroyFrom(0);
        if (data != nullptr) kyfree(data);
    }
    KyDArray(const KyDArray&) = delete;
    KyDArray& operator=(const KyDArray&) = delete;

    /// The element at `index`, which lies in the array.
    T& operator[](long index) { return data[index]; }
    /// The same of an array that may not be changed.
    const T& operator[](long index) const { return data[index]; }

    /// Adds an element at the end.
    /// @param item copied; may be an element of this array
    /// @return index of the new element
    long append(const T& item) {
        if constexpr (std::is_trivially_copyable_v<T>) {
            const T copy = item;
            reserve(size + 1);
            data[size] = copy;
            return size++;
        } else {
            insert(size, item);
            return size - 1;
        }
    }

    /// Puts a copy of `item` in front of the element at `pos`, or at the end if `pos` is `size`.
    void insert(long pos, const T& item);

    /// Removes one element and moves the tail down; does nothing on an empty array. The storage
    /// stays.
    void remove(long pos);

    /// Opens a gap of `count` elements in front of `pos`; its content is undefined.
    void insertMemory(long pos, long count);

    /// Sets the size; a negative one counts as 0. New plain elements are undefined, those of a
    /// class type are default-constructed. @return the new size
    long resize(long newSize);

    /// Makes room for `count` elements. When that takes an allocation, the room grows to the larger
    /// of `count` and 1.5 times the present size.
    void reserve(long count) {
        if (count > capacity) grow(count);
    }

    /// Linear search. @return index of the first element equal to `item` from index `from` on, or
    /// `size` if there is none
    long find(const T& item, long from = 0) const;

    /// An order: below 0, 0 or above 0 for `a` less than, equal to or greater than `b`.
    using Compare = int(const T& a, const T& b);

    /// Binary search in an array that is sorted ascending under `order`; of equal elements the
    /// last. @param left,right exclusive bounds of the search; `right` -1 means the end
    /// @return index of a match, or -1
    long findSorted(const T& item, Compare* order, long left = -1, long right = -1) const;

    /// Inserts behind the last element that is not greater than `item`; duplicates are kept.
    /// @return index of the new element
    long insertSorted(const T& item, Compare* order, long left = -1, long right = -1);

    /// Exchanges content and storage.
    void swap(KyDArray& other) noexcept {
        std::swap(size, other.size);
        std::swap(capacity, other.capacity);
        std::swap(data, other.data);
    }

private:
    void grow(long count);
    void moveElements(long to, long from, long count) {
        std::memmove(static_cast<void*>(data + to), static_cast<const void*>(data + from),
                     static_cast<std::size_t>(count) * sizeof(T));
    }
    void destroyFrom(long first) {
        if constexpr (!std::is_trivially_destructible_v<T>) {
            while (size > first)
                data[--size].~T();
        }
        size = std::min(size, first);
    }
    void narrow(const T& item, Compare* order, long& left, long& right) const;
};

// The item may be an element of this array, so it is copied before anything moves. A copy of a
// class type is made in raw storage and moved into the gap as every element moves, by its bytes.
template <typename T>
void KyDArray<T>::insert(long pos, const T& item) {
    if constexpr (std::is_trivially_copyable_v<T>) {
        const T copy = item;
        insertMemory(pos, 1);
        data[pos] = copy;
    } else {
        struct Aside {
            alignas(T) unsigned char bytes[sizeof(T)];
            bool owned = true;
            explicit Aside(const T& from) { new (bytes) T(from); }
            ~Aside() {
                if (owned) reinterpret_cast<T*>(bytes)->~T();
            }
        } aside(item);
        insertMemory(pos, 1);
        std::memcpy(static_cast<void*>(data + pos), aside.bytes, sizeof(T));
        aside.owned = false;
    }
}

// The C library searches wide characters, and so numbers of their size, with the vector unit.
template <typename T>
long KyDArray<T>::find(const T& item, long from) const {
    if constexpr (std::is_integral_v<T> && sizeof(T) == sizeof(wchar_t)) {
        if (from >= size) return size;
        const auto* const begin = reinterpret_cast<const wchar_t*>(data);
        const wchar_t* const found = std::wmemchr(begin + from, static_cast<wchar_t>(item),
                                                  static_cast<std::size_t>(size - from));
        return found != nullptr ? found - begin : size;
    } else {
        return std::find(data + from, data + size, item) - data;
    }
}

template <typename T>
void KyDArray<T>::remove(long pos) {
    if (size == 0) return;
    data[pos].~T();
    const long behind = size - (pos + 1);
    if (behind > 0) moveElements(pos, pos + 1, behind);
    --size;
}

template <typename T>
void KyDArray<T>::insertMemory(long pos, long count) {
    reserve(size + count);
    if (pos != size) moveElements(pos + count, pos, size - pos);
    size += count;
}

template <typename T>
long KyDArray<T>::resize(long newSize) {
    newSize = std::max(newSize, 0L);
    reserve(newSize);
    destroyFrom(newSize);
    if constexpr (std::is_trivially_default_constructible_v<T>) {
        size = newSize;
    } else {
        for (; size < newSize; ++size)
            new (data + size) T();
    }
    return size;
}

template <typename T>
void KyDArray<T>::grow(long count) {
    const long room = std::max(count, static_cast<long>(1.5 * static_cast<double>(size)));
    if (room > LONG_MAX / static_cast<long>(sizeof(T))) throw std::bad_alloc();
    const std::size_t bytes = static_cast<std::size_t>(room) * sizeof(T);
    data = static_cast<T*>(data == nullptr ? kymalloc(bytes) : kyrealloc(data, bytes));
    capacity = room;
}

template <typename T>
long KyDArray<T>::findSorted(const T& item, Compare* order, long left, long right) const {
    narrow(item, order, left, right);
    if (left >= 0 && order(item, data[left]) == 0) return left;
    if (right < size && order(item, data[right]) == 0) return right;
    return -1;
}

template <typename T>
long KyDArray<T>::insertSorted(const T& item, Compare* order, long left, long right) {
    narrow(item, order, left, right);
    insert(left + 1, item);
    return left + 1;
}

// Leaves `left` at the last element of the range that is not greater than the item, and `right`
// one behind it.
template <typename T>
void KyDArray<T>::narrow(const T& item, Compare* order, long& left, long& right) const {
    if (right == -1) right = size;
    while (right - left > 1) {
        const long mid = (left + right) / 2;
        (order(item, data[mid]) < 0 ? right : left) = mid;
    }
}

/// Test for equality: 0 when equal, 1 when not. It is no order.
template <typename T>
int compare(const T& a, const T& b) {
    return a == b ? 0 : 1;
}

/// An order: -1, 0 or 1 for `a` less than, equal to or greater than `b`.
template <typename T>
int kyStandardCompare(const T& a, const T& b) {
    return a < b ? -1 : (b < a ? 1 : 0);
}
