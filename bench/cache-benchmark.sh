#!/usr/bin/env bash
# Times a names-only disk cache of the walk benchmark's tree (about a million
# files) against `updatedb.plocate` over the same tree, side by side: the
# first build against updatedb's first run, and an update with nothing
# changed against updatedb's second run (which reuses its database). Prints
# the times, the ratios and the bytes per item of each file.
#
#   bench/cache-benchmark.sh BUILD_DIR
#
# The tree is made once in $QUESTER_WALK_TREE (default /tmp/quester-walk-tree)
# and reused. Each step runs $QUESTER_CACHE_RUNS times (default 3); the best
# time counts. Caches and databases go to a temporary folder, removed at the end.
set -euo pipefail

build=${1:?usage: bench/cache-benchmark.sh BUILD_DIR}
tree=${QUESTER_WALK_TREE:-/tmp/quester-walk-tree}
runs=${QUESTER_CACHE_RUNS:-3}

quester="$build/app/cli/quester"
maker="$build/bench/make-walk-tree"
for tool in "$quester" "$maker"; do
  [ -x "$tool" ] || { echo "cache-benchmark: $tool is missing; build the bench preset first" >&2; exit 1; }
done
updatedb=$(command -v updatedb.plocate || true)
[ -n "$updatedb" ] || { echo "cache-benchmark: updatedb.plocate is missing; run scripts/install-deps" >&2; exit 1; }

source "$(dirname "$0")/best-time.bash"
prepare_workspace "$maker" "$tree"

# best_of COMMAND... : the fastest of $runs runs in seconds; SETUP (a function
# name in $setup) runs before each, untimed.
best_of() {
  local best="" start end
  for ((i = 0; i < runs; i++)); do
    [ -z "${setup:-}" ] || "$setup"
    start=$(date +%s.%N)
    "$@" > /dev/null
    end=$(date +%s.%N)
    best=$(awk -v e="$end" -v s="$start" -v b="$best" 'BEGIN { t = e - s; print (b == "" || t < b) ? t : b }')
  done
  printf '%.3f\n' "$best"
}

fresh_cache() { rm -rf "$QUESTER_HOME"; }
fresh_database() { rm -f "$database"; }
# updatedb of a tree outside its pruned paths, into a database of our own.
run_updatedb() { "$updatedb" --require-visibility no --prune-bind-mounts no --prunepaths '' --prunenames '' --prunefs '' -U "$tree" -o "$database"; }

setup=fresh_cache best_build=$(best_of "$quester" cache add "$tree" --name bench)
setup=fresh_database best_updatedb=$(best_of run_updatedb)
setup='' best_update=$(best_of "$quester" cache update bench)
setup='' best_updatedb_again=$(best_of run_updatedb)

items=$(find "$tree" | wc -l)
cache_bytes=$(stat -c %s "$QUESTER_HOME/data/bench.qscache")
database_bytes=$(stat -c %s "$database")

printf '%-28s %12s %16s %10s\n' step "quester (s)" "updatedb (s)" "ques/upd"
printf '%-28s %12s %16s %10.2f\n' "first build" "$best_build" "$best_updatedb" "$(ratio "$best_build" "$best_updatedb")"
printf '%-28s %12s %16s %10.2f\n' "update, nothing changed" "$best_update" "$best_updatedb_again" \
  "$(ratio "$best_update" "$best_updatedb_again")"
printf '%-28s %12.1f %16.1f\n' "bytes per item" "$(ratio "$cache_bytes" "$items")" "$(ratio "$database_bytes" "$items")"
echo "$items items; ratios below 1 mean quester was faster (the goal is at most 1.0)"
