#!/bin/sh
# What becomes of the build record, in the finished library and in files that are none, as seen from
# outside.
# Usage: kyrecord.sh KYRECORD LIBRARY CMAKE SOURCE_DIR
kyrecord=$1 library=$2 cmake=$3 source=$4
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
failures=0

failed() {
    echo "FAILED: $*"
    head -n 5 stderr | sed 's/^/    stderr: /'
    failures=$((failures + 1))
}

# refused TEXT ARGUMENTS: one line on standard error that holds TEXT, status 1, no file touched.
refused() {
    text=$1
    shift
    ls -lR --time-style=+%s.%N files >before
    "$kyrecord" "$@" >stdout 2>stderr </dev/null
    status=$?
    ls -lR --time-style=+%s.%N files >after
    [ $status -eq 1 ] && [ "$(wc -l <stderr)" -eq 1 ] && grep -qF -- "$text" stderr &&
        ! [ -s stdout ] && cmp -s before after || failed "status $status, expected '$text': $*"
}

fill() { "$kyrecord" fill "$@" 2>stderr || failed "not filled: $*"; }
# is FILE KEY VALUE
is() { "$kyrecord" show "$1" 2>stderr | grep -qxE -- "$2 +$3" || failed "$1: $2 is not $3"; }

# record NAME PAYLOAD [START [END]]: a file with something around a record, perhaps with other marks.
record() {
    printf "$2" >payload
    truncate -s 4254 payload
    { printf '47Zandoriel%s' "${3-11}" && cat payload && printf '%sleirodnaZ74\0tail' "${4-11}"; } \
        >rest
    { printf '\177ELF 47Zandoriel 4' && cat rest; } >"files/$1"
}

# ---- the library of this build
mkdir files
cp "$library" files/lib.so
[ "$(grep -aoE '47Zandoriel11|11leirodnaZ74' files/lib.so | tr '\n' ' ')" = \
    "47Zandoriel11 11leirodnaZ74 " ] || failed "each marker does not stand there once"
is files/lib.so comment '[0-9a-f]{40}'
is files/lib.so target_os 'Linux (32|64)bit'
is files/lib.so build_cfg '(Optimize|Debug)'
is files/lib.so build_time '20[0-9]{2}(-[0-9]{2}){2} [0-9]{2}(:[0-9]{2}){2}'
is files/lib.so size "$(stat -c %s files/lib.so)"
strip --strip-all -o stripped.so files/lib.so
"$kyrecord" show files/lib.so >one && "$kyrecord" show stripped.so | cmp - one ||
    failed "strip disturbs the record"

# Who builds where is not told where the time is given.
mkdir a b
for folder in a b; do
    cp files/lib.so $folder
    SOURCE_DATE_EPOCH=86399 "$cmake" "-DKYRECORD=$kyrecord" "-DLIBRARY=$work/$folder/lib.so" \
        "-DSOURCE=$source" "-DVENDOR=a; b" "-DVALUES=compiler=a b" -P "$source/cmake/buildRecord.cmake" ||
        failed "the script of the build fails"
done
cmp a/lib.so b/lib.so || failed "the record tells where it was built"
is a/lib.so build_time '1970-01-01 23:59:59'
is a/lib.so compiler 'a b'
is a/lib.so vendor 'a; b'
"$cmake" "-DKYRECORD=$kyrecord" "-DLIBRARY=$work/a/lib.so" "-DSOURCE=$work" \
    -P "$source/cmake/buildRecord.cmake"
is a/lib.so comment '0{40}'
is a/lib.so path "$work/a/"

# ---- filling
record good '|old|x'
cp files/good other
chmod 751 files/good
ln -s good files/link
fill files/link --set vendor=before product=before
fill files/link --set "vendor=a = b" compiler=; fill other --set compiler= "vendor=a = b"
cmp files/good other || failed "what was there before is left"
is files/good version_tag '\\'
is files/good size "$(stat -c %s rest | awk '{print $1 + 18}')"
[ -L files/link ] && [ "$(stat -c %a files/good)" = 751 ] && [ "$(ls files)" = "good
lib.so
link" ] || failed "link or mode is lost, or more is left behind: $(ls -l files)"

long=$(printf '%4254s' '')
refused 'bytes, the record takes 4253' fill files/good --set "path=$long"
over=$(sed 's/.*a text of \([0-9]*\) .*/\1/' stderr)
fits=$(printf "%$((4254 + 4253 - over))s" '')
fill other --set "path=$fits"
refused 'a text of 4254 bytes' fill files/good --set "path=$fits "
for value in 'a|b' '|'; do refused "value of vendor holds a '|'" fill files/good --set "vendor=$value"; done
refused 'value of path holds a marker' fill files/good --set path=47Zandoriel11
refused 'value of path holds a marker' fill files/good --set path=x11leirodnaZ74
refused "no key 'bogus'" fill files/good --set bogus=1
refused 'not of the form KEY=VALUE' fill files/good --set vendor
refused "the size is the file's own" fill files/good --set size=1
refused '--set vendor: given twice' fill files/good --set vendor=1 --set vendor=2
refused 'not expected' fill files/good --bogus
refused 'subcommand is required'

# ---- files that are none
head -c 3000 files/good >files/cut
: >files/empty
ln -s nowhere files/dangling
mkfifo files/pipe
cat files/good files/good >files/two
record noStart '|a|b' 12
record noEnd '|a|b' 11 12
record apart '|a|b'
sed 's/11leirodnaZ74/x&/' files/apart >apart && mv apart files/apart
head -c "-5" files/good >files/noZero
record damaged '|a|b'
sed 's/Z74\x00/Z74x/' files/damaged >damaged && mv damaged files/damaged
bad=$(printf 'files/a\nb\033[31m')
cp files/empty "$bad"
while IFS='|' read -r file reason; do
    for command in show fill; do refused "files/$file: $reason" $command "files/$file"; done
done <<'FILES'
none|cannot be read: No such file
dangling|cannot be read: No such file
.|not a regular file
pipe|not a regular file
empty|holds no build record
noStart|holds no build record
cut|its build record is cut short
noEnd|its build record is cut short
noZero|its build record is cut short
damaged|its build record is damaged
two|holds more than one marker
apart|the markers of its build record are not at their distance
FILES
refused 'files/a\x0ab\x1b[31m: holds no' show "$bad"
chmod 444 files/good
refused 'files/good: is read-only' fill files/good
chmod 644 files/good
(trap '' XFSZ && ulimit -f 16 && refused 'cannot be written: File too large' fill files/lib.so &&
    exit $failures) || failed "the write was not limited"

# ---- showing
record plain ''
refused 'is not filled' show files/plain
for payload in 'a|b' '|a' '|a|b|c'; do
    record plain "$payload"
    refused 'is not made of pairs' show files/plain
done
record hostile '|k"|\033[31m\n\302\233\377\303\251\\|||last|"'
printf 'k"    \\x1b[31m\\x0a\\xc2\\x9b\\xffé\\\n      \nlast  "\n' >expected
"$kyrecord" show files/hostile | cmp - expected || failed "controls get through"
printf '{\n  "k\\"": "\\u001b[31m\\u000a\\u009b\\ufffdé\\\\",\n  "": "",\n  "last": "\\""\n}\n' >expected
"$kyrecord" show --json files/hostile | cmp - expected || failed "no good JSON"
! "$kyrecord" show files/hostile >/dev/full 2>stderr && grep -q 'output cannot be written' stderr ||
    failed "a full disk is not told"
[ $failures -eq 0 ]
