#include <kygl/containers/KyDArray.h>
#include <kygl/containers/KyHashTable.h>
#include <kylib/KyString.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

TEST(DArray, sortedSearchAndInsertionNarrowAlike) {
    const struct {
        std::vector<int> content;
        int item;
        long left, right, found, inserted;
    } cases[] = {
        {{}, 5, -1, -1, -1, 0},
        {{10, 20, 30}, 25, -1, -1, -1, 2},
        {{10, 20, 20, 20, 30}, 20, -1, -1, 3, 4},  // of equals the last
        {{10, 20, 30, 40}, 10, 0, 3, 0, 1},        // the left bound is looked at
        {{10, 20, 30, 40}, 30, -1, 2, 2, 2},       // and the right one
        {{10, 20, 30, 40}, 40, -1, 2, -1, 2},      // but nothing beyond
    };
    for (const auto& c : cases) {
        KyDArray<int> array;
        for (const int value : c.content)
            array.append(value);
        const auto order = kyStandardCompare<int>;
        EXPECT_EQ(array.findSorted(c.item, order, c.left, c.right), c.found) << c.item;
        EXPECT_EQ(array.insertSorted(c.item, order, c.left, c.right), c.inserted) << c.item;
        EXPECT_EQ(array[c.inserted], c.item);
    }
}

// A full array takes half as much again as it holds, not as it has room for.
TEST(DArray, stringsSurviveWhateverMovesThemAndItNeverShrinks) {
    std::mt19937 random(1);
    KyDArray<KyString> array;
    std::vector<std::string> model;
    for (int step = 0; step < 2000; ++step) {
        const auto at = static_cast<long>(random() % (model.size() + 1));
        const std::string text(random() % 40, static_cast<char>('a' + step % 26));
        const unsigned long what = random() % 10;
        const long capacity = array.capacity, size = array.size;
        if (what < 4) {
            array.insert(at, text.c_str());
            model.insert(model.begin() + at, text);
        } else if (what < 7 && at < array.size) {
            array.insert(at, array[at / 2]);  // one of its own, also when the storage moves
            model.insert(model.begin() + at, std::string(model[static_cast<std::size_t>(at / 2)]));
        } else if (what < 9 && at < array.size) {
            array.remove(at);
            model.erase(model.begin() + at);
        } else if (what == 9) {
            model.resize(static_cast<std::size_t>(array.resize(2 * at - 3)));
        } else if (array.size == 0) {
            array.remove(0);
        }
        const bool grows = array.size > capacity;
        ASSERT_EQ(array.capacity, grows ? std::max(array.size, size * 3 / 2) : capacity);
        ASSERT_EQ(array.size, static_cast<long>(model.size()));
        for (long i = 0; i < array.size; ++i)
            ASSERT_EQ(array[i].dataPtr(), model[static_cast<std::size_t>(i)]) << "step " << step;
    }
}

TEST(HashTable, holdsWhatAMapHoldsAndGrowsInTime) {
    KyHashTable<KyString, int> table(7);
    std::map<std::string, int> model;
    std::mt19937 random(2);
    int mask = 1;
    for (int step = 0; step < 5000; ++step) {
        const std::string name = std::to_string(random() % 100);
        const KyString key(name.c_str());
        const int* const known = table.lookup(key);
        ASSERT_EQ(known != nullptr, model.count(name) != 0);
        if (random() % 3 != 0) {
            int& value = table[key] += step;
            ASSERT_EQ(value, model.try_emplace(name, 7).first->second += step);
            ASSERT_TRUE(known == nullptr || known == &value);
            if (table.count > 2 * mask + 1) mask = 2 * mask + 1;
        } else {
            ASSERT_EQ(table.remove(key), static_cast<int>(model.erase(name)));
        }
        if (step % 1000 == 500) {
            table.removeAll();
            model.clear();
        }
        ASSERT_EQ(table.count, static_cast<int>(model.size()));
        ASSERT_EQ(table.mask, mask);
    }
    KyHashTableIterator<KyString, int> one(table);
    KyHashTableIterator<KyString, int> other(table);
    KyString key;
    int value = 0;
    other.next(key, value);  // a second walk beside the first disturbs nothing
    for (; one.next(key, value); model.erase(key.dataPtr()))
        ASSERT_EQ(model.at(key.dataPtr()), value);
    EXPECT_TRUE(model.empty());
}

// Ids are counted up from anywhere, or lie on a grid where some of their bits mean something.
TEST(HashTable, aThousandIdsDoNotPileUpInFewBuckets) {
    for (const unsigned int first : {0U, 77U, 0xfffffe00U}) {
        for (int shift = 0; shift < 23; ++shift) {
            KyHashTable<unsigned int, int> table(0);
            for (unsigned int i = 0; i < 1000; ++i)
                table[(first + i) << shift];
            for (int bucket = 0; bucket <= table.mask; ++bucket) {
                int chain = 0;
                for (auto* entry = table.buckets[bucket]; entry != nullptr; entry = entry->next)
                    ++chain;
                ASSERT_LE(chain, shift == 0 ? 2 : 6) << "first " << first << " shift " << shift;
            }
        }
    }
}
