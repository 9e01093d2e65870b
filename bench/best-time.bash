# Timing helpers shared by the side-by-side benchmark scripts (sourced, not run:
# scripts/run-benchmarks runs only bench/*.sh). The sourcing script sets $runs.

now() { date +%s.%N; }

# best_time COMMAND... : prints the fastest of $runs runs in seconds, and the output's line count.
best_time() {
  local best="" start end count
  for ((i = 0; i < runs; i++)); do
    start=$(now)
    # quester, rg and the like exit 1 when nothing matches, which is no failure here.
    count=$({ "$@" || [ $? -eq 1 ]; } | wc -l)
    end=$(now)
    best=$(awk -v e="$end" -v s="$start" -v b="$best" 'BEGIN { t = e - s; print (b == "" || t < b) ? t : b }')
  done
  printf '%.3f %s\n' "$best" "$count"
}

ratio() { awk -v a="$1" -v b="$2" 'BEGIN { print (b > 0) ? a / b : 0 }'; }
