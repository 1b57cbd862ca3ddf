#!/bin/sh
# Instructions per step, counted by callgrind: what two runs of different length differ in, over the
# difference of their lengths, so that start-up cancels.
#   bench/count.sh [kygl_bench [side...]]
set -eu
bench=${1:-build/release/bench/kygl_bench}
[ $# -eq 0 ] || shift
[ $# -gt 0 ] || set -- apply4/library apply4/raw apply4/table \
    apply16/library apply16/raw apply16/table

total() {
    valgrind --tool=callgrind --callgrind-out-file=/dev/null "$bench" --count "$1" "$2" 2>&1 |
        awk '/Collected/ { print $4 }'
}
for side; do
    "$bench" --count "$side" 1
    short=$(total "$side" 1000)
    long=$(total "$side" 11000)
    echo "$side $(((long - short) / 10000))"
done
