#!/usr/bin/env bash
# Times copying through FileCopier (bench/copy_files) against cp -a, and rsync -a for many small
# files, on the same data in the same run. Every timed run gets a fresh destination; the commands
# alternate (A B C A B C ...) and medians are reported. Prints a Markdown section for
# docs/PERFORMANCE.md.
#
#   bench/copy.sh [BUILD_DIR]      environment: RUNS (default 5), BIG_MIB (default 1024),
#                                  SMALL_FILES (default 20000), PLACES (default "/tmp /dev/shm")
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
copier=$(realpath "$build/bin/copy_files")
runs=${RUNS:-5}
big_mib=${BIG_MIB:-1024}
small_files=${SMALL_FILES:-20000}
places=${PLACES:-/tmp /dev/shm}
[[ -x "$copier" ]] || { echo "build $copier first" >&2; exit 1; }

seconds() { # command... → elapsed wall-clock seconds on stdout
    local start=$EPOCHREALTIME
    "$@" >/dev/null
    local end=$EPOCHREALTIME
    awk -v a="$start" -v b="$end" 'BEGIN { printf "%.3f\n", b - a }'
}
median() { sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }

make_data() { # folder: one large random file, and small files of 1-8 KiB in 200 folders
    local root=$1
    mkdir -p "$root/large" "$root/small"
    head -c "$((big_mib << 20))" /dev/urandom >"$root/large/big.bin"
    python3 - "$root/small" "$small_files" <<'PY'
import os, random, sys
root, count = sys.argv[1], int(sys.argv[2])
random.seed(1)
for i in range(count):
    folder = os.path.join(root, "d%03d" % (i % 200))
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, "f%05d.txt" % i), "wb") as f:
        f.write(random.randbytes(random.randint(1024, 8192)))
PY
}

# Runs every tool RUNS times on one data set, alternating, and prints "tool median" lines.
bench_set() { # work folder, data folder, tools...
    local work=$1 data=$2
    shift 2
    declare -A times=()
    for ((round = 1; round <= runs; round++)); do
        for tool in "$@"; do
            local target="$work/out-$tool-$round"
            case $tool in
            orbisk) t=$(seconds "$copier" "$data" "$target") ;;
            cp) t=$(seconds cp -a "$data" "$target") ;;
            rsync) t=$(seconds rsync -a "$data/" "$target") ;;
            esac
            times[$tool]+="$t "
            # A large copy is cheap to delete and would fill the volume; many small files are
            # deleted only after the group, since creating right after deleting is slow on ext4.
            [[ $data == */large ]] && rm -rf "$target"
        done
    done
    for tool in "$@"; do
        echo "$tool $(tr ' ' '\n' <<<"${times[$tool]}" | grep . | median)"
    done
}

echo "## Copying files"
echo
echo "\`bench/copy.sh\`: ${big_mib} MiB of random data in one file, and ${small_files} files of 1-8 KiB in"
echo "200 folders, copied with metadata by \`copy_files\` (FileCopier) and by \`cp -a\` / \`rsync -a\`;"
echo "median of $runs alternating runs with warm caches, each into a fresh destination."
echo "Ratio = other tool's time / ours (above 1: we are faster). Kernel $(uname -r), $(nproc) cores."
echo
echo "| place | data | FileCopier | cp -a | ratio | rsync -a | ratio |"
echo "|---|---|---|---|---|---|---|"
done_work=()
trap 'rm -rf "${done_work[@]}" "${work:-}"' EXIT
for place in $places; do
    work=$(mktemp -d "$place/orbisk-bench-copy-XXXXXX")
    make_data "$work/data"
    fs=$(stat -f -c %T "$place")
    declare -A result=()
    while read -r tool t; do result[large-$tool]=$t; done < <(bench_set "$work" "$work/data/large" orbisk cp)
    while read -r tool t; do result[small-$tool]=$t; done < <(bench_set "$work" "$work/data/small" orbisk cp rsync)
    echo "| $place ($fs) | 1 × ${big_mib} MiB | ${result[large-orbisk]} s | ${result[large-cp]} s |" \
        "$(ratio "${result[large-cp]}" "${result[large-orbisk]}") | – | – |"
    echo "| $place ($fs) | ${small_files} small | ${result[small-orbisk]} s | ${result[small-cp]} s |" \
        "$(ratio "${result[small-cp]}" "${result[small-orbisk]}") | ${result[small-rsync]} s |" \
        "$(ratio "${result[small-rsync]}" "${result[small-orbisk]}") |"
    done_work+=("$work")
done
# Removing a few hundred thousand files takes minutes on some ext4 volumes: only after the table.
echo "removing the benchmark folders" >&2
rm -rf "${done_work[@]}"
