#!/usr/bin/env bash
# Times a content-mode disk cache of a document tree against `recollindex`
# over the same tree, side by side: both read every document and record the
# words inside it. The tree holds 1,600 source and Markdown files of the
# content benchmark (about 35 MB) and 20 PDFs of 20 pages. Prints the times,
# the ratio and the size of each index.
#
#   bench/cache-content-benchmark.sh BUILD_DIR
#
# The tree is made once in $QUESTER_DOC_TREE (default /tmp/quester-doc-tree)
# and reused. Each build runs $QUESTER_CACHE_RUNS times (default 2) from
# nothing; the best time counts. Indexes go to a temporary folder.
set -euo pipefail

build=${1:?usage: bench/cache-content-benchmark.sh BUILD_DIR}
tree=${QUESTER_DOC_TREE:-/tmp/quester-doc-tree}
runs=${QUESTER_CACHE_RUNS:-2}
source "$(dirname "$0")/best-time.bash"

quester="$build/app/cli/quester"
for tool in "$quester" "$build/bench/make-content-tree" "$build/bench/make-text-pdfs"; do
  [ -x "$tool" ] || { echo "cache-content-benchmark: $tool is missing; build the bench preset first" >&2; exit 1; }
done
command -v recollindex > /dev/null || { echo "cache-content-benchmark: recollindex is missing; run scripts/install-deps" >&2; exit 1; }

# The source files come from the content benchmark's tree, made there once.
make_tree() {
  local sources=${QUESTER_CONTENT_TREE:-/tmp/quester-content-tree}
  "$build/bench/make-content-tree" "$sources"
  rm -rf "$tree" && mkdir -p "$tree"
  find "$sources" -mindepth 1 -maxdepth 1 -type d | sort | head -n 16 | xargs -I{} cp -r {} "$tree/"
  "$build/bench/make-text-pdfs" "$tree/pdf" 20 20
  touch "$tree/.doc-tree-v1"
}
[ -f "$tree/.doc-tree-v1" ] || make_tree
find "$tree" -type f -exec cat {} + > /dev/null  # warm the page cache so both tools read from memory

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

quester_build() {
  rm -rf "$work/home"
  QUESTER_HOME="$work/home" "$quester" cache add "$tree" --name docs --content text
}
# No stemming and no spelling dictionary: like the cache, recoll then records
# the words as they stand.
recoll_build() {
  rm -rf "$work/recoll" && mkdir -p "$work/recoll"
  printf 'topdirs = %s\nindexstemminglanguages =\nnoaspell = 1\n' "$tree" > "$work/recoll/recoll.conf"
  recollindex -c "$work/recoll" -z 2> /dev/null
}

read -r tq _ < <(best_time quester_build)
read -r tr _ < <(best_time recoll_build)
cache_bytes=$(stat -c %s "$work/home/data/docs.qscache")
recoll_bytes=$(du -sb "$work/recoll/xapiandb" | cut -f1)
files=$(find "$tree" -type f -not -name '.*' | wc -l)

printf '%-24s %12s %16s %10s\n' step "quester (s)" "recollindex (s)" "ques/rec"
printf '%-24s %12s %16s %10.2f\n' "content build" "$tq" "$tr" "$(ratio "$tq" "$tr")"
printf '%-24s %12.1f %16.1f\n' "index size (MB)" "$(ratio "$cache_bytes" 1048576)" "$(ratio "$recoll_bytes" 1048576)"
echo "$files documents; a ratio below 1 means quester was faster"
