# Cost of a poll request against the number of watched words; `figures` and `plot` are file names.
set terminal svg size 900,420 font "sans-serif,13" background "white"
set output plot
set multiplot layout 1,2
set logscale xy
set format x "10^{%L}"
set format y "%.0f"
set xlabel "words watched"
set grid xtics ytics linecolor rgb "#b0b0b0"
set key top left Left reverse samplen 2
set border 3
set tics nomirror
set xrange [80:70000]

set title "Instructions a request"
set yrange [1000:100000]
plot figures using 1:2 with linespoints linewidth 2 pointtype 7 linecolor rgb "#1b6ca8" title "nothing changed", \
     figures using 1:3 with linespoints linewidth 2 pointtype 5 linecolor rgb "#c4572e" \
         title "everything changed, less the callbacks"

set title "Time a request in ns"
set yrange [100:1000000] # the uppermost decade is for the key
plot figures using 1:4 with linespoints linewidth 2 pointtype 7 linecolor rgb "#1b6ca8" title "nothing changed", \
     figures using 1:5 with linespoints linewidth 2 pointtype 5 linecolor rgb "#c4572e" \
         title "everything changed, with the callbacks"
