#pragma once

#include <kygl/containers/KyDArray.h>
#include <kylib/kyhash.h>

#include <cstdlib>

/// The bucket array of a hash table: up to two pointers lie inside the object, more in a heap
/// block. Neither copied nor moved as an object.
template <typename P>
class KySmallArray {
public:
    int size = 0;  ///< number of pointers

    KySmallArray() : mSlots{} {}
    ~KySmallArray() {
        if (size > kSlots) std::free(mHeap.block);
    }
    KySmallArray(const KySmallArray&) = delete;
    KySmallArray& operator=(const KySmallArray&) = delete;

    /// The pointer at `index`, which lies below `size`.
    ///@{
    P& operator[](int index) { return size <= kSlots ? mSlots[index] : mHeap.block[index]; }
    const P& operator[](int index) const {
        return size <= kSlots ? mSlots[index] : mHeap.block[index];
    }
    ///@}

    /// Raises the size and keeps the content; the new elements are undefined.
    /// @param newSize not below `size`
    /// @return false, and nothing changed, when there is no memory
    bool grow(int newSize);

private:
    static constexpr int kSlots = 2;
    struct Heap {
        int capacity;
        P* block;
    };
    union {
        P mSlots[kSlots];  ///< up to `kSlots` pointers
        Heap mHeap;        ///< more of them
    };
};

template <typename P>
bool KySmallArray<P>::grow(int newSize) {
    const bool onHeap = size > kSlots;
    if (newSize > kSlots && (!onHeap || newSize > mHeap.capacity)) {
        const int room = std::max(newSize, static_cast<int>(1.5 * size));
        const std::size_t bytes = static_cast<std::size_t>(room) * sizeof(P);
        auto* const block = static_cast<P*>(std::realloc(onHeap ? mHeap.block : nullptr, bytes));
        if (block == nullptr) return false;
        if (!onHeap) std::copy(mSlots, mSlots + size, block);
        mHeap = {room, block};
    }
    size = newSize;
    return true;
}

/// Hash of a key; a table takes its low bits.
template <typename K>
unsigned int kyKeyHash(const K& key) {
    return kyhash(static_cast<int>(key));
}

template <typename K, typename V>
class KyHashTableIterator;

/// A chained hash table for the library's small and slowly growing collections.
///
/// Up to three entries need no storage but their own: two buckets live in the object. An entry
/// never moves, so a pointer or reference to a value stays valid until that entry is removed. A
/// table of pointers leaves what they point to with its owner.
///
/// A table has no lock. The cursor of `next` is part of the table, so a walk writes to it and
/// needs exclusive access; only one such walk runs at a time, and it ends or is rewound before
/// the table changes. Separate `KyHashTableIterator`s over a table that nobody changes may run
/// side by side.
template <typename K, typename V>
class KyHashTable {
public:
    /// One pair, in the chain of its bucket.
    struct Entry {
        K key;        ///< never changes
        V value;      ///< may be changed through `operator[]` and `lookup`
        Entry* next;  ///< the next of the chain, or null
    };

    int mask = 1;                  ///< number of buckets minus one; a power of two minus one
    int count = 0;                 ///< number of entries
    KySmallArray<Entry*> buckets;  ///< heads of the chains, `mask + 1` of them
    int cursorBucket = 0;          ///< built-in cursor: the bucket that it stands in
    Entry* cursorEntry = nullptr;  ///< built-in cursor: the next entry to deliver, or null
    V defaultValue;                ///< what a new entry's value starts as

    /// An empty table.
    /// @param initialValue becomes `defaultValue`
    explicit KyHashTable(const V& initialValue) : defaultValue(initialValue) { buckets.grow(2); }
    ~KyHashTable() { removeAll(); }
    KyHashTable(const KyHashTable&) = delete;
    KyHashTable& operator=(const KyHashTable&) = delete;

    /// The value of `key`, inserted with the default value if it is missing. When there is no
    /// memory for the entry the table stays as it was and the exception of `new` passes; when
    /// there is none for more buckets the chains grow longer, and the next insertion tries again.
    V& operator[](const K& key);

    /// Looks a key up and never inserts. @return its value, or null
    V* lookup(const K& key) const;

    /// Removes a key. @return 1 if an entry was removed, 0 if the key was absent
    int remove(const K& key);

