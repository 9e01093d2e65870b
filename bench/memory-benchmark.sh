#!/usr/bin/env bash
# Peak memory of a search with about a million results: `quester search` and
# `fdfind -HI` list every file of the synthetic tree of the walk benchmark
# (every file name there holds "_"). Prints each tool's peak resident size,
# the bytes it held per result row, and the ratio. quester keeps every row
# (to sort them) where fd streams them, so the figure to watch is quester's
# bytes per row.
#
#   bench/memory-benchmark.sh BUILD_DIR
set -euo pipefail

build=${1:?usage: bench/memory-benchmark.sh BUILD_DIR}
tree=${QUESTER_WALK_TREE:-/tmp/quester-walk-tree}
quester="$build/app/cli/quester"
maker="$build/bench/make-walk-tree"
for tool in "$quester" "$maker"; do
  [ -x "$tool" ] || { echo "memory-benchmark: $tool is missing; build the bench preset first" >&2; exit 1; }
done
fd=$(command -v fdfind || command -v fd || true)
[ -n "$fd" ] || { echo "memory-benchmark: fd is missing; run scripts/install-deps" >&2; exit 1; }
"$maker" "$tree"

# peak COMMAND... : prints the peak resident size in bytes and the output's line count.
peak() {
  python3 - "$@" <<'PY'
import resource, subprocess, sys
lines = subprocess.run(sys.argv[1:], stdout=subprocess.PIPE, check=True).stdout.count(b"\n")
print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss * 1024, lines)
PY
}

read -r mq nq < <(peak "$quester" search _ --in "$tree" --hidden --format paths)
read -r mf nf < <(peak "$fd" -HI -F _ "$tree")
awk -v mq="$mq" -v nq="$nq" -v mf="$mf" -v nf="$nf" 'BEGIN {
  printf "%-8s %14s %10s %14s\n", "tool", "peak (MB)", "rows", "bytes per row"
  printf "%-8s %14.1f %10d %14.0f\n", "quester", mq / 1048576, nq, nq ? mq / nq : 0
  printf "%-8s %14.1f %10d %14.0f\n", "fdfind", mf / 1048576, nf, nf ? mf / nf : 0
  printf "quester/fdfind peak ratio: %.2f\n", mf ? mq / mf : 0
}'
