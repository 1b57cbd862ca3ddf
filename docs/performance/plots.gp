# Bars for one table: gnuplot -e "rows='FILE'; picture='FILE'" plots.gp
# A row: label, value, target or 0, the value as text, what the axis counts.
set datafile separator tab
stats rows using 3 nooutput
n = STATS_records
has_target = STATS_max > 0
unit = system(sprintf("head -n 1 '%s' | cut -f 5", rows))
peer = unit eq "times its peer" ? 1 : 0
stats rows using (($2 > $3 ? $2 : $3)) nooutput
top = 1.12 * (STATS_max > peer ? STATS_max : peer)

set terminal svg size 760, 110 + 24 * n font "Helvetica,12" background "white"
set output picture
set style fill solid 1.0
set xrange [0:top]
set yrange [n - 0.4:-0.6]
set xlabel unit
set xtics nomirror
set ytics scale 0
set grid xtics linecolor "#dddddd"
set border 1
set tmargin 2.5
set key outside top right horizontal samplen 1.5

# Blue where it keeps within its target or has none, orange where it does not.
colour(value, target) = target > 0 && value > target ? 0xd08030 : 0x6d9dc9
# A value stands behind its bar, or behind what else is in the way there.
near(value, line) = line > value && line - value < 0.1 * top
place(value, target) = near(value, target) ? target : near(value, peer) ? peer : value
plot rows using ($2 / 2):0:(0):2:($0 - 0.3):($0 + 0.3):(colour($2, $3)):ytic(1) \
         with boxxyerror linecolor rgb variable title "library", \
     "+" using (peer):(-0.6):(0):(n + 0.2) every ::::0 \
         with vectors nohead linewidth 1.5 dashtype 2 linecolor "#555555" \
         title (peer > 0 ? "peer" : ""), \
     rows using ($3 > 0 ? $3 : NaN):($0 - 0.42):(0):(0.84) \
         with vectors nohead linewidth 2.5 linecolor "#c03030" title (has_target ? "target" : ""), \
     rows using (place($2, $3)):0:4 with labels left offset 0.6, 0 notitle
