#!/usr/bin/env bash
# Times a search inside documents over a synthetic tree of about 125 MB of
# source files with `quester search ': content "…"'` and `rg -l -i -F`, on a
# rare phrase and a common word, and prints each time, the ratio and the result
# counts. Both list the files that hold the text, ignoring case, and skip hidden
# items; the counts are printed to show they agree. The goal is a ratio of at
# most 1.5 (quester's time over rg's).
#
#   bench/content-benchmark.sh BUILD_DIR
#
# The tree is made once in $QUESTER_CONTENT_TREE (default
# /tmp/quester-content-tree) and reused. Each command runs
# $QUESTER_CONTENT_RUNS times (default 3) after the files are read once into
# the page cache; the best time counts.
set -euo pipefail

build=${1:?usage: bench/content-benchmark.sh BUILD_DIR}
tree=${QUESTER_CONTENT_TREE:-/tmp/quester-content-tree}
runs=${QUESTER_CONTENT_RUNS:-3}
texts=("quarterly reconciliation ledger" checksum)

quester="$build/app/cli/quester"
maker="$build/bench/make-content-tree"
for tool in "$quester" "$maker"; do
  [ -x "$tool" ] || { echo "content-benchmark: $tool is missing; build the bench preset first" >&2; exit 1; }
done
command -v rg > /dev/null || { echo "content-benchmark: rg is missing; run scripts/install-deps" >&2; exit 1; }

"$maker" "$tree"
find "$tree" -type f -exec cat {} + > /dev/null  # warm the page cache so both tools read from memory

source "$(dirname "$0")/best-time.bash"

printf '%-32s %12s %12s %10s %9s\n' text "quester (s)" "rg (s)" "ques/rg" results
for text in "${texts[@]}"; do
  read -r tq nq < <(best_time "$quester" search ": content \"$text\"" --in "$tree" --format paths)
  read -r tr nr < <(best_time rg -l -i -F "$text" "$tree")
  printf '%-32s %12s %12s %10.2f %9s\n' "$text" "$tq" "$tr" "$(ratio "$tq" "$tr")" "$nq/$nr"
done
echo "ratios at most 1.5 meet the goal; results are quester/rg counts"
