#!/usr/bin/env bash
# Times a name search over a synthetic tree of about a million files with
# `quester search`, `fdfind -HI` and `find -iname`, on the same words, and
# prints each time and the ratios. Hidden items are included by all three, so
# they do the same work; the result counts are printed to show they agree.
#
#   bench/walk-benchmark.sh BUILD_DIR
#
# The tree is made once in $QUESTER_WALK_TREE (default /tmp/quester-walk-tree)
# and reused. Each command runs $QUESTER_WALK_RUNS times (default 3) after a
# warm-up walk; the best time counts.
set -euo pipefail

build=${1:?usage: bench/walk-benchmark.sh BUILD_DIR}
tree=${QUESTER_WALK_TREE:-/tmp/quester-walk-tree}
runs=${QUESTER_WALK_RUNS:-3}
words=(budget invoice zebra)

quester="$build/app/cli/quester"
maker="$build/bench/make-walk-tree"
for tool in "$quester" "$maker"; do
  [ -x "$tool" ] || { echo "walk-benchmark: $tool is missing; build the bench preset first" >&2; exit 1; }
done
fd=$(command -v fdfind || command -v fd || true)
[ -n "$fd" ] || { echo "walk-benchmark: fd is missing; run scripts/install-deps" >&2; exit 1; }

"$maker" "$tree"
find "$tree" > /dev/null  # warm the kernel's caches so every tool sees the same state

source "$(dirname "$0")/best-time.bash"

printf '%-10s %12s %12s %12s %10s %10s %9s\n' word "quester (s)" "fdfind (s)" "find (s)" "fd/ques" "find/ques" results
for word in "${words[@]}"; do
  read -r tq nq < <(best_time "$quester" search "$word" --in "$tree" --hidden --format paths)
  read -r tf nf < <(best_time "$fd" -HI -i -F "$word" "$tree")
  read -r tn nn < <(best_time find "$tree" -iname "*$word*")
  printf '%-10s %12s %12s %12s %10.2f %10.2f %9s\n' "$word" "$tq" "$tf" "$tn" \
    "$(ratio "$tf" "$tq")" "$(ratio "$tn" "$tq")" "$nq/$nf/$nn"
done
echo "ratios above 1 mean quester was faster; results are quester/fdfind/find counts"
