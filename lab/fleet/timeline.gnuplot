# The chart of timeline.dat: machine and condition, from when to when its installer ran, and the log reader's verdict.
machines = system("wc -l <timeline.dat")
set terminal svg size 900, 90 + 16 * machines font "sans-serif,11" background "white"
set output "timeline.svg"
set xlabel "seconds since the first installer began"
set yrange [machines - 0.5:-0.5]
set xrange [0:*]
set grid xtics
set key outside top center horizontal
verdicts = "installed failed unfinished none"
titles = "installed failed unfinished \"no log\""
colours = "#7fa06b #6b1f3a #d8a04c #9a9a9a"
plot for [n = 1:4] "timeline.dat" \
         using (strcol(4) eq word(verdicts, n) ? $2 : NaN):0:2:3:($0 - 0.35):($0 + 0.35):ytic(1) \
         with boxxyerror fillstyle solid noborder linecolor rgb word(colours, n) title word(titles, n)
