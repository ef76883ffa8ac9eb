# The chart of ratios.dat: title, ratio and its quartiles, from top to bottom.
stats "ratios.dat" using 3:4 nooutput
lowest = STATS_min_x < 0.5 ? 2 ** floor(log(STATS_min_x) / log(2)) : 0.5
highest = STATS_max_y > 2 ? 2 ** ceil(log(STATS_max_y) / log(2)) : 2
set terminal svg size 900, 70 + 22 * STATS_records font "sans-serif,12" background "white"
set output "ratios.svg"
set label "Shorter is better: at 1 the installer takes as much as what it is compared with" at screen 0.5, 0.97 center
set tmargin 2.5
set logscale x 2
set xrange [lowest * 0.99:highest * 1.01] # with the labels at its ends
set xtics ("1/16" 0.0625, "1/8" 0.125, "1/4" 0.25, "1/2" 0.5, "1" 1, "2" 2, "4" 4, "8" 8, "16" 16, "32" 32)
set yrange [STATS_records - 0.5:-0.5]
set grid xtics
set arrow from 1, graph 0 to 1, graph 1 nohead linewidth 2 linecolor "#6b1f3a"
unset key
plot "ratios.dat" using (lowest):0:(lowest):2:($0 - 0.35):($0 + 0.35):ytic(1) \
         with boxxyerror fillstyle solid noborder linecolor "#d8b98c", \
     "" using 2:0:3:4 with xerrorbars pointtype 7 pointsize 0.4 linecolor "#6b1f3a"
