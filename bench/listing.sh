#!/usr/bin/env bash
# Times listing a folder of 200,000 files: orbisk-cli list (read + sort by name) against ls -l and
# find, and the core's read alone against a readdir + fstatat floor. The commands take turns
# (A B C A B C ...) so that a slow spell of the machine hurts all alike; medians are reported.
# Peak memory comes from /usr/bin/time -f %M.
#
#   bench/listing.sh [BUILD_DIR]     environment: COUNT (200000), RUNS (7), BENCH_DIR (reused)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
bin=$build/bin
count=${COUNT:-200000}
runs=${RUNS:-7}
dir=${BENCH_DIR:-${TMPDIR:-/tmp}/orbisk-bench-listing-$count}

for tool in "$bin/orbisk-cli" "$bin/list_core" "$bin/list_floor"; do
  [[ -x $tool ]] || { echo "missing $tool: build first (cmake --build $build)" >&2; exit 1; }
done

# The folder is built once and reused: creating 200,000 files takes longer than all the timing.
if [[ ! -f $dir.complete ]]; then
  echo "creating $count files in $dir"
  rm -rf "$dir" && mkdir -p "$dir"
  python3 - "$dir" "$count" <<'PY'
import os, random, sys
folder, count = sys.argv[1], int(sys.argv[2])
random.seed(7)
stems = ["IMG_", "Report ", "notes-", "Übersicht ", "track", "data_", "Résumé ", "backup."]
exts = [".jpg", ".pdf", ".txt", ".md", ".flac", ".csv", ".tar.gz", ""]
for i in range(count):
    name = f"{random.choice(stems)}{i}{random.choice(exts)}"
    fd = os.open(os.path.join(folder, name), os.O_CREAT | os.O_WRONLY | os.O_EXCL, 0o644)
    if i % 3 == 0:
        os.write(fd, b"x" * (i % 5000))
    os.close(fd)
PY
  touch "$dir.complete"
fi

median() { sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

# "wall cpu" seconds of one run of a command, output discarded; cpu is user + system time, which
# other people's work on a shared machine disturbs far less than the wall clock
seconds() {
  local out
  out=$(mktemp)
  /usr/bin/time -f '%e %U %S' -o "$out" "$@" >/dev/null 2>&1
  awk '{ printf "%.3f %.3f\n", $1, $2 + $3 }' "$out"
  rm -f "$out"
}

# peak resident memory in kilobytes
peak() { /usr/bin/time -f %M "$@" 2>&1 >/dev/null | tail -1; }

declare -A wall cpu
commands=(cli ls find core floor)
run_one() {
  case $1 in
    cli) seconds "$bin/orbisk-cli" list --names --hidden "$dir" ;;
    ls) seconds env LC_ALL=C.UTF-8 ls -l "$dir" ;;
    find) seconds find "$dir" -maxdepth 1 -printf '%s %T@ %y\n' ;;
    core) seconds "$bin/list_core" "$dir" ;;
    floor) seconds "$bin/list_floor" "$dir" ;;
  esac
}

# one untimed pass to warm the dentry and inode caches for everyone alike
for c in "${commands[@]}"; do run_one "$c" >/dev/null; done
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

ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }
echo "files: $count in $dir, $runs alternating runs, medians in seconds"
printf '%-46s %8s %8s\n' "" wall cpu
row() { printf '%-46s %8.3f %8.3f\n' "$1" "${wall[$2]}" "${cpu[$2]}"; }
row "orbisk-cli list --names (read + sort by name)" cli
row "ls -l" ls
row "find -maxdepth 1 -printf '%s %T@ %y\n'" find
row "list_core (DirectoryReader::read)" core
row "list_floor (readdir + fstatat)" floor
echo "orbisk-cli list / ls -l:  wall $(ratio "${wall[cli]}" "${wall[ls]}"), cpu $(ratio "${cpu[cli]}" "${cpu[ls]}")"
echo "orbisk-cli list / find:   wall $(ratio "${wall[cli]}" "${wall[find]}"), cpu $(ratio "${cpu[cli]}" "${cpu[find]}")"
echo "read / floor:             wall $(ratio "${wall[core]}" "${wall[floor]}"), cpu $(ratio "${cpu[core]}" "${cpu[floor]}")"

# Memory: the read's peak against an empty folder's, per item, minus the bytes of the names.
empty=$(mktemp -d)
trap 'rmdir "$empty"' EXIT
base=$(peak "$bin/list_core" "$empty")
read_kb=$(peak "$bin/list_core" "$dir")
sort_kb=$(peak "$bin/list_core" "$dir" --sort)
cli_kb=$(peak "$bin/orbisk-cli" list --names --hidden "$dir")
ls_kb=$(peak env LC_ALL=C.UTF-8 ls -l "$dir")
name_bytes=$(find "$dir" -mindepth 1 -maxdepth 1 -printf '%f\n' | wc -c)
per_item() { awk -v kb="$1" -v base="$base" -v names="$name_bytes" -v n="$count" \
  'BEGIN { printf "%.1f\n", ((kb - base) * 1024 - names) / n }'; }
echo "peak memory (KB): empty $base, read $read_kb, read + sort $sort_kb, orbisk-cli list $cli_kb, ls -l $ls_kb"
echo "names: $name_bytes bytes ($(awk -v a="$name_bytes" -v n="$count" 'BEGIN { printf "%.1f", a / n }') per item, newline included)"
echo "bytes per item beyond the names: read $(per_item "$read_kb"), read + sort $(per_item "$sort_kb")"
