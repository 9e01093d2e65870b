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

# prepare_workspace MAKER TREE : makes (or reuses) the walk tree, warms the
# kernel's caches so that every tool sees the same state, and sets $work (a
# temporary folder removed at exit), QUESTER_HOME inside it and $database, a
# plocate database's path inside it.
prepare_workspace() {
  "$1" "$2"
  find "$2" > /dev/null
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  export QUESTER_HOME="$work/home"
  database="$work/plocate.db"
}
