#!/bin/sh
# Compiles each public header alone and sees to it that none brings in Qt, Xlib or GLX.
# Usage: headers.sh COMPILER SOURCE_FOLDER
cd "$2" || exit 1
status=0
for header in kygl/*.h kygl/containers/*.h platform/kylib/*.h platform/sogl/So*.h; do
    printf '#include <%s>\n%s\n#error "Qt, Xlib or GLX came in"\n#endif\n' "${header#platform/}" \
        '#if defined(QT_VERSION) || defined(X_PROTOCOL) || defined(XlibSpecificationRelease) || defined(GLX_VERSION_1_1)' |
        "$1" -std=c++17 -Wall -Wextra -Wpedantic -Wshadow -Werror -fsyntax-only -I. -Iplatform -x c++ - ||
        { echo "$header does not compile alone"; status=1; }
done
exit $status
