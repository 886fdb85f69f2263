#!/usr/bin/env bash
# Times what the viewer and the editor do, against the tools a user would otherwise reach for:
# the first screen of a 2 GB log (text_view first) against head, the last screen (text_view last)
# against tail, a find near the end against grep -m1 -b -F, and, for the editor, loading a 32 MB
# text (TextFile::load: read, check UTF-8, count and normalise endings) against wc -l and iconv's
# UTF-8 check, and saving it (TextFile::save: encode, write a temporary file, fsync, rename) against
# dd with conv=fsync. The program's start (about the same for every command) is measured apart.
# The commands take turns (A B C, A B C, ...) and medians are reported, with the viewer's peak
# memory on the large file.
#
#   bench/text.sh [BUILD_DIR]     environment: SIZE_MB (2048), RUNS (7), BENCH_DIR (removed after)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
bin=$build/bin
size_mb=${SIZE_MB:-2048}
runs=${RUNS:-7}
dir=${BENCH_DIR:-${TMPDIR:-/tmp}/orbisk-bench-text}
[[ -x $bin/text_view ]] || { echo "missing $bin/text_view: build first" >&2; exit 1; }

mkdir -p "$dir"
trap 'rm -rf "$dir"' EXIT
large=$dir/large.log
medium=$dir/medium.txt
# One megabyte of log lines, repeated; the needle sits in the last megabyte only.
python3 - "$dir/block" <<'PY'
import sys
lines, size, i = [], 0, 0
while size < (1 << 20) - 200:
    line = f"2026-11-24 08:{i // 60 % 60:02d}:{i % 60:02d} INFO worker-{i % 7} request {i} served in {i % 97} ms\n"
    lines.append(line); size += len(line); i += 1
open(sys.argv[1], "w").write("".join(lines))
PY
for ((i = 0; i < size_mb - 1; i++)); do cat "$dir/block"; done >"$large"
{ cat "$dir/block"; echo "the needle line"; } >>"$large"
head -c $((32 << 20)) "$large" >"$medium"
sed -i '$ d' "$medium" # whole lines only

median() { sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
# "wall cpu" seconds of one run; cpu (user + system) is what a shared machine disturbs least
seconds() {
  local out
  out=$(mktemp)
  /usr/bin/time -f '%e %U %S' -o "$out" "$@" >/dev/null 2>&1 || true
  tail -1 "$out" | awk '{ printf "%.3f %.3f\n", $1, $2 + $3 }'
  rm -f "$out"
}
peak() { /usr/bin/time -f %M "$@" 2>&1 >/dev/null | tail -1; }

declare -A wall cpu
commands=(start true first head last tail find grep load wc valid iconv save dd)
run_one() {
  case $1 in
    start) seconds "$bin/text_view" first /dev/null ;; # refused at once: the cost of starting the program
    true) seconds true ;;
    first) seconds "$bin/text_view" first "$large" 50 ;;
    head) seconds head -n 50 "$large" ;;
    last) seconds "$bin/text_view" last "$large" 50 ;;
    tail) seconds tail -n 50 "$large" ;;
    find) seconds "$bin/text_view" find "$large" "the needle" ;;
    grep) seconds grep -m1 -b -F "the needle" "$large" ;;
    load) seconds "$bin/text_view" load "$medium" ;;
    wc) seconds wc -l "$medium" ;;
    valid) seconds "$bin/text_view" load "$medium" ;;
    iconv) seconds iconv -f UTF-8 -t UTF-8 "$medium" ;;
    save) rm -f "$dir/saved.txt"; seconds "$bin/text_view" save "$medium" "$dir/saved.txt" ;;
    dd) rm -f "$dir/copied.txt"; seconds dd if="$medium" of="$dir/copied.txt" bs=1M conv=fsync status=none ;;
  esac
}

for c in "${commands[@]}"; do run_one "$c" >/dev/null; done # warm the page cache for everyone
for ((r = 0; r < runs; r++)); do
  for c in "${commands[@]}"; do
    read -r w u < <(run_one "$c")
    wall[$c]+="$w "
    cpu[$c]+="$u "
  done
done
for c in "${commands[@]}"; do
  wall[$c]=$(tr ' ' '\n' <<<"${wall[$c]}" | grep . | median)
  cpu[$c]=$(tr ' ' '\n' <<<"${cpu[$c]}" | grep . | median)
done

ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", (b > 0 ? a / b : 0) }'; }
echo "large: $(du -h --apparent-size "$large" | cut -f1), medium: $(du -h --apparent-size "$medium" | cut -f1); $runs alternating runs, medians: wall / cpu seconds"
row() {
  printf '%-40s %6.3f %6.3f | %-20s %6.3f %6.3f | ratio wall %s cpu %s\n' "$1" "${wall[$2]}" "${cpu[$2]}" "$3" \
    "${wall[$4]}" "${cpu[$4]}" "$(ratio "${wall[$2]}" "${wall[$4]}")" "$(ratio "${cpu[$2]}" "${cpu[$4]}")"
}
row "program start (text_view on /dev/null)" start "true" true
row "text_view first (first 50 lines)" first "head -n 50" head
row "text_view last (last 50 lines)" last "tail -n 50" tail
row "text_view find (match in the last MB)" find "grep -m1 -b -F" grep
row "TextFile::load (32 MB)" load "wc -l" wc
row "TextFile::load (32 MB)" valid "iconv -f UTF-8 -t UTF-8" iconv
row "TextFile::load + save (32 MB, fsync)" save "dd bs=1M conv=fsync" dd
echo "peak memory (KB): text_view first on the large file $(peak "$bin/text_view" first "$large" 50), last $(peak "$bin/text_view" last "$large" 50), find $(peak "$bin/text_view" find "$large" "the needle"), head $(peak head -n 50 "$large")"
