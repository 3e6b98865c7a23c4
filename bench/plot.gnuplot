# Plots the time of a decision against the number of rules.
# Usage: gnuplot -e "data='decisions.dat'; output='performance.svg'" plot.gnuplot
# The data file has a block for each panel, and in it a column for each engine.

panels = "numbers SIP both_sides middle"
engines = "library walk RE2::Set PCRE2 RE2 fnmatch"
array colours[6] = ["#d62728", "#8c8c8c", "#1f77b4", "#2ca02c", "#9467bd", "#ff7f0e"]

set terminal svg size 920,680 font "sans-serif,12" background "#ffffff"
set output output
set datafile missing "?"
set logscale xy
set xrange [10:100000]
set yrange [10:1e8]
set format x "%.0f"
set ytics ("10 ns" 1e1, "100 ns" 1e2, "1 us" 1e3, "10 us" 1e4, "100 us" 1e5, "1 ms" 1e6, "10 ms" 1e7, \
           "100 ms" 1e8)
set xlabel "rules"
set mxtics 1
set mytics 1
set grid linecolor "#cccccc"
set key left top Left reverse samplen 2
set multiplot layout 2,2
do for [panel = 0:3] {
    set title system(sprintf("echo %s | tr _ ' '", word(panels, panel + 1)))
    if (panel == 0) { set key } else { unset key }
    plot for [i = 1:6] data index panel using 1:(column(i + 1)) with lines linewidth 2 \
        linecolor rgb colours[i] title word(engines, i)
}
unset multiplot
