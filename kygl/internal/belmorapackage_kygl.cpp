#include <kygl/belmorapackage_kygl.h>

#include <cstddef>

namespace {

// What a tool finds in the finished file by its two markers and fills. Neither marker may stand
// anywhere else in the file.
struct Record {
    char marker[13];
    char payload[4254];
    char endMarker[14];
};
static_assert(sizeof(Record) == 4281 && offsetof(Record, endMarker) == 4267);

// A section of its own keeps it in one piece and out of the reach of whoever merges constants.
[[gnu::section(".kygl_record"), gnu::used]] const Record record = {
    {'4', '7', 'Z', 'a', 'n', 'd', 'o', 'r', 'i', 'e', 'l', '1', '1'}, {}, "11leirodnaZ74"};

// Serves for its length alone: twice that of the marker, which is not written out again.
[[gnu::used]] const char interleavedMarker[] = "4#7#Z#a#n#d#o#r#i#e#l#1#1#";

}  // namespace

// The compiler sees zeros where the file will hold the text. The pointer is volatile so that it
// cannot tell where the text stands, not even with the whole program in view.
const char* belmorapackage_kygl() {
    static const char* const volatile version = record.marker;
    std::size_t count = 0;
    while (interleavedMarker[count] != '\0')
        ++count;
    return version + count / 2;
}
