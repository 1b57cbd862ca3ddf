// The containers, a thousand numbers each, beside those of the standard library.

#include "support.h"

#include <kygl/containers/KyDArray.h>
#include <kygl/containers/KyHashTable.h>

#include <algorithm>
#include <random>
#include <unordered_map>
#include <vector>

namespace {

struct Library {
    using Array = KyDArray<int>;
    struct Table : KyHashTable<int, int> {
        Table() : KyHashTable<int, int>(0) {}
    };
    static void append(Array& array, int n) { array.append(n); }
    static void insert(Array& array, int n) { array.insertSorted(n, kyStandardCompare<int>); }
    static long find(Array& array, int n) { return array.findSorted(n, kyStandardCompare<int>); }
    static int lookup(Table& table, int n) { return *table.lookup(n); }
    static void walk(Table& table) {
        KyHashTableIterator<int, int> walk(table);
        for (int key = 0, value = 0; walk.next(key, value);)
            benchmark::DoNotOptimize(value);
    }
};

struct Peer {
    using Array = std::vector<int>;
    using Table = std::unordered_map<int, int>;
    static void append(Array& array, int n) { array.push_back(n); }
    static void insert(Array& array, int n) {
        array.insert(std::upper_bound(array.begin(), array.end(), n), n);
    }
    static long find(Array& array, int n) {
        return std::lower_bound(array.begin(), array.end(), n) - array.begin();
    }
    static int lookup(Table& table, int n) { return table.find(n)->second; }
    static void walk(Table& table) {
        for (const auto& [key, value] : table)
            benchmark::DoNotOptimize(value);
    }
};

template <typename Step>
void forNumbers(Step step) {
    static const std::vector<int> numbers = [] {
        std::vector<int> all(1000);
        std::mt19937 random(1);
        for (int& number : all)
            number = static_cast<int>(random() >> 1);
        return all;
    }();
    for (const int number : numbers)
        step(number);
}

template <typename Side>
void add(const std::string& side) {
    const auto addStep = [&](const std::string& subject, auto step) {
        addSide(subject + side, [step] { return step; });
    };
    addStep("array/append/", [] {
        typename Side::Array array;
        forNumbers([&](int n) { Side::append(array, n); });
        benchmark::DoNotOptimize(&array[0]);
    });
    addStep("array/insertSorted/", [] {
        typename Side::Array array;
        forNumbers([&](int n) { Side::insert(array, n); });
        benchmark::DoNotOptimize(&array[0]);
    });
    addStep("table/insert/", [] {
        typename Side::Table table;
        forNumbers([&](int n) { table[n] = n; });
    });

    static typename Side::Array array;
    static typename Side::Table table;
    forNumbers([](int n) { Side::insert(array, n); });
    forNumbers([](int n) { table[n] = n; });
    addStep("array/findSorted/",
            [] { forNumbers([](int n) { benchmark::DoNotOptimize(Side::find(array, n)); }); });
    addStep("table/lookup/",
            [] { forNumbers([](int n) { benchmark::DoNotOptimize(Side::lookup(table, n)); }); });
    addStep("table/walk/", [] { Side::walk(table); });
}

}  // namespace

void addContainers() {
    add<Library>("library");
    add<Peer>("peer");
    for (const std::string subject : {"array/append/", "array/insertSorted/", "array/findSorted/",
                                      "table/insert/", "table/lookup/", "table/walk/"})
        addRatio({subject + "library", subject + "peer"});
}
