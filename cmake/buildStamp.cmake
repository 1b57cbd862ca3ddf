# Writes the source that holds the stamp of the build. CMake takes the time from SOURCE_DATE_EPOCH
# where that is set. Days below 10 are padded with a blank, as asctime does.
string(TIMESTAMP stamp "%a %b %d %H:%M:%S %Y" UTC)
string(REGEX REPLACE "^(... ...) 0" "\\1  " stamp "${stamp}")
file(WRITE "${OUTPUT}"
"#include \"kyglBuildStamp.h\"

const char kyglBuildStamp[] = \"timestamp=[${stamp}]\";
")
