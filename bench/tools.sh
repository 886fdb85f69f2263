#!/usr/bin/env bash
# Times the folder tools against the tools a user would otherwise run, on the same data in the
# same run: orbisk-cli size against du -sb, orbisk-cli find against find -iname and fd, and
# orbisk-cli find --containing against grep -rlF and ripgrep. Commands take turns (A B C A B C
# ...) and medians are reported, wall and CPU (user + system) time; peak memory from time -f %M.
#
#   bench/tools.sh [BUILD_DIR]   environment: FILES (100000), TEXT_MB (300), RUNS (5), BENCH_DIR
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
cli=$build/bin/orbisk-cli
files=${FILES:-100000}
text_mb=${TEXT_MB:-300}
runs=${RUNS:-5}
base=${BENCH_DIR:-${TMPDIR:-/tmp}/orbisk-bench-tools}
tree=$base/tree-$files
text=$base/text-${text_mb}mb
[[ -x $cli ]] || { echo "missing $cli: build first (cmake --build $build --target orbisk-cli)" >&2; exit 1; }

# The data is made once and reused. The tree: 100 folders of 10 folders of files with sizes set by
# ftruncate (sparse, so quick to make; du -sb and we count logical sizes alike), a few hard
# links and links. The text: files of words, one in a hundred holding the needle once.
if [[ ! -f $tree.complete ]]; then
  echo "creating $files files in $tree"
  rm -rf "$tree" && mkdir -p "$tree"
  python3 - "$tree" "$files" <<'PY'
import os, random, sys
root, count = sys.argv[1], int(sys.argv[2])
random.seed(11)
exts = [".txt", ".jpg", ".pdf", ".TXT", ".md", ".c", ".h", ""]
per = max(1, count // 1000)
made = 0
for a in range(100):
    for b in range(10):
        folder = os.path.join(root, f"dir{a:03}", f"sub{b}")
        os.makedirs(folder, exist_ok=True)
        for i in range(per):
            if made >= count:
                break
            name = os.path.join(folder, f"file{made}{random.choice(exts)}")
            fd = os.open(name, os.O_CREAT | os.O_WRONLY | os.O_EXCL, 0o644)
            os.ftruncate(fd, random.randrange(0, 65536))
            os.close(fd)
            if made % 97 == 0:
                os.link(name, name + ".hardlink")
            if made % 89 == 0:
                os.symlink("..", name + ".up")
            made += 1
PY
  touch "$tree.complete"
fi
if [[ ! -f $text.complete ]]; then
  echo "creating $text_mb MB of text in $text"
  rm -rf "$text" && mkdir -p "$text"
  python3 - "$text" "$text_mb" <<'PY'
import os, random, sys
root, megabytes = sys.argv[1], int(sys.argv[2])
random.seed(5)
words = "alpha beta gamma delta epsilon zeta eta theta iota kappa lambda mu nu xi omicron pi rho sigma".split()
lines, size = [], 0
while size < (1 << 21):
    line = " ".join(random.choice(words) for _ in range(random.randrange(4, 16))) + "\n"
    lines.append(line)
    size += len(line)
pool = "".join(lines).encode()
per_file = 100 * 1024
for i in range(megabytes * 1024 * 1024 // per_file):
    folder = os.path.join(root, f"d{i % 50:02}")
    os.makedirs(folder, exist_ok=True)
    start = random.randrange(0, len(pool) - per_file)
    body = pool[start:start + per_file]
    if i % 100 == 0:
        cut = len(body) // 2
        body = body[:cut] + b"needle-in-the-haystack\n" + body[cut:]
    with open(os.path.join(folder, f"text{i}.log"), "wb") as out:
        out.write(body)
PY
  touch "$text.complete"
fi

median() { sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
seconds() {
  local out
  out=$(mktemp)
  /usr/bin/time -f '%e %U %S %M' -o "$out" "$@" >/dev/null 2>&1 || true
  awk '{ printf "%.3f %.3f %d\n", $1, $2 + $3, $4 }' "$out"
  rm -f "$out"
}

have() { command -v "$1" >/dev/null 2>&1; }
declare -A label
commands=()
add() { commands+=("$1"); label[$1]=$2; }
add size "orbisk-cli size --bytes"
add du "du -sb"
have gdu && add gdu "gdu -np"
add find "orbisk-cli find '*.txt'"
add gnufind "find -iname '*.txt'"
have fdfind && add fd "fdfind -u -g '*.txt'"
add grepo "orbisk-cli find --containing --case-sensitive"
add grep "grep -rlF"
have rg && add rg "rg -l -F -uu"

needle=needle-in-the-haystack
run_one() {
  case $1 in
    size) seconds "$cli" size --bytes "$tree" ;;
    du) seconds du -sb "$tree" ;;
    gdu) seconds gdu -np "$tree" ;;
    find) seconds "$cli" find "$tree" '*.txt' ;;
    gnufind) seconds find "$tree" -iname '*.txt' ;;
    fd) seconds fdfind -u -g '*.txt' "$tree" ;;
    grepo) seconds "$cli" find --containing "$needle" --case-sensitive "$text" ;;
    grep) seconds grep -rlF "$needle" "$text" ;;
    rg) seconds rg -l -F -uu "$needle" "$text" ;;
  esac
}

# The same answers first: a benchmark of different work would mean nothing.
echo "matches: orbisk find $("$cli" find "$tree" '*.txt' | wc -l), find $(find "$tree" -iname '*.txt' | wc -l)$(have fdfind && echo ", fd $(fdfind -u -g '*.txt' "$tree" | wc -l)")"
echo "content: orbisk $("$cli" find --containing "$needle" "$text" | wc -l), grep $(grep -rlF "$needle" "$text" | wc -l)$(have rg && echo ", rg $(rg -l -F -uu "$needle" "$text" | wc -l)")"
echo "size: orbisk $("$cli" size --bytes "$tree" | cut -d' ' -f1) bytes of files; du -sb $(du -sb "$tree" | cut -f1) (du adds folders and links)"

declare -A wall cpu mem
for c in "${commands[@]}"; do run_one "$c" >/dev/null; done # warm the caches for all alike
for ((r = 0; r < runs; r++)); do
  for c in "${commands[@]}"; do
    read -r w u m < <(run_one "$c")
    wall[$c]+="$w "
    cpu[$c]+="$u "
    mem[$c]+="$m "
  done
done
printf '%-36s %8s %8s %10s\n' "median of $runs" "wall s" "cpu s" "peak KB"
for c in "${commands[@]}"; do
  wall[$c]=$(tr ' ' '\n' <<<"${wall[$c]}" | grep . | median)
  cpu[$c]=$(tr ' ' '\n' <<<"${cpu[$c]}" | grep . | median)
  mem[$c]=$(tr ' ' '\n' <<<"${mem[$c]}" | grep . | median)
  printf '%-36s %8.3f %8.3f %10d\n' "${label[$c]}" "${wall[$c]}" "${cpu[$c]}" "${mem[$c]}"
done
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }
report() { echo "$1: wall $(ratio "${wall[$2]}" "${wall[$3]}"), cpu $(ratio "${cpu[$2]}" "${cpu[$3]}")"; }
report "size / du -sb" size du
report "find / find -iname" find gnufind
[[ -n ${label[fd]:-} ]] && report "find / fd" find fd
report "content / grep -rlF" grepo grep
[[ -n ${label[rg]:-} ]] && report "content / rg -l" grepo rg
