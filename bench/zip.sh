#!/usr/bin/env bash
# Times `orbisk-cli zip` against `zip -r -6` and `bsdtar --format zip`, and `orbisk-cli extract`
# against `unzip` and `bsdtar -x`, on the same data in the same run: a folder of text files and a
# tree of many small files. Commands alternate (A B C A B C ...), every run writes into a fresh
# place (outputs are deleted only after each set), and the medians of wall and CPU time are reported with each tool's peak memory and
# archive size. Prints a Markdown section for docs/PERFORMANCE.md.
#
#   bench/zip.sh [BUILD_DIR]   environment: RUNS (default 3), TEXT_MIB (default 300),
#                              SMALL_FILES (default 60000), PLACE (default /tmp)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
cli=$(realpath "$build/bin/orbisk-cli")
runs=${RUNS:-3}
text_mib=${TEXT_MIB:-300}
small_files=${SMALL_FILES:-60000}
place=${PLACE:-/tmp}
[[ -x "$cli" ]] || { echo "build $cli first" >&2; exit 1; }
for tool in zip unzip bsdtar python3; do
    command -v "$tool" >/dev/null || { echo "$tool is needed (scripts/setup installs it)" >&2; exit 1; }
done

median() { sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }

work=$(mktemp -d "$place/orbisk-bench-zip-XXXXXX")
trap 'rm -rf "$work"' EXIT

# Prints "wall-seconds cpu-seconds peak-KiB" of one command, run in folder.
measure() { # folder, command...
    local folder=$1 out
    shift
    out=$(mktemp)
    sync
    (cd "$folder" && /usr/bin/time -f "%e %U %S %M" -o "$out" "$@" >/dev/null 2>&1)
    awk '{ printf "%s %.2f %s\n", $1, $2 + $3, $4 }' "$out"
    rm -f "$out"
}

python3 - "$work/data" "$text_mib" "$small_files" <<'PY'
import os, random, sys
root, mib, count = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
random.seed(1)
words = ["".join(random.choice("abcdefghijklmnopqrstuvwxyz") for _ in range(random.randint(2, 9)))
         for _ in range(5000)]
text = os.path.join(root, "text")
os.makedirs(text)
written, n = 0, 0
while written < mib << 20:
    lines = [" ".join(random.choices(words, k=random.randint(4, 14))) for _ in range(random.randint(2000, 40000))]
    data = ("\n".join(lines) + "\n").encode()
    with open(os.path.join(text, "doc%04d.txt" % n), "wb") as f:
        f.write(data)
    written += len(data)
    n += 1
small = os.path.join(root, "small")
for i in range(count):
    folder = os.path.join(small, "d%03d" % (i % 600))
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, "f%06d.txt" % i), "w") as f:
        f.write(" ".join(random.choices(words, k=random.randint(10, 400))) + "\n")
PY

compress() { # tool, set, archive
    case $1 in
    orbisk) measure "$work/data" "$cli" zip "$2" "$3" ;;
    zip) measure "$work/data" zip -q -r -6 "$3" "$2" ;;
    bsdtar) measure "$work/data" bsdtar --format zip -cf "$3" "$2" ;;
    esac
}
extract() { # tool, archive, folder
    mkdir -p "$3"
    case $1 in
    orbisk) measure "$3" "$cli" extract "$2" . ;;
    unzip) measure "$3" unzip -q "$2" ;;
    bsdtar) measure "$3" bsdtar -xf "$2" ;;
    esac
}

echo "## ZIP archives with orbisk-cli"
echo
echo "\`bench/zip.sh\`: a folder of $(ls "$work/data/text" | wc -l) text files ($text_mib MiB) and a tree of $small_files small text"
echo "files (10–400 words) in 600 folders, on $(df --output=fstype "$place" | tail -1) ($place). Compressed by"
echo "\`orbisk-cli zip\`, \`zip -q -r -6\` and \`bsdtar --format zip\`; the archive \`zip\` made is then extracted by"
echo "\`orbisk-cli extract\`, \`unzip -q\` and \`bsdtar -xf\`. Medians of $runs alternating runs, warm caches, fresh"
echo "outputs, dirty pages written back before each run. Ratio = other tool's wall time / ours (above 1.00: we are"
echo "faster). CPU = user + system seconds; memory = peak resident set."
echo "Kernel $(uname -r), $(nproc) cores, load average before the run: $(cut -d' ' -f1-3 /proc/loadavg)."
for set in text small; do
    declare -A wall=() cpu=() memory=() size=()
    for ((round = 1; round <= runs; round++)); do
        for tool in orbisk zip bsdtar; do
            archive="$work/$set-$tool-$round.zip"
            read -r w c m < <(compress "$tool" "$set" "$archive")
            wall[$tool]+="$w " cpu[$tool]+="$c " memory[$tool]=$m size[$tool]=$(stat -c %s "$archive")
            [[ $tool == zip && $round == 1 ]] && cp "$archive" "$work/$set-peer.zip"
        done
    done
    for ((round = 1; round <= runs; round++)); do
        for tool in orbisk unzip bsdtar; do
            out="$work/out-$set-$tool-$round"
            read -r w c m < <(extract "$tool" "$work/$set-peer.zip" "$out")
            wall[x$tool]+="$w " cpu[x$tool]+="$c " memory[x$tool]=$m
        done
    done
    # Deleted only after the whole set: on ext4, creating many files soon after deleting many is
    # several times slower, and whichever tool ran next would pay for it.
    rm -rf "$work"/out-"$set"-* "$work"/"$set"-*-*.zip
    med() { tr ' ' '\n' <<<"${wall[$1]}" | grep . | median; }
    medc() { tr ' ' '\n' <<<"${cpu[$1]}" | grep . | median; }
    echo
    echo "### $([[ $set == text ]] && echo "$text_mib MiB of text" || echo "$small_files small files")"
    echo
    echo "| | wall s | CPU s | peak memory | archive | ratio to ours |"
    echo "|---|---|---|---|---|---|"
    for tool in orbisk zip bsdtar; do
        name=$([[ $tool == orbisk ]] && echo "orbisk-cli zip" || ([[ $tool == zip ]] && echo "zip -r -6" || echo "bsdtar --format zip"))
        echo "| $name | $(med $tool) | $(medc $tool) | $((memory[$tool] / 1024)) MiB | $((size[$tool] / 1024)) KiB" \
            "| $(ratio "$(med $tool)" "$(med orbisk)") |"
    done
    for tool in orbisk unzip bsdtar; do
        name=$([[ $tool == orbisk ]] && echo "orbisk-cli extract" || ([[ $tool == unzip ]] && echo "unzip" || echo "bsdtar -x"))
        echo "| $name | $(med x$tool) | $(medc x$tool) | $((memory[x$tool] / 1024)) MiB | | $(ratio "$(med x$tool)" "$(med xorbisk)") |"
    done
    unset wall cpu memory size
done
