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
# (default 3); the shortest wall time and the least processor time count. Both
# recognisers run on one core (OMP_THREAD_LIMIT=1 unless set): a content search
# keeps the other cores for its other work, and OpenMP's spinning threads only
# make the timing noisy on a busy machine.
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

# seconds COMMAND... : the wall time and the processor time (user and system,
# the import helper's included) of one run in seconds, all output dropped.
seconds() {
  local TIMEFORMAT='%R %U %S'
  { time "$@" > /dev/null 2>&1; } 2>&1 | awk '{ print $1, $2 + $3 }'
}

# best COMMAND... : the shortest wall time and the least processor time of $runs
# runs. On a shared machine the processor time is the steadier of the two.
best() {
  local wall="" cpu="" w c
  for ((i = 0; i < runs; i++)); do
    read -r w c < <(seconds "$@")
    wall=$(awk -v t="$w" -v f="$wall" 'BEGIN { print (f == "" || t < f) ? t : f }')
    cpu=$(awk -v t="$c" -v f="$cpu" 'BEGIN { print (f == "" || t < f) ? t : f }')
  done
  echo "$wall $cpu"
}

quester_all_pdfs() { "$quester" text "${pdfs[@]}"; }
quester_each_pdf() { for pdf in "${pdfs[@]}"; do "$quester" text "$pdf"; done; }
pdftotext_each_pdf() { for pdf in "${pdfs[@]}"; do pdftotext "$pdf" -; done; }
# Words of the text, without the "==> path <==" line quester writes above each file.
words() { "$@" | grep -v '^==> .* <==$' | wc -w; }

# report TASK GOAL QUESTER_TIMES PEER_TIMES WORDS [PAGES]: one table row, times
# divided by PAGES when given.
report() {
  awk -v task="$1" -v goal="$2" -v q="$3" -v p="$4" -v words="$5" -v n="${6:-1}" 'BEGIN {
    split(q, qt, " "); split(p, pt, " ")
    printf "%-38s %9.3f %9.3f %6.2f %9.3f %9.3f %6.2f %5s %13s\n", task, qt[1] / n, pt[1] / n,
      (pt[1] > 0) ? qt[1] / pt[1] : 0, qt[2] / n, pt[2] / n, (pt[2] > 0) ? qt[2] / pt[2] : 0, goal, words
  }'
}

all=$(best quester_all_pdfs)
each=$(best quester_each_pdf)
peer=$(best pdftotext_each_pdf)
ocr=$(best "$quester" text --ocr "${pages[@]}")
tesseract=$(best tesseract "$files/pages.txt" - --psm 3)
ocr1=$(best "$quester" text --ocr "${pages[0]}")
tesseract1=$(best tesseract "${pages[0]}" - --psm 3)
text_words="$(words quester_all_pdfs)/$(words pdftotext_each_pdf)"
ocr_words="$(words "$quester" text --ocr "${pages[@]}")/$(words tesseract "$files/pages.txt" - --psm 3)"

printf '%-38s %9s %9s %6s %9s %9s %6s %5s %13s\n' task "wall (s)" peer ratio "cpu (s)" peer ratio goal words
report "text of ${#pdfs[@]} PDFs, one run (pdftotext)" 1.2 "$all" "$peer" "$text_words"
report "text of ${#pdfs[@]} PDFs, a run each" - "$each" "$peer" "$text_words"
report "OCR per page, one run (tesseract)" 1.0 "$ocr" "$tesseract" "$ocr_words" "${#pages[@]}"
report "OCR of one page, a run each" - "$ocr1" "$tesseract1" ""
echo "ratio: quester's time over the peer's; at or below the goal meets it; words: quester/peer"
