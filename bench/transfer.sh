#!/usr/bin/env bash
# Times `orbisk-cli copy` against `cp -a` (same file system and onto /dev/shm) and `rsync -a`
# (onto /dev/shm) on the same data in the same run: a tree of many small files and a set of large
# files. Every timed run gets a fresh destination; the commands alternate (A B C A B C ...) and
# medians are reported, with orbisk-cli's peak memory. Prints a Markdown section for
# docs/PERFORMANCE.md.
#
#   bench/transfer.sh [BUILD_DIR]   environment: RUNS (default 3), SMALL_FILES (default 100000),
#                                   LARGE_FILES (default 4), LARGE_MIB (default 256),
#                                   SOURCE_PLACE (default /tmp), OTHER_PLACE (default /dev/shm)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
cli=$(realpath "$build/bin/orbisk-cli")
runs=${RUNS:-3}
small_files=${SMALL_FILES:-100000}
large_files=${LARGE_FILES:-4}
large_mib=${LARGE_MIB:-256}
source_place=${SOURCE_PLACE:-/tmp}
other_place=${OTHER_PLACE:-/dev/shm}
[[ -x "$cli" ]] || { echo "build $cli first" >&2; exit 1; }

median() { sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }

# Runs a command under GNU time; prints "seconds peak-KiB".
measure() {
    local out
    out=$(mktemp)
    /usr/bin/time -f "%e %M" -o "$out" "$@" >/dev/null
    cat "$out"
    rm -f "$out"
}

make_data() { # folder
    local root=$1
    mkdir -p "$root/large" "$root/small"
    for ((i = 0; i < large_files; i++)); do
        head -c "$((large_mib << 20))" /dev/urandom >"$root/large/big$i.bin"
    done
    python3 - "$root/small" "$small_files" <<'PY'
import os, random, sys
root, count = sys.argv[1], int(sys.argv[2])
random.seed(1)
for i in range(count):
    folder = os.path.join(root, "d%04d" % (i % 1000))
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, "f%06d.txt" % i), "wb") as f:
        f.write(random.randbytes(random.randint(200, 8192)))
PY
}

# Prints "tool median-seconds peak-KiB" for each tool, copying data into fresh folders of work.
bench_set() { # work folder, data folder, tools...
    local work=$1 data=$2
    shift 2
    declare -A times=() memory=()
    for ((round = 1; round <= runs; round++)); do
        for tool in "$@"; do
            local target="$work/out-$tool-$round" result
            case $tool in
            orbisk) result=$(measure "$cli" copy "$data" "$target") ;;
            cp) result=$(measure cp -a "$data" "$target") ;;
            rsync) result=$(measure rsync -a "$data/" "$target") ;;
            esac
            times[$tool]+="${result% *} "
            memory[$tool]=${result#* }
            # Large copies are deleted at once (they would fill the volume); many small files only
            # after the group, since creating right after deleting is slow on ext4.
            [[ $data == */large ]] && rm -rf "$target"
        done
    done
    for tool in "$@"; do
        echo "$tool $(tr ' ' '\n' <<<"${times[$tool]}" | grep . | median) ${memory[$tool]}"
    done
    rm -rf "$work"/out-*
}

data=$(mktemp -d "$source_place/orbisk-bench-data-XXXXXX")
same=$(mktemp -d "$source_place/orbisk-bench-out-XXXXXX")
other=$(mktemp -d "$other_place/orbisk-bench-out-XXXXXX")
trap 'rm -rf "$data" "$same" "$other"' EXIT
make_data "$data"
sync

echo "## Copying with orbisk-cli"
echo
echo "\`bench/transfer.sh\`: ${small_files} files of 200 B-8 KiB in 1,000 folders, and ${large_files} files of"
echo "${large_mib} MiB of random data, copied by \`orbisk-cli copy\`, \`cp -a\` and \`rsync -a\` from"
echo "$(df --output=fstype "$source_place" | tail -1) ($source_place) to the same file system and to"
echo "$(df --output=fstype "$other_place" | tail -1) ($other_place); median of $runs alternating runs, warm caches, fresh"
echo "destinations. Ratio = other tool's time / ours (1.00 or more: we are no slower)."
echo "Kernel $(uname -r), $(nproc) cores."
echo
echo "| data | to | orbisk-cli | peak memory | cp -a | ratio | rsync -a | ratio |"
echo "|---|---|---|---|---|---|---|---|"
for set in small large; do
    for place in same other; do
        work=$same tools=(orbisk cp)
        if [[ $place == other ]]; then work=$other tools=(orbisk cp rsync); fi
        declare -A t=() m=()
        while read -r tool seconds kib; do
            t[$tool]=$seconds m[$tool]=$kib
        done < <(bench_set "$work" "$data/$set" "${tools[@]}")
        rsync_cells="– | –"
        [[ -n ${t[rsync]:-} ]] && rsync_cells="${t[rsync]} s | $(ratio "${t[rsync]}" "${t[orbisk]}")"
        where=$([[ $place == same ]] && echo "same file system" || echo "$other_place")
        echo "| $set | $where | ${t[orbisk]} s | $((m[orbisk] / 1024)) MiB | ${t[cp]} s | $(ratio "${t[cp]}" "${t[orbisk]}") | $rsync_cells |"
        unset t m
    done
done
