#!/usr/bin/env bash
# Compares the page of promises with what the library exports, and with the inline operations and
# templates of the public headers: each has a row, and each row is one of them.
# Usage: promises.sh LIBRARY SOURCE_FOLDER
cd "$2" || exit 1

exported() {
    nm --dynamic --defined-only --demangle "$1" | cut -d ' ' -f 3- |
        sed -E -e '/^(vtable|typeinfo|typeinfo name) for /d' \
            -e 's/^operator==\(([A-Za-z]+) const.*/\1::operator==/' -e 's/\(.*//'
}

# Public members and free inline functions. The layout is clang-format's: a member stands four
# columns to the right of its class, and the lines that go on with it further right.
declared() {
    awk '
        function add(prefix) {
            if (match($0, /(operator[^ (]+|~?[A-Za-z0-9]+)\(/))
                print prefix substr($0, RSTART, RLENGTH - 1)
        }
        { indent = match($0, /[^ ]/) - 1 }
        /^ *(class|struct) .*\{$/ {
            sub(/ : .*| \{$/, "")
            scope[indent] = (indent > 0 ? scope[indent - 4] : "") $NF "::"
            shown[indent + 4] = / *struct / && (indent == 0 || shown[indent])
            next
        }
        /^ *};$/ { shown[indent + 4] = 0 }
        /^ *(public|protected|private):$/ { shown[indent + 4] = /public/; next }
        /^ *(\/\/|friend|using|enum|KYGL_LOCAL)/ || /= (0|default|delete);$/ { next }
        indent > 0 && shown[indent] { add(scope[indent - 4]) }
        /^[a-z].*\) \{$/ && !/::/ { add("") }' kygl/*.h kygl/containers/*.h
}

# Rows: the class stands in the heading, or among inline operations in the first column.
promised() {
    awk -F ' *[|] *' '
        /^#/ { inlined = inlined || /^## Inline/; classes = /`[^`]*\.h`/ ? "" : $0 }
        /^[|] (Operation|Class) / { rows = 1; next }
        !/^[|]/ { rows = 0 }
        !rows || /^[|]-/ { next }
        inlined { classes = $2 }
        {
            names = inlined ? $3 : $2
            gsub(/[#` ]/, "", classes)
            gsub(/[` ]/, "", names)
            count = split(classes == "" ? "-" : classes, class, ",")
            for (i = 1; i <= count; ++i) {
                bare = class[i]
                sub(/.*::/, "", bare)
                for (j = split(names, name, ","); j > 0; --j) {
                    sub(/^constructor$/, bare, name[j])
                    sub(/^destructor$/, "~" bare, name[j])
                    print (inlined ? "inline " : "exported ") (bare == "-" ? "" : class[i] "::") name[j]
                }
            }
        }' docs/promises.md
}

export LC_ALL=C
mapfile -t exports < <(exported "$1" | sort -u)
((${#exports[@]} > 0)) || exit 1
list() { printf "$1%s\n" "${exports[@]}"; }
diff -u --label "library and headers" --label docs/promises.md \
    <(list 'exported '; declared | sort -u | comm -13 <(list '') - | sed 's/^/inline /') \
    <(promised | sort -u)
