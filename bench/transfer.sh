#!/usr/bin/env bash
# Times `orbisk-cli copy` against `cp -a` (same file system and onto /dev/shm) and `rsync -a`
# (onto /dev/shm) on the same data in the same run: a tree of many small files and a set of large
# files. Every timed run gets a fresh destination and starts with nothing left to write back; the
# commands alternate (A B C A B C ...) and the medians of wall and CPU time are reported, with
# orbisk-cli's peak memory. Prints a Markdown section for docs/PERFORMANCE.md.
#
#   bench/transfer.sh [BUILD_DIR]   environment: RUNS (default 3), SMALL_FILES (default 100000),
#                                   LARGE_FILES (default 4), LARGE_MIB (default 256),
#                                   SOURCE_PLACE (default /tmp), OTHER_PLACE (default /dev/shm)
#
# SOURCE_PLACE=loop (root only) makes a fresh ext4 image, mounts it without `discard` and works
# there: on a file system mounted with `discard`, deleting a run's 100,000 files takes minutes and
# slows creating files for a while after, which would blur the next runs.
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

cleanup=()
trap 'for c in "${cleanup[@]}"; do eval "$c"; done' EXIT
if [[ $source_place == loop ]]; then
    image=$(mktemp /tmp/orbisk-bench-ext4-XXXXXX.img)
    mount_point=$(mktemp -d /tmp/orbisk-bench-ext4-XXXXXX)
    cleanup+=("umount '$mount_point'" "rmdir '$mount_point'" "rm -f '$image'")
    truncate -s "$((small_files / 50 + large_files * large_mib * 2 + 1024))M" "$image"
    mkfs.ext4 -q -F -E lazy_itable_init=0,lazy_journal_init=0 "$image"
    mount -o loop "$image" "$mount_point"
    source_place=$mount_point
fi

# Runs a command under GNU time after writing back what earlier runs left dirty; prints
# "wall-seconds cpu-seconds peak-KiB".
measure() {
    local out
    out=$(mktemp)
    sync
    /usr/bin/time -f "%e %U %S %M" -o "$out" "$@" >/dev/null
    awk '{ printf "%s %.2f %s\n", $1, $2 + $3, $4 }' "$out"
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

# Prints "tool wall cpu peak-KiB" (medians) for each tool, copying data into fresh folders of work.
bench_set() { # work folder, data folder, tools...
    local work=$1 data=$2
    shift 2
    declare -A wall=() cpu=() memory=()
    for ((round = 1; round <= runs; round++)); do
        for tool in "$@"; do
            local target="$work/out-$tool-$round" result
            case $tool in
            orbisk) result=$(measure "$cli" copy "$data" "$target") ;;
            cp) result=$(measure cp -a "$data" "$target") ;;
            rsync) result=$(measure rsync -a "$data/" "$target") ;;
            esac
            read -r w c m <<<"$result"
            wall[$tool]+="$w " cpu[$tool]+="$c " memory[$tool]=$m
            rm -rf "$target"
        done
    done
    for tool in "$@"; do
        echo "$tool $(tr ' ' '\n' <<<"${wall[$tool]}" | grep . | median)" \
            "$(tr ' ' '\n' <<<"${cpu[$tool]}" | grep . | median) ${memory[$tool]}"
    done
}

data=$(mktemp -d "$source_place/orbisk-bench-data-XXXXXX")
same=$(mktemp -d "$source_place/orbisk-bench-out-XXXXXX")
other=$(mktemp -d "$other_place/orbisk-bench-out-XXXXXX")
cleanup=("rm -rf '$data' '$same' '$other'" "${cleanup[@]}")
make_data "$data"

echo "## Copying with orbisk-cli"
echo
echo "\`bench/transfer.sh\`: ${small_files} files of 200 B-8 KiB in 1,000 folders, and ${large_files} files of"
echo "${large_mib} MiB of random data, copied by \`orbisk-cli copy\`, \`cp -a\` and \`rsync -a\` from"
echo "$(df --output=fstype "$source_place" | tail -1) ($source_place) to the same file system and to"
echo "$(df --output=fstype "$other_place" | tail -1) ($other_place); medians of $runs alternating runs, warm caches, fresh"
echo "destinations, dirty pages written back before each run. Ratio = other tool's wall time / ours"
echo "(1.00 or more: we are no slower). CPU = user + system seconds."
echo "Kernel $(uname -r), $(nproc) cores, load average before the run: $(cut -d' ' -f1-3 /proc/loadavg)."
echo
echo "| data | to | orbisk-cli wall / CPU | peak memory | cp -a wall / CPU | ratio | rsync -a wall / CPU | ratio |"
echo "|---|---|---|---|---|---|---|---|"
for set in small large; do
    for place in same other; do
        work=$same tools=(orbisk cp)
        if [[ $place == other ]]; then work=$other tools=(orbisk cp rsync); fi
        declare -A w=() c=() m=()
        while read -r tool wall cpu kib; do
            w[$tool]=$wall c[$tool]=$cpu m[$tool]=$kib
        done < <(bench_set "$work" "$data/$set" "${tools[@]}")
        rsync_cells="– | –"
        [[ -n ${w[rsync]:-} ]] && rsync_cells="${w[rsync]} s / ${c[rsync]} s | $(ratio "${w[rsync]}" "${w[orbisk]}")"
        where=$([[ $place == same ]] && echo "same file system" || echo "$other_place")
        echo "| $set | $where | ${w[orbisk]} s / ${c[orbisk]} s | $((m[orbisk] / 1024)) MiB |" \
            "${w[cp]} s / ${c[cp]} s | $(ratio "${w[cp]}" "${w[orbisk]}") | $rsync_cells |"
        unset w c m
    done
done
