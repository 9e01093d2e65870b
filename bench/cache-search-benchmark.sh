#!/usr/bin/env bash
# Times a name search answered from a disk cache alone (`quester search WORD
# --only-caches`) against `plocate` over a database of the same tree, the walk
# benchmark's tree of about a million files, side by side: a selective word
# and a word with many matches. Then the time to the first result of the
# selective word: from the cache alone, and for a normal search with the
# cache beside the walk against the walk alone.
#
#   bench/cache-search-benchmark.sh BUILD_DIR
#
# The tree is made once in $QUESTER_WALK_TREE (default /tmp/quester-walk-tree)
# and reused. Each command runs $QUESTER_CACHE_RUNS times (default 3); the best
# time counts. The cache and the database go to a temporary folder, removed at
# the end. Hidden items are included on both sides, as plocate includes them.
set -euo pipefail

build=${1:?usage: bench/cache-search-benchmark.sh BUILD_DIR}
tree=${QUESTER_WALK_TREE:-/tmp/quester-walk-tree}
runs=${QUESTER_CACHE_RUNS:-3}
selective=${QUESTER_SELECTIVE_WORD:-12345}
common=${QUESTER_COMMON_WORD:-budget}

quester="$build/app/cli/quester"
maker="$build/bench/make-walk-tree"
first="$build/bench/first-result"
for tool in "$quester" "$maker" "$first"; do
  [ -x "$tool" ] || { echo "cache-search-benchmark: $tool is missing; build the bench preset first" >&2; exit 1; }
done
updatedb=$(command -v updatedb.plocate || true)
plocate=$(command -v plocate || true)
[ -n "$updatedb" ] && [ -n "$plocate" ] || {
  echo "cache-search-benchmark: plocate is missing; run scripts/install-deps" >&2
  exit 1
}

source "$(dirname "$0")/best-time.bash"
prepare_workspace "$maker" "$tree"
"$quester" cache add "$tree" --name bench > /dev/null
"$updatedb" --require-visibility no --prune-bind-mounts no --prunepaths '' --prunenames '' --prunefs '' \
  -U "$tree" -o "$database"

printf '%-10s %12s %12s %10s %15s\n' word "quester (s)" "plocate (s)" "ques/ploc" results
for word in "$selective" "$common"; do
  read -r tq nq < <(best_time "$quester" search "$word" --only-caches --hidden --format paths)
  read -r tp np < <(best_time "$plocate" -d "$database" -i -b "$word")
  printf '%-10s %12s %12s %10.2f %15s\n' "$word" "$tq" "$tp" "$(ratio "$tq" "$tp")" "$nq/$np"
done
echo "ratios below 1 mean quester was faster (the goal is at most 1.0); results are quester/plocate counts"

# first_of MODE : the fastest of $runs times to the first result of the selective word.
first_of() {
  local best="" time
  for ((i = 0; i < runs; i++)); do
    time=$("$first" "$tree" "$selective" "$1")
    best=$(awk -v t="$time" -v b="$best" 'BEGIN { print (b == "" || t < b) ? t : b }')
  done
  printf '%.3f\n' "$best"
}
only=$(first_of caches)
both=$(first_of both)
walk=$(first_of walk)
printf '\nfirst result of "%s": caches alone %s s, search with the cache %s s, walk alone %s s (walk/with cache %.1f)\n' \
  "$selective" "$only" "$both" "$walk" "$(ratio "$walk" "$both")"
