# Draws `picture` (SVG) from `data` (growth.awk). Slopes are fitted to the points from 100 sensors on.
set terminal svg size 760,480 font "sans-serif,13" background "white"
set output picture
set logscale xy
set xlabel "sensors"
set ylabel "CPU time of one request, in microseconds"
set key left top
set grid
set xrange [8:13000]
set fit quiet
set fit logfile "/dev/null"
array slope[5]
do for [i=1:5] {
    f(x) = a + b * x
    a = 1
    b = 1
    fit [2:4] f(x) data using (log10($1)):(log10(column(i + 1))) via a, b
    slope[i] = b
}
name(i) = word("names fresh-instances due-instances last-by-name first-by-name", i)
plot for [i=1:5] data using 1:(column(i + 1) / 1000) with linespoints linewidth 2 pointtype 7 \
    title sprintf("%s: N^{%.2f}", name(i), slope[i])
