# Puts what was measured into a page: every part of it between
#     <!-- figures NAME: REGEX --> and <!-- end -->
# becomes a picture and a table of the figures whose library side matches, the instructions if an @
# precedes REGEX and everything else if not, and the part after
#     <!-- machine -->
# reports where they were measured. The rows of each picture go to plots/NAME, for plots.gp.
#     awk -f tables.awk -v plots=FOLDER machine ratios.tsv counts.tsv PAGE
# A figure: side, its value, peer, its value, ratio or difference, target or 0, unit.
BEGIN { FS = "\t" }

FILENAME ~ /machine$/ { machine = machine $0 "\n"; next }

FILENAME ~ /\.tsv$/ {
    figures[++count] = $0
    next
}

inside {
    if (/^<!-- end -->/) { inside = 0; print }
    next
}

{ print }

/^<!-- machine -->/ { printf "\n%s\n", machine; inside = 1 }

/^<!-- figures / {
    split($0, words, /[ :]+/)
    section(words[3], words[4])
    inside = 1
}

function section(name, regex,    counts, i) {
    counts = sub(/^@/, "", regex)
    rows = 0
    table = ""
    for (i = 1; i <= count; ++i) {
        split(figures[i], f, "\t")
        if (f[1] ~ regex && (f[7] == "instructions") == counts) row(plots "/" name)
    }
    if (rows == 0) {
        print "tables.awk: no figures for " name > "/dev/stderr"
        exit 1
    }
    close(plots "/" name)
    printf "\n![%s, as bars](performance/%s.svg)\n\n", name, name
    printf "| library | | beside | | %s | target | |\n|---|---|---|---|---|---|---|\n%s\n",
        f_unit == "ns" ? "more" : "ratio", table
}

function row(file,    target, ratio, bound, verdict) {
    ++rows
    f_unit = f[7]
    target = ""
    bound = f[6]
    ratio = sprintf(f[5] < 100 ? "%.2f" : "%.0f", f[5])
    if (f[7] == "ns") {
        ratio = span(f[5])
        if (bound > 0) target = span(bound)
    } else if (f[7] != "x") {
        if (bound > 0) target = amount(bound)
        bound /= f[4]
    } else if (bound > 0) {
        target = bound
    }
    verdict = bound > 0 ? (f[5] <= bound ? "met" : "missed") : ""
    table = table sprintf("| `%s` | %s | `%s` | %s | %s | %s | %s |\n", short(f[1]), amount(f[2]),
                          beside(f[1], f[3]), amount(f[4]), ratio, target, verdict)
    printf "%s  :  %s\t%s\t%s\t%s\t%s\n", short(f[1]), beside(f[1], f[3]), f[5], bound, ratio,
        f[7] == "ns" ? "ns more than its peer" : "times its peer" > file
}

# "apply4/library" is told by its subject, and a peer of the same subject by its last part.
function short(side) {
    sub(/\/library/, "", side)
    sub(/\/threads:/, " threads:", side)
    return side
}
function subject(side) {
    sub(/\/threads:.*/, "", side)
    sub(/\/[^\/]*$/, "", side)
    return side
}
function beside(side, peer,    ours) {
    ours = subject(peer)
    if (subject(side) != ours) return short(peer)
    sub(/\/threads:.*/, "", peer)
    return substr(peer, length(ours) + 2)
}

function amount(value) {
    if (f[7] == "bytes") return thousands(value) " bytes"
    return f[7] == "instructions" ? thousands(value) : span(value)
}
function thousands(value) {
    value = int(value + 0.5)
    return value < 1000 ? value : sprintf("%d,%03d", int(value / 1000), value % 1000)
}
function span(ns) {
    if (ns < 9.95) return sprintf("%.1f ns", ns)
    if (ns < 999.5) return sprintf("%.0f ns", ns)
    if (ns < 999500) return sprintf("%.3g us", ns / 1e3)
    return sprintf("%.3g ms", ns / 1e6)
}
