#!/usr/bin/env bash
# Times `quod` against the usual command-line tools on one generated file, in one run.
#
#   bench/compare-cli.sh [SIZE_MB]      (default 100)
#   QUOD=path/to/quod bench/compare-cli.sh   times that binary instead of building one
#
# Builds the release `quod` (build/release), generates SIZE_MB of ordinary text (words of mixed
# case, repeated lines, LF endings) once, then runs each pair on it and prints the wall-clock
# times and their ratio (quod / peer; below 1 means quod is faster). Outputs go to files on the
# same disk as the input, so both sides pay for writing. Only line endings have a target (within
# 1.5x of unix2dos); the other peers do different work (byte-wise case folding, exact duplicates,
# code points instead of grapheme clusters, statistics instead of declarations), so their ratios
# orient rather than judge.
set -euo pipefail
cd "$(dirname "$0")/.."
size_mb=${1:-100}

for tool in unix2dos uchardet awk sort wc; do
  command -v "$tool" > /dev/null || { echo "compare-cli: $tool is missing (scripts/install-deps)" >&2; exit 1; }
done
quod=${QUOD:-}
if [[ -z "$quod" ]]; then
  cmake --preset release > /dev/null
  cmake --build --preset release --target quod > /dev/null
  quod=$PWD/build/release/tools/quod/quod
fi
quod=$(realpath "$quod")

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
input=$work/input.txt
# A fixed seed keeps the file the same from run to run.
awk -v bytes=$((size_mb * 1000 * 1000)) 'BEGIN {
  srand(42)
  split("alpha Beta gamma delta Epsilon zeta eta theta iota Kappa lambda mu nu xi omicron pi " \
        "rho Sigma tau upsilon phi chi psi Omega café naïve Straße résumé 42 1024 2024-01-05", w, " ")
  n = length(w); written = 0
  while (written < bytes) {
    if (rand() < 0.2 && line != "") { print line; written += length(line) + 1; continue }
    words = 3 + int(rand() * 9); line = w[1 + int(rand() * n)]
    for (i = 1; i < words; i++) line = line " " w[1 + int(rand() * n)]
    print line; written += length(line) + 1
  }
}' > "$input"

seconds() {  # runs "$@" once and prints the wall-clock seconds it took
  local start end
  start=$(date +%s.%N)
  "$@" > /dev/null
  end=$(date +%s.%N)
  awk -v s="$start" -v e="$end" 'BEGIN { printf "%.2f", e - s }'
}

printf 'input: %s MB, %s lines, locale %s\n\n' "$size_mb" "$(wc -l < "$input")" "${LC_ALL:-${LANG:-C}}"
printf '%-36s %8s   %-26s %8s   %s\n' "quod" "seconds" "peer" "seconds" "ratio"
compare() {  # label-quod, label-peer, then the two commands as strings
  local quod_time peer_time
  quod_time=$(seconds bash -c "$3")
  peer_time=$(seconds bash -c "$4")
  printf '%-36s %8s   %-26s %8s   %s\n' "$1" "$quod_time" "$2" "$peer_time" \
    "$(awk -v q="$quod_time" -v p="$peer_time" 'BEGIN { printf "%.2fx", (p > 0 ? q / p : 0) }')"
}
compare "quod line-endings --to windows" "unix2dos" \
  "'$quod' line-endings --to windows '$input' > '$work/out'" \
  "unix2dos -q -n '$input' '$work/out'"
compare "quod sort" "sort -f" \
  "'$quod' sort '$input' > '$work/out'" "sort -f '$input' > '$work/out'"
compare "quod unique" "awk '!seen[\$0]++'" \
  "'$quod' unique '$input' > '$work/out'" "awk '!seen[\$0]++' '$input' > '$work/out'"
compare "quod unique" "uniq" \
  "'$quod' unique '$input' > '$work/out'" "uniq '$input' > '$work/out'"
# Peak resident memory of sort and unique per byte of the input (the decoded text, the keys or
# the table, the rebuilt text and the undo record of the old one, and the mapped input itself).
if [[ -x /usr/bin/time ]]; then
  input_bytes=$(stat -c %s "$input")
  for command in sort unique; do
    kilobytes=$( { /usr/bin/time -f %M "$quod" "$command" "$input" > "$work/out"; } 2>&1 | tail -1)
    printf 'quod %-31s peak %s MiB, %s bytes per input byte\n' "$command" "$((kilobytes / 1024))" \
      "$(awk -v k="$kilobytes" -v b="$input_bytes" 'BEGIN { printf "%.2f", k * 1024 / b }')"
  done
fi
compare "quod count" "wc -m -w" \
  "'$quod' count '$input'" "wc -m -w '$input'"
compare "quod encoding" "uchardet" \
  "'$quod' encoding '$input'" "uchardet '$input'"