    /// Removes every entry. The buckets keep their number and the cursor its place.
    void removeAll();

    /// Rewinds the built-in cursor. Every walk begins with this.
    void resetNext() { rewind(cursorBucket, cursorEntry); }

    /// Delivers the next pair in no particular order.
    /// @return false at the end; the cursor has then rewound itself
    bool next(K& key, V& value) { return advance(cursorBucket, cursorEntry, key, value); }

private:
    friend class KyHashTableIterator<K, V>;

    int bucketOf(const K& key) const {
        return static_cast<int>(kyKeyHash(key) & static_cast<unsigned int>(mask));
    }
    void rebuildTable();
    void rewind(int& bucket, Entry*& entry) const {
        bucket = 0;
        entry = buckets[0];
    }
    bool advance(int& bucket, Entry*& entry, K& key, V& value) const;
};

template <typename K, typename V>
V& KyHashTable<K, V>::operator[](const K& key) {
    if (V* const found = lookup(key)) return *found;
    Entry*& head = buckets[bucketOf(key)];
    auto* const entry = new Entry{key, defaultValue, head};
    head = entry;
    if (++count > 2 * mask + 1) rebuildTable();
    return entry->value;
}

template <typename K, typename V>
V* KyHashTable<K, V>::lookup(const K& key) const {
    for (Entry* entry = buckets[bucketOf(key)]; entry != nullptr; entry = entry->next)
        if (compare(entry->key, key) == 0) return &entry->value;
    return nullptr;
}

template <typename K, typename V>
int KyHashTable<K, V>::remove(const K& key) {
    Entry** link = &buckets[bucketOf(key)];
    while (*link != nullptr && compare((*link)->key, key) != 0)
        link = &(*link)->next;
    Entry* const found = *link;
    if (found == nullptr) return 0;
    *link = found->next;
    --count;
    delete found;
    return 1;
}

template <typename K, typename V>
void KyHashTable<K, V>::removeAll() {
    Entry* all = nullptr;
    for (int i = 0; i <= mask; ++i) {
        while (Entry* const entry = buckets[i]) {
            buckets[i] = entry->next;
            entry->next = all;
            all = entry;
        }
    }
    count = 0;
    while (all != nullptr) {
        Entry* const entry = all;
        all = entry->next;
        delete entry;
    }
}

// Doubles the buckets. Each entry goes to the front of its new chain, so every chain comes out
// reversed. Without memory for the new buckets nothing changes.
template <typename K, typename V>
void KyHashTable<K, V>::rebuildTable() {
    const int oldCount = mask + 1;
    KySmallArray<Entry*> old;
    if (!old.grow(oldCount)) return;
    for (int i = 0; i < oldCount; ++i)
        old[i] = buckets[i];
    if (!buckets.grow(2 * oldCount)) return;
    mask = 2 * mask + 1;
    for (int i = 0; i <= mask; ++i)
        buckets[i] = nullptr;
    for (int i = 0; i < oldCount; ++i) {
        while (Entry* const entry = old[i]) {
            old[i] = entry->next;
            Entry*& head = buckets[bucketOf(entry->key)];
            entry->next = head;
            head = entry;
        }
    }
}

template <typename K, typename V>
bool KyHashTable<K, V>::advance(int& bucket, Entry*& entry, K& key, V& value) const {
    while (entry == nullptr) {
        if (++bucket > mask) {
            rewind(bucket, entry);
            return false;
        }
        entry = buckets[bucket];
    }
    key = entry->key;
    value = entry->value;
    entry = entry->next;
    return true;
}

/// A walk of its own over a table that nobody changes meanwhile.
template <typename K, typename V>
class KyHashTableIterator {
public:
    /// Stands in front of the first pair.
    explicit KyHashTableIterator(const KyHashTable<K, V>& table) : mTable(&table) {
        table.rewind(mBucket, mEntry);
    }

    /// As `KyHashTable::next`, with this iterator's own cursor.
    bool next(K& key, V& value) { return mTable->advance(mBucket, mEntry, key, value); }

private:
    const KyHashTable<K, V>* mTable;
    typename KyHashTable<K, V>::Entry* mEntry = nullptr;
    int mBucket = 0;
};
