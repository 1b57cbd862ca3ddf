#!/bin/sh
# run.sh KYGLSL TRANSCRIPT
#
# Runs every line of the transcript that begins with "$ " in an empty folder and compares what comes
# out, both streams together and then the status if it is not 0, with the lines "|..." below it.
# A transcript named display* needs an X display; without one the status is 77.
transcript=$(realpath "$2")
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
mkdir "$work/bin" "$work/in" && ln -s "$(realpath "$1")" "$work/bin/kyglsl" && cd "$work/in" || exit 1
export LC_ALL=C
PATH=$work/bin:$PATH
case ${transcript##*/} in
    display*)
        echo 'void main() { gl_Position = vec4(0.0); }' >v
        echo 'void main() { gl_FragColor = vec4(0.0); }' >f
        kyglsl check v f 2>&1 | grep -qE 'no X display' && exit 77 ;;
    *) unset DISPLAY ;;
esac
while IFS= read -r line; do
    case $line in
        '$ '*)
            printf '%s\n' "$line"
            (eval "${line#??}") >../out 2>&1 </dev/null
            status=$?
            sed 's/^/|/' ../out
            [ -z "$(tail -c 1 ../out)" ] || echo
            [ $status -eq 0 ] || echo "|[$status]" ;;
        '|'*) ;;
        *) printf '%s\n' "$line" ;;
    esac
done <"$transcript" >../transcript
diff -u "$transcript" ../transcript
