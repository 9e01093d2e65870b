#!/usr/bin/env bash
# Times document text against the peer tools on the same files, and prints each
# time and its ratio to the peer's:
#   - the text of 20 PDFs of 20 pages: one `quester text` run for all of them
#     (one import helper reads them in turn, as a content search does) against
#     `pdftotext`, which reads one file a process; then `quester text` once a
#     file, which adds the start of the program and of its sandboxed helper to
#     every file;
#   - recognition of three pages drawn at 300 dots per inch: one
#     `quester text --ocr` run against one `tesseract` run over a list of the
#     pictures (each loads its model once), given per page; then one page with
#     a run each.
#
#   bench/text-benchmark.sh BUILD_DIR
#
# The PDFs and the page pictures are made once in $QUESTER_TEXT_FILES (default
# /tmp/quester-text-files) and reused. Each command runs $QUESTER_TEXT_RUNS times
# (default 3); the best time counts. Both recognisers run on one core
# (OMP_THREAD_LIMIT=1 unless set): the import helper reads one file a process,
# and OpenMP's spinning threads only make the timing noisy on a busy machine.
set -euo pipefail

build=${1:?usage: bench/text-benchmark.sh BUILD_DIR}
files=${QUESTER_TEXT_FILES:-/tmp/quester-text-files}
runs=${QUESTER_TEXT_RUNS:-3}
export OMP_THREAD_LIMIT=${OMP_THREAD_LIMIT:-1}

quester="$build/app/cli/quester"
maker="$build/bench/make-text-pdfs"
for tool in "$quester" "$maker"; do
  [ -x "$tool" ] || { echo "text-benchmark: $tool is missing; build the bench preset first" >&2; exit 1; }
done
for tool in pdftotext pdftoppm tesseract; do
  command -v "$tool" > /dev/null || { echo "text-benchmark: $tool is missing; run scripts/install-deps" >&2; exit 1; }
done

[ -f "$files/document-20.pdf" ] || "$maker" "$files" 20 20
pdfs=("$files"/document-*.pdf)
"$quester" text "${pdfs[0]}" > /dev/null ||
  { echo "text-benchmark: quester text gives no text for ${pdfs[0]}; is the PDF reader in its table?" >&2; exit 1; }

pages=()
for n in 1 2 3; do
  pages+=("$files/page-$n.png")
  [ -f "${pages[-1]}" ] || pdftoppm -r 300 -png -singlefile -f $n -l $n "${pdfs[0]}" "${pages[-1]%.png}"
done
printf '%s\n' "${pages[@]}" > "$files/pages.txt"

# seconds COMMAND... : the wall time of one run in seconds, all output dropped.
seconds() {
  local TIMEFORMAT=%R
  { time "$@" > /dev/null 2>&1; } 2>&1
}

# best COMMAND... : the fastest of $runs runs.
best() {
  local fastest="" t
  for ((i = 0; i < runs; i++)); do
    t=$(seconds "$@")
    fastest=$(awk -v t="$t" -v f="$fastest" 'BEGIN { print (f == "" || t < f) ? t : f }')
  done
  echo "$fastest"
}

quester_all_pdfs() { "$quester" text "${pdfs[@]}"; }
quester_each_pdf() { for pdf in "${pdfs[@]}"; do "$quester" text "$pdf"; done; }
pdftotext_each_pdf() { for pdf in "${pdfs[@]}"; do pdftotext "$pdf" -; done; }
# Words of the text, without the "==> path <==" line quester writes above each file.
words() { "$@" | grep -v '^==> .* <==$' | wc -w; }

ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", (b > 0) ? a / b : 0 }'; }
perPage() { awk -v t="$1" -v n="${#pages[@]}" 'BEGIN { printf "%.3f", t / n }'; }

ta=$(best quester_all_pdfs)
te=$(best quester_each_pdf)
tp=$(best pdftotext_each_pdf)
oq=$(perPage "$(best "$quester" text --ocr "${pages[@]}")")
ot=$(perPage "$(best tesseract "$files/pages.txt" - --psm 3)")
o1q=$(best "$quester" text --ocr "${pages[0]}")
o1t=$(best tesseract "${pages[0]}" - --psm 3)
wa=$(words quester_all_pdfs)
wp=$(words pdftotext_each_pdf)
oqw=$(words "$quester" text --ocr "${pages[@]}")
otw=$(words tesseract "$files/pages.txt" - --psm 3)

row() { printf '%-38s %12s %12s %14s %6s %13s\n' "$@"; }
row task "quester (s)" "peer (s)" "quester/peer" goal words
row "text of ${#pdfs[@]} PDFs, one run (pdftotext)" "$ta" "$tp" "$(ratio "$ta" "$tp")" 1.2 "$wa/$wp"
row "text of ${#pdfs[@]} PDFs, a run each" "$te" "$tp" "$(ratio "$te" "$tp")" - "$wa/$wp"
row "OCR per page, one run (tesseract)" "$oq" "$ot" "$(ratio "$oq" "$ot")" 1.0 "$oqw/$otw"
row "OCR of one page, a run each" "$o1q" "$o1t" "$(ratio "$o1q" "$o1t")" - ""
echo "ratios at or below the goal meet it; words are quester/peer counts"
