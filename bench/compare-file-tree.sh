#!/usr/bin/env bash
# Times building a FileItem tree against `find DIR | wc -l` over the same generated folder tree.
#
#   bench/compare-file-tree.sh [FOLDERS] [FILES_PER_FOLDER]      (default 1000 100)
#   BENCHMARKS=path/to/quoddle_benchmarks bench/compare-file-tree.sh   uses that binary
#
# Builds the release benchmarks (build/release), generates FOLDERS folders of FILES_PER_FOLDER
# empty files once, warms the cache, then prints the best of five `find` runs and Google
# Benchmark's time for the FileItem build, and their ratio (FileItem / find; below 1 means the
# tree is built faster). Both read every folder once; find only prints names, while the tree also
# sorts each listing in Finder order and keeps every node in memory, so the ratio shows what that
# costs rather than judging it.
set -euo pipefail
cd "$(dirname "$0")/.."
folders=${1:-1000}
files=${2:-100}

benchmarks=${BENCHMARKS:-}
if [[ -z "$benchmarks" ]]; then
  cmake --preset release -DQUODDLE_BUILD_BENCHMARKS=ON > /dev/null
  cmake --build --preset release --target quoddle_benchmarks > /dev/null
  benchmarks=$PWD/build/release/bench/quoddle_benchmarks
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for ((folder = 1; folder <= folders; folder++)); do
  mkdir "$work/folder $folder"
  (cd "$work/folder $folder" && eval "touch file{1..$files}.txt")
done
find "$work" | wc -l > /dev/null  # warm the cache

best=
for _ in 1 2 3 4 5; do
  start=$(date +%s%N)
  entries=$(find "$work" | wc -l)
  end=$(date +%s%N)
  elapsed=$(( (end - start) / 1000 ))  # microseconds
  if [[ -z "$best" || $elapsed -lt $best ]]; then best=$elapsed; fi
done
find_ms=$(awk -v us="$best" 'BEGIN { printf "%.1f", us / 1000 }')

json=$(QUODDLE_FILE_TREE=$work "$benchmarks" --benchmark_filter='^BM_FileItemBuildGivenTree' \
  --benchmark_format=json 2> /dev/null)
tree_ms=$(printf '%s\n' "$json" | awk -F': ' '/"real_time"/ { gsub(/,/, "", $2); printf "%.1f", $2; exit }')

printf 'tree: %s folders x %s files, %s entries (find counts the root too)\n' \
  "$folders" "$files" "$entries"
printf '%-24s %10s ms\n' "FileItem(root)" "$tree_ms" "find DIR | wc -l" "$find_ms"
printf 'ratio (FileItem / find): %s\n' \
  "$(awk -v t="$tree_ms" -v f="$find_ms" 'BEGIN { printf "%.2fx", (f > 0 ? t / f : 0) }')"
