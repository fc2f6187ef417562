#!/usr/bin/env bash
# Times Quoddle's text storage against QScintilla and Qt's QTextDocument on the same generated
# documents, in one run, and prints one table.
#
#   bench/compare-storage.sh [SIZE_MB...]      (default: 1 10 100)
#
# Builds the release libraries, installs them into a scratch prefix, builds the harness
# (bench/storage-peers) against that prefix with find_package(Quoddle), Qt 6 Widgets and
# QScintilla (scripts/install-deps --dev installs it), generates each document once with a fixed
# seed, and runs every store at every size in processes of its own: one for the timings and the
# memory after loading, a fresh one for the peak of select all / replace / undo / redo. What each
# figure means is written at the top of bench/storage-peers/main.cpp. Ratios are Quoddle / peer:
# below 1 means Quoddle is faster or smaller. Positions are each store's own units (UTF-16 units,
# bytes, QChars), drawn as the same fractions of the text. Set CMAKE_BUILD_PARALLEL_LEVEL to limit
# the build's jobs.
set -euo pipefail
cd "$(dirname "$0")/.."
sizes=("$@")
[[ ${#sizes[@]} -gt 0 ]] || sizes=(1 10 100)
for size in "${sizes[@]}"; do
  [[ "$size" =~ ^[1-9][0-9]*$ ]] || { echo "compare-storage: sizes are whole megabytes, not '$size'" >&2; exit 2; }
done

if [[ -z "$(find /usr/include -path '*qt6/Qsci/qsciscintilla.h' -print -quit 2>/dev/null)" ]]; then
  echo "compare-storage: QScintilla for Qt 6 is missing (scripts/install-deps --dev)" >&2
  exit 1
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

build() {  # chained, as errexit does not apply inside the `if` that calls it
  cmake --preset release && cmake --build --preset release &&
    cmake --install build/release --prefix "$work/prefix" &&
    cmake -S bench/storage-peers -B "$work/harness" -G Ninja -DCMAKE_BUILD_TYPE=Release \
      -DCMAKE_PREFIX_PATH="$work/prefix" &&
    cmake --build "$work/harness"
}
echo "compare-storage: building and installing the release libraries" >&2
if ! build > "$work/build.log" 2>&1; then
  cat "$work/build.log" >&2
  echo "compare-storage: the build failed" >&2
  exit 1
fi
harness=$work/harness/storage-peers
export QT_QPA_PLATFORM=offscreen
# Qt complains on every start when there is none, and the peers' messages are shown below.
mkdir -m 700 "$work/runtime"
export XDG_RUNTIME_DIR=$work/runtime

stores=(quoddle qscintilla qtextdocument)
declare -A result  # result[store,size,key]
for size in "${sizes[@]}"; do
  document=$work/document-$size.txt
  "$harness" --generate "$document" --size "$size"
  for store in "${stores[@]}"; do
    for measure in main replace; do
      echo "compare-storage: $store at $size MB ($measure)" >&2
      if ! "$harness" --store "$store" --file "$document" --measure "$measure" > "$work/out" 2> "$work/err"; then
        cat "$work/err" >&2
        echo "compare-storage: $store failed at $size MB" >&2
        exit 1
      fi
      # Qt's own messages are not results; show them, as they may explain a figure.
      [[ -s "$work/err" ]] && sed "s/^/  $store: /" "$work/err" >&2
      while read -r key value; do
        result[$store,$size,$key]=$value
      done < "$work/out"
    done
  done
done

# One row per measure and size: the three figures, then Quoddle / QScintilla and
# Quoddle / QTextDocument.
rows=(
  "load_ms|load from disk, ms (best of 5; 3 from 50 MB)"
  "load_rss_per_byte|resident after load, per file byte"
  "load_peak_per_byte|peak while loading, per file byte"
  "near_edit_us|edit near a moving cursor, µs (median)"
  "random_edit_us|edit at a random place, µs (median)"
  "undo_us|undo one step at a random place, µs (median)"
  "line_of_position_us|line of a random position, µs (mean)"
  "start_of_line_us|start of a random line, µs (mean)"
  "replace_peak_per_byte|select all/replace/undo/redo: peak per byte"
  "replace_ms|select all/replace/undo/redo, ms"
)
figure() {  # three significant digits (whole numbers from 100 on), or "-" when missing
  awk -v v="${1:-}" 'BEGIN { if (v == "") print "-"; else if (v >= 100) printf "%.0f\n", v;
                             else printf "%#.3g\n", v }'
}
ratio() {
  awk -v q="${1:-}" -v p="${2:-}" 'BEGIN { if (q == "" || p == "" || p + 0 == 0) print "-";
                                           else if (q / p >= 100) printf "%.0fx\n", q / p;
                                           else printf "%#.3gx\n", q / p }'
}

# Characters, not bytes, for the padding of labels with "µ" in them.
export LC_ALL=C.UTF-8
echo
printf 'Documents: %s MB; lines:' "${sizes[*]}"
for size in "${sizes[@]}"; do printf ' %s' "${result[quoddle,$size,lines]}"; done
printf '; random edits and undos timed:'
for size in "${sizes[@]}"; do printf ' %s' "${result[quoddle,$size,random_edits]}"; done
printf '\n%s, %s cores, %s\n\n' "$(uname -srm)" "$(nproc)" "$(date -u +%Y-%m-%d)"
printf '%-45s %7s %10s %11s %14s %9s %9s\n' "measure" "size" "Quoddle" "QScintilla" "QTextDocument" "Q/QSci" "Q/QTD"
for row in "${rows[@]}"; do
  key=${row%%|*}
  label=${row#*|}
  for size in "${sizes[@]}"; do
    q=${result[quoddle,$size,$key]:-}
    s=${result[qscintilla,$size,$key]:-}
    t=${result[qtextdocument,$size,$key]:-}
    printf '%s%*s %4s MB %10s %11s %14s %9s %9s\n' "$label" $((45 - ${#label})) "" "$size" "$(figure "$q")" "$(figure "$s")" \
      "$(figure "$t")" "$(ratio "$q" "$s")" "$(ratio "$q" "$t")"
    label=""
  done
done

# All three count lines the same way (terminators + 1); a difference means one read the file
# differently.
for size in "${sizes[@]}"; do
  for store in qscintilla qtextdocument; do
    if [[ "${result[$store,$size,lines]}" != "${result[quoddle,$size,lines]}" ]]; then
      echo "compare-storage: at $size MB $store counts ${result[$store,$size,lines]} lines, Quoddle ${result[quoddle,$size,lines]}" >&2
    fi
  done
done
