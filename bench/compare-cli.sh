#!/usr/bin/env bash
# Times `quod` against the usual command-line tools on one generated file, in one run, and prints
# the ratios, the peak memory of each side and the target each ratio is held to.
#
#   bench/compare-cli.sh [SIZE_MB]      (default 100)
#   QUOD=path/to/quod bench/compare-cli.sh   times that binary instead of building one
#
# Builds the release `quod` (build/release), generates SIZE_MB of ordinary text once (words of
# mixed case, some non-ASCII, repeated lines, 5 % of lines ending in CR LF), then runs each pair
# three times and keeps each side's best wall-clock time (ratio quod / peer: below 1 means quod is
# faster) and its peak resident memory (/usr/bin/time's %M) per byte of the input. Outputs go to
# files on the same disk as the input, so both sides pay for writing. The peers do not always do
# the same work (uniq only drops adjacent repeats, wc counts code points, uchardet guesses from
# statistics); the targets say what quod is held to against each.
set -euo pipefail
cd "$(dirname "$0")/.."
size_mb=${1:-100}
[[ "$size_mb" =~ ^[1-9][0-9]*$ ]] || { echo "compare-cli: the size is whole megabytes, not '$size_mb'" >&2; exit 2; }

for tool in unix2dos dos2unix uchardet awk sort uniq wc /usr/bin/time; do
  command -v "$tool" > /dev/null || { echo "compare-cli: $tool is missing (scripts/install-deps --dev)" >&2; exit 1; }
done
quod=${QUOD:-}
if [[ -z "$quod" ]]; then
  cmake --preset release > /dev/null
  cmake --build --preset release --target quod > /dev/null
  quod=$PWD/build/release/tools/quod/quod
fi
quod=$(realpath "$quod")
export LC_ALL=C.UTF-8

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
    if (rand() < 0.2 && line != "") { emit(); continue }
    words = 3 + int(rand() * 9); line = w[1 + int(rand() * n)]
    for (i = 1; i < words; i++) line = line " " w[1 + int(rand() * n)]
    emit()
  }
}
function emit(  ending) {
  ending = rand() < 0.05 ? "\r\n" : "\n"
  printf "%s%s", line, ending; written += length(line) + length(ending)
}' > "$input"
input_bytes=$(stat -c %s "$input")

# Runs the command string three times; prints "best-seconds peak-kilobytes". The time is taken
# around the run to the microsecond (time's own %e has hundredths, too coarse for the fast rows).
measure() {
  local best="" peak=0 run start seconds kilobytes
  for run in 1 2 3; do
    start=$EPOCHREALTIME
    /usr/bin/time -f '%M' -o "$work/time" bash -c "$1" > /dev/null
    seconds=$(awk -v s="$start" -v e="$EPOCHREALTIME" 'BEGIN { printf "%.3f", e - s }')
    read -r kilobytes < "$work/time"
    best=$(awk -v a="${best:-$seconds}" -v b="$seconds" 'BEGIN { print (b < a ? b : a) }')
    (( kilobytes > peak )) && peak=$kilobytes
  done
  echo "$best $peak"
}

printf 'input: %s MB, %s lines, locale %s\n\n' "$size_mb" "$(wc -l < "$input")" "$LC_ALL"
format='%-32s %7s %7s   %-22s %7s %7s   %7s  %s\n'
printf "$format" "quod" "seconds" "mem/B" "peer" "seconds" "mem/B" "ratio" "target"
compare() {  # label-quod, label-peer, target, then the two commands as strings
  local quod_seconds quod_kb peer_seconds peer_kb
  read -r quod_seconds quod_kb < <(measure "$4")
  read -r peer_seconds peer_kb < <(measure "$5")
  printf "$format" "$1" "$quod_seconds" \
    "$(awk -v k="$quod_kb" -v b="$input_bytes" 'BEGIN { printf "%.2f", k * 1024 / b }')" \
    "$2" "$peer_seconds" \
    "$(awk -v k="$peer_kb" -v b="$input_bytes" 'BEGIN { printf "%.2f", k * 1024 / b }')" \
    "$(awk -v q="$quod_seconds" -v p="$peer_seconds" 'BEGIN { printf "%.2fx", (p > 0 ? q / p : 0) }')" \
    "$3"
}
compare "quod line-endings --to windows" "unix2dos" "<= 1.0x, mem <= 0.2" \
  "'$quod' line-endings --to windows '$input' > '$work/out'" \
  "unix2dos -q -n '$input' '$work/out'"
compare "quod line-endings --to unix" "dos2unix" "<= 1.0x, mem <= 0.2" \
  "'$quod' line-endings --to unix '$input' > '$work/out'" \
  "dos2unix -q -n '$input' '$work/out'"
compare "quod count" "wc -m -w" "<= 1.5x, mem <= 0.2" \
  "'$quod' count '$input'" "wc -m -w '$input'"
compare "quod encoding" "uchardet" "<= 2.0x, mem <= 1.2" \
  "'$quod' encoding '$input'" "uchardet '$input'"
compare "quod sort" "sort -f" "<= 1.0x, mem <= 3" \
  "'$quod' sort '$input' > '$work/out'" "sort -f '$input' > '$work/out'"
compare "quod unique" "uniq" "<= 2.0x, mem <= 3" \
  "'$quod' unique '$input' > '$work/out'" "uniq '$input' > '$work/out'"
compare "quod unique" "awk '!seen[\$0]++'" "<= 1.0x, mem <= 3" \
  "'$quod' unique '$input' > '$work/out'" "awk '!seen[\$0]++' '$input' > '$work/out'"
