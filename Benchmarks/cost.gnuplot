# Draws what RoundTrips measured, in colours that can be read on white and on black.
# Usage: gnuplot -c cost.gnuplot CSV SVG
set terminal svg size 500,480 noenhanced name "cost" font "system-ui,sans-serif,15" linewidth 1.5
set output ARG2
set datafile separator ","
set margins at screen 0.14, at screen 0.6, at screen 0.14, at screen 0.93
set label "time until the reply" at graph 0, 1.04 textcolor "#7b7b7b"
set xlabel "messages in the inbox" textcolor "#7b7b7b"
set border 0
set grid linetype 1 linecolor "#887b7b7b" linewidth 0.3
set tics scale 0 textcolor "#7b7b7b"
set logscale
set xtics ("100" 1e2, "1,000" 1e3, "10,000" 1e4, "100,000" 1e5)
set ytics ("10 µs" 10, "100 µs" 100, "1 ms" 1e3, "10 ms" 1e4, "100 ms" 1e5, "1 s" 1e6)
unset key
colour(call) = call[1:6] eq "search" ? 0x1f8a9f : call[1:5] eq "claim" ? 0xc0509b : \
  strstrt(call, "_") ? 0x7a70e0 : 0x7b7b7b
label(call) = call eq "ping" ? "ping, tools/list" : call eq "tools/list" ? "" : call
lines = "< awk -F, '$2 == 100 { print \"\" } NR > 1' ".ARG1  # an empty line ends a line of the plot
plot [99:1e5] [9.9:1e6] \
  lines using 2:3:(colour(strcol(1))) with linespoints pt 7 ps 0.4 lc rgb variable notitle, \
  lines using 2:($2 == 1e5 ? $3 : NaN):(label(strcol(1))):(colour(strcol(1))) \
    with labels left offset 1,0 textcolor rgb variable notitle
