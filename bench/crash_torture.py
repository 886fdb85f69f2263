#!/usr/bin/env python3
"""Kills orbisk-cli with SIGKILL at random moments of its file operations and checks what is left.

Scenarios: copy, move onto another volume, replace (copy --policy replace over an existing tree),
replace across volumes (move --policy replace, the old tree going to that volume's .Trash-UID) and
trash, each also undone and redone through --record. Every kill gets a fresh sandbox: a source tree
with big and small files, folders, links and a name that is not UTF-8, a private XDG_DATA_HOME (so
the home Trash is private) and, for moves, a folder on another volume (a private tmpfs when we may
mount one, else /dev/shm or another temporary folder; those scenarios are skipped without one). After the kill, and again
after a follow-up run of the same command, these must hold:

  - every file under a final name is complete: the size, content, mode and time of the original it
    stands for (no truncated or mixed file), and every link has its target;
  - every original entry is still at its source, at its destination or in a Trash, complete;
  - items that the operation treats as one (a replaced folder, an item undone or redone with one
    rename) are all-or-nothing;
  - the only debris are the hidden temporary entries (".NAME.ob-replacing-*", ".NAME.ob-copying-*",
    ".orbisk-undo-*", and a .trashinfo whose item never arrived or has left again), and every
    item in a Trash has its .trashinfo;
  - the follow-up run ends normally (completes, or refuses with a report), and when it says it
    completed, the disk shows the operation done.

Kill moments are uniform over the duration of an unkilled run of the same step, measured first.
The seed is printed; --seed S --replay SCENARIO:SEED runs one kill again and keeps its sandbox
(timing differs from run to run, so a replay lands near, not exactly at, the same moment).

  bench/crash_torture.py [--cli PATH] [--runs N] [--seed S] [--big-mib M] [--scenario NAME]...
  environment: CRASH_TORTURE_RUNS (default 10) when --runs is not given

Prints one line per scenario and "N passed, N failed" (kills) at the end. Exit status: 0 when
every kill passed, 1 when one failed, 77 (skipped) when orbisk-cli is missing.
"""

import argparse
import hashlib
import json
import os
import random
import re
import shutil
import signal
import stat
import subprocess
import sys
import tempfile
import time
import urllib.parse
from dataclasses import dataclass, field

SKIP = 77
DEBRIS = re.compile(r"^\..*\.ob-(replacing|copying)-[0-9a-f]{8}$|^\.orbisk-undo-[0-9a-f-]{36}$")


# ---------------------------------------------------------------- trees and manifests


def fill(path, rng, size):
    with open(path, "wb") as out:
        while size > 0:
            chunk = min(size, 1 << 20)
            out.write(rng.randbytes(chunk))
            size -= chunk


def build_tree(root, rng, big_mib, variant):
    """A tree with two big files, small files in nested folders, an empty folder, two links and a
    name that is not UTF-8. The "old" variant has the same names with other contents, plus one of
    its own, so that a mixed or misplaced file shows."""
    os.makedirs(os.path.join(root, "docs/deep/deeper"))
    os.makedirs(os.path.join(root, "photos"))
    os.makedirs(os.path.join(root, "empty"))
    fill(os.path.join(root, "big-a.bin"), rng, big_mib << 20)
    fill(os.path.join(root, "big-b.bin"), rng, (big_mib << 20) // 2 + 12345)
    for i in range(24):
        folder = ("docs", "docs/deep", "docs/deep/deeper")[i % 3]
        fill(os.path.join(root, folder, f"note-{i}.txt"), rng, 0 if i == 5 else rng.randrange(1, 64 << 10))
    for i in range(3):
        fill(os.path.join(root, "photos", f"IMG_{i}.jpg"), rng, rng.randrange(512 << 10, 2 << 20))
    fill(os.path.join(root, os.fsdecode(b"caf\xe9 menu.txt")), rng, 3000)
    if variant == "old":
        fill(os.path.join(root, "docs/only-in-old.txt"), rng, 777)
    os.symlink("docs/note-0.txt", os.path.join(root, "link"))
    os.symlink("nowhere/" + variant, os.path.join(root, "dangling"))
    # Fixed, distinct times, so that a file with the content but not the time of its original shows.
    for index, (folder, _, names) in enumerate(os.walk(root)):
        for name in names:
            path = os.path.join(folder, name)
            if not os.path.islink(path):
                os.utime(path, ns=(1_600_000_000_123_456_789 + index, 1_600_000_000_123_456_789 + index))


def digest(path):
    with open(path, "rb") as f:
        return hashlib.file_digest(f, "sha1").hexdigest()


def describe_entry(path):
    """What an entry is, as far as a copy must keep it: type, and for a file its size, content,
    permissions and modification time; for a link its target."""
    st = os.lstat(path)
    if stat.S_ISDIR(st.st_mode):
        return ("dir",)
    if stat.S_ISLNK(st.st_mode):
        return ("link", os.readlink(path))
    if stat.S_ISREG(st.st_mode):
        return ("file", st.st_size, stat.S_IMODE(st.st_mode), st.st_mtime_ns)
    return ("other", stat.S_IFMT(st.st_mode))


def manifest(root):
    """Relative path ("" for the root) -> entry description, with the content digest of files."""
    entries = {"": describe_entry(root)}
    for folder, dirs, files in os.walk(root):
        for name in dirs + files:
            path = os.path.join(folder, name)
            rel = os.path.relpath(path, root)
            entry = describe_entry(path)
            if entry[0] == "file":
                entry = entry + (digest(path),)
            entries[rel] = entry
    return entries


def same_entry(path, expected):
    """None when path holds what expected describes, else what differs."""
    actual = describe_entry(path)
    if actual[0] != expected[0]:
        return f"is a {actual[0]}, expected a {expected[0]}"
    if actual[0] == "link" and actual[1] != expected[1]:
        return f"link to {actual[1]!r}, expected {expected[1]!r}"
    if actual[0] == "file":
        size, mode, mtime = actual[1:4]
        if size != expected[1]:
            return f"truncated or grown: {size} bytes, expected {expected[1]}"
        if digest(path) != expected[4]:
            return "mixed: content differs from its original"
        if mode != expected[2]:
            return f"permissions {mode:o}, expected {expected[2]:o}"
        if mtime != expected[3]:
            return "modification time differs from its original"
    return None


# ---------------------------------------------------------------- a sandbox per kill


@dataclass
class Sandbox:
    top: str  # on the work volume: a/ (sources), b/ (destinations), xdg/ (home Trash), history/
    other: str | None  # on the other volume
    other_top: str | None  # that volume's mount point, where its Trash lives

    def path(self, place):
        return os.path.join(self.other if place == "o" else os.path.join(self.top, place), "src")

    @property
    def history(self):
        return os.path.join(self.top, "history", "h.json")

    def env(self):
        env = dict(os.environ)
        env["XDG_DATA_HOME"] = os.path.join(self.top, "xdg")
        env["HOME"] = os.path.join(self.top, "home")
        env["LC_ALL"] = "C.UTF-8"
        return env

    def trash_folders(self):
        found = [(os.path.join(self.top, "xdg", "Trash"), None)]
        if self.other_top:
            found.append((os.path.join(self.other_top, f".Trash-{os.getuid()}"), self.other_top))
        return [(folder, top) for folder, top in found if os.path.isdir(folder)]


def make_sandbox(work, other, other_top, pristine, sources, existing):
    top = tempfile.mkdtemp(prefix="kill-", dir=work)
    for sub in ("a", "b", "xdg", "home", "history"):
        os.mkdir(os.path.join(top, sub))
    other_folder = tempfile.mkdtemp(prefix="kill-", dir=other) if other else None
    box = Sandbox(top, other_folder, other_top)
    for place, variant in list(sources.items()) + list(existing.items()):
        subprocess.run(["cp", "-a", os.path.join(pristine, variant), box.path(place)], check=True)
    return box


def remove_sandbox(box):
    for trash, top in box.trash_folders():
        if top:  # the other volume's Trash is shared: only what came from this sandbox goes
            for name, original, _, _ in trash_entries(trash, top):
                if original and original.startswith(box.other + "/"):
                    remove(os.path.join(trash, "files", name))
                    remove(os.path.join(trash, "info", name + ".trashinfo"))
    for folder in (box.top, box.other):
        if folder:
            subprocess.run(["chmod", "-R", "u+rwx", folder], stderr=subprocess.DEVNULL)
            shutil.rmtree(folder, ignore_errors=True)


def remove(path):
    if os.path.isdir(path) and not os.path.islink(path):
        shutil.rmtree(path, ignore_errors=True)
    elif os.path.lexists(path):
        os.unlink(path)


def trash_entries(trash, top):
    """(name, original absolute path or None, has item, has .trashinfo) for each name in a Trash."""
    files_folder, info_folder = os.path.join(trash, "files"), os.path.join(trash, "info")
    items = set(os.listdir(files_folder)) if os.path.isdir(files_folder) else set()
    infos = set()
    for info in os.listdir(info_folder) if os.path.isdir(info_folder) else []:
        if info.endswith(".trashinfo"):
            infos.add(info[: -len(".trashinfo")])
    result = []
    for name in sorted(items | infos):
        original = None
        if name in infos:
            with open(os.path.join(info_folder, name + ".trashinfo"), "rb") as f:
                for line in f.read().split(b"\n"):
                    if line.startswith(b"Path="):
                        original = os.fsdecode(urllib.parse.unquote_to_bytes(line[5:].decode("ascii", "replace")))
            if original and not original.startswith("/"):
                original = os.path.join(top, original)
        result.append((name, original, name in items, name in infos))
    return result


# ---------------------------------------------------------------- scenarios


@dataclass
class Rule:
    """What may stand at one place (a/src, b/src, o/src) and in the Trash entries that came from
    there: a subset of one of the manifests, or (exact) one of them whole."""

    variants: tuple
    exact: bool = False
    must_exist: bool = False


# In a done state: what a/src held when the step started. A move that was killed while removing its
# sources and is then run again moves what is left.
SOURCE = "source"


@dataclass
class Scenario:
    name: str
    sources: dict  # place -> tree variant laid out before the steps
    existing: dict  # place -> tree variant already at the destination
    setup: list  # unkilled steps, each a list of arguments with {a}/{b}/{o}/{h} placeholders
    step: list  # the step that is killed, then run again as the follow-up
    rules: dict  # place -> Rule
    coverage: list  # (variant, places): every entry of the variant complete at one of the places
    done: dict  # place -> variant, SOURCE or None (absent): the disk once the step completed
    other_volume: bool = False
    notes: list = field(default_factory=list)


def scenarios():
    copy = ["copy", "--record", "{h}", "{a}", "{b}"]
    move = ["move", "--record", "{h}", "{a}", "{o}"]
    replace = ["copy", "--policy", "replace", "--record", "{h}", "{a}", "{b}"]
    replace_move = ["move", "--policy", "replace", "--record", "{h}", "{a}", "{o}"]
    trash = ["trash", "--record", "{h}", "{trash}"]
    undo = ["undo", "--record", "{h}"]
    redo = ["redo", "--record", "{h}"]
    new, old = "new", "old"

    def family(name, op, sources, existing, rules_op, rules_back, coverage, done, undone, other=False):
        return [
            Scenario(name, sources, existing, [], op, rules_op, coverage, done, other),
            Scenario("undo " + name, sources, existing, [op], undo, rules_back, coverage, undone, other),
            Scenario("redo " + name, sources, existing, [op, undo], redo, rules_back, coverage, done, other),
        ]

    # A copy makes its folder under the final name and fills it; undo and redo move it whole.
    copy_rules = {"a": Rule((new,), exact=True, must_exist=True), "b": Rule((new,))}
    copy_back = {"a": Rule((new,), exact=True, must_exist=True), "b": Rule((new,), exact=True)}
    move_rules = {"a": Rule((new,)), "o": Rule((new,))}
    replace_rules = {"a": Rule((new,), exact=True, must_exist=True), "b": Rule((new, old), exact=True)}
    # Across volumes the replaced tree goes to that volume's Trash; undo copies the new one back and
    # deletes it there, so it may be half gone.
    replace_move_rules = {"a": Rule((new,)), "o": Rule((new, old), exact=True)}
    replace_move_back = {"a": Rule((new,)), "o": Rule((new, old))}
    trash_rules = {"a": Rule((new,))}
    return (
        family("copy", copy, {"a": new}, {}, copy_rules, copy_back,
               [(new, ["a"])], {"a": new, "b": new}, {"a": new, "b": None})
        + family("move across volumes", move, {"a": new}, {}, move_rules, move_rules,
                 [(new, ["a", "o"])], {"a": None, "o": SOURCE}, {"a": new, "o": None}, other=True)
        + family("replace", replace, {"a": new}, {"b": old}, replace_rules, replace_rules,
                 [(new, ["a"]), (old, ["b"])], {"a": new, "b": new}, {"a": new, "b": old})
        + family("replace across volumes", replace_move, {"a": new}, {"o": old}, replace_move_rules,
                 replace_move_back, [(new, ["a", "o"]), (old, ["o"])], {"a": None, "o": SOURCE}, {"a": new, "o": old},
                 other=True)
        + family("trash", trash, {"a": new}, {}, trash_rules, trash_rules,
                 [(new, ["a"])], {"a": None}, {"a": new})
    )


def trash_items(box, tree):
    """Every entry of the tree, deepest first and the tree itself last: many trash calls in one run.
    Taken from the manifest, so that the follow-up run names the same items."""
    root = box.path("a")
    order = sorted(tree, key=lambda rel: (-(rel.count("/") + 1 if rel else 0), rel))
    return [os.path.join(root, rel) if rel else root for rel in order]


def arguments(step, box, tree):
    values = {"{a}": box.path("a"), "{b}": os.path.dirname(box.path("b")), "{h}": box.history,
              "{o}": box.other or ""}
    result = []
    for word in step:
        if word == "{trash}":
            result += trash_items(box, tree)
        else:
            result.append(values.get(word, word))
    return result


# ---------------------------------------------------------------- the checks


class Check:
    """Walks a sandbox and collects the broken invariants; debris and notes are counted apart."""

    def __init__(self, box, scenario, manifests):
        self.box, self.scenario, self.manifests = box, scenario, manifests
        self.violations, self.debris, self.notes = [], [], []
        self.present = {}  # (place, variant) -> set of relative paths found complete

    def run(self):
        observed = {place: [] for place in self.scenario.rules}  # place -> [(rel prefix, path)]
        for place in self.scenario.rules:
            if os.path.lexists(self.box.path(place)):
                observed[place].append(("", self.box.path(place)))
            elif self.scenario.rules[place].must_exist:
                self.violations.append(f"{place}/src is gone")
        self.read_trash(observed)
        for place, seen in observed.items():
            for prefix, path in seen:
                self.check_item(place, prefix, path)
        self.check_coverage()
        self.check_areas()
        self.check_history()
        return self

    def read_trash(self, observed):
        for trash, top in self.box.trash_folders():
            for name, original, has_item, has_info in trash_entries(trash, top):
                where = os.path.join(trash, "files", name)
                if top is not None and not (original or "").startswith(self.box.other + "/"):
                    continue  # the other volume's Trash may hold items of other sandboxes
                if not has_item:
                    # The Trash's own order leaves this behind when a kill lands between its two
                    # steps: the info file is written before the item is renamed in, and removed
                    # after the item is renamed back out. An info file without its item names
                    # nothing, and Trash listings skip it, so it counts as debris.
                    self.debris.append(os.path.join(trash, "info", name + ".trashinfo"))
                    continue
                if not has_info:
                    self.violations.append(f"item in the Trash without its .trashinfo: {where}")
                    continue
                for place in self.scenario.rules:
                    root = self.box.path(place)
                    if original == root or original.startswith(root + "/"):
                        observed[place].append((os.path.relpath(original, root) if original != root else "", where))
                        break
                else:
                    self.violations.append(f"unexpected item in the Trash: {where} from {original}")

    def check_item(self, place, prefix, path):
        """One item at a place or in the Trash: each entry must be a complete entry of an allowed
        variant at the same relative path; an exact rule wants one variant whole."""
        rule = self.scenario.rules[place]
        found = {variant: set() for variant in rule.variants}
        for rel, entry_path in self.walk(path, prefix):
            matched = [v for v in rule.variants if rel in self.manifests[v]
                       and same_entry(entry_path, self.manifests[v][rel]) is None]
            if matched:
                for variant in matched:
                    found[variant].add(rel)
                    self.present.setdefault((place, variant), set()).add(rel)
                continue
            known = [v for v in rule.variants if rel in self.manifests[v]]
            if not known:
                self.violations.append(f"unexpected entry {entry_path}")
            else:
                why = same_entry(entry_path, self.manifests[known[0]][rel])
                self.violations.append(f"{entry_path}: {why}")
        if rule.exact and prefix == "":
            whole = [v for v in rule.variants if found[v] == set(self.manifests[v])]
            if not whole:
                best = max(rule.variants, key=lambda v: len(found[v]))
                self.violations.append(f"not all-or-nothing: {path} holds {len(found[best])} of the "
                                       f"{len(self.manifests[best])} entries of the {best} tree")
        elif prefix == "" and path == self.box.path(place):
            if not any(found[v] == set(self.manifests[v]) for v in rule.variants):
                self.notes.append(f"{place}/src incomplete")

    def walk(self, path, prefix):
        """(relative path, path) of path and everything in it; debris is counted, not descended."""
        yield prefix, path
        if not (os.path.isdir(path) and not os.path.islink(path)):
            return
        for name in sorted(os.listdir(path)):
            child = os.path.join(path, name)
            if DEBRIS.match(name):
                self.debris.append(child)
                continue
            yield from self.walk(child, os.path.join(prefix, name) if prefix else name)

    def check_coverage(self):
        for variant, places in self.scenario.coverage:
            have = set().union(*(self.present.get((p, variant), set()) for p in places))
            lost = sorted(set(self.manifests[variant]) - have)
            if lost:
                shown = ", ".join(repr(rel or ".") for rel in lost[:5]) + (" …" if len(lost) > 5 else "")
                self.violations.append(f"lost: {len(lost)} entries of the {variant} tree are at none of "
                                       f"{'/src, '.join(places)}/src nor in the Trash: {shown}")

    def check_areas(self):
        """Next to the items, only debris may appear."""
        areas = [os.path.join(self.box.top, "a"), os.path.join(self.box.top, "b")]
        areas += [self.box.other] if self.box.other else []
        for area in areas:
            for name in os.listdir(area):
                path = os.path.join(area, name)
                if name == "src":
                    continue
                if DEBRIS.match(name):
                    self.debris.append(path)
                else:
                    self.violations.append(f"unexpected entry {path}")

    def check_history(self):
        history = self.box.history
        if os.path.exists(history):
            try:
                with open(history, "rb") as f:
                    json.load(f)
            except ValueError as error:
                self.violations.append(f"undo history unreadable: {error}")

    def check_done(self, source):
        """The disk once the step completed: the places hold their variant whole, or nothing;
        source is the manifest of a/src taken before the step."""
        for place, variant in self.scenario.done.items():
            path = self.box.path(place)
            if variant is None:
                if os.path.lexists(path):
                    self.violations.append(f"said done, but {place}/src is still there")
                continue
            expected = source if variant == SOURCE else self.manifests[variant]
            if (difference := manifest_matches(path, expected)) is not None:
                self.violations.append(f"said done, but {place}/src is not the whole {variant} tree: {difference}")
        return self


def source_snapshot(box):
    return manifest(box.path("a")) if os.path.lexists(box.path("a")) else None


def manifest_matches(path, expected):
    if expected is None:
        return "there was no source"
    if not os.path.lexists(path):
        return "missing"
    actual = manifest(path)
    if set(actual) != set(expected):
        return f"{len(set(expected) - set(actual))} entries missing, {len(set(actual) - set(expected))} extra"
    for rel, entry in expected.items():
        if entry[0] != "dir" and actual[rel] != entry:
            return f"{rel} differs"
    return None


# ---------------------------------------------------------------- running


@dataclass
class Outcome:
    passed: int = 0
    failed: int = 0
    before_kill: int = 0  # kills that came after the process had ended by itself
    debris_after_kill: int = 0  # kills that left hidden temporary entries
    debris_kept: int = 0  # ... which were still there after the follow-up run
    notes: dict = field(default_factory=dict)
    failures: list = field(default_factory=list)


class Torture:
    def __init__(self, options, work, other, other_top):
        self.options, self.work, self.other, self.other_top = options, work, other, other_top
        self.pristine = os.path.join(work, "pristine")
        os.mkdir(self.pristine)
        rng = random.Random(options.seed)
        for variant in ("new", "old"):
            build_tree(os.path.join(self.pristine, variant), rng, options.big_mib, variant)
        self.manifests = {v: manifest(os.path.join(self.pristine, v)) for v in ("new", "old")}

    def command(self, box, step):
        return [self.options.cli] + arguments(step, box, self.manifests["new"])

    def run_cli(self, box, step, timeout):
        return subprocess.run(self.command(box, step), env=box.env(), stdin=subprocess.DEVNULL,
                              capture_output=True, timeout=timeout, start_new_session=True)

    def prepare(self, scenario):
        box = make_sandbox(self.work, self.other, self.other_top, self.pristine, scenario.sources, scenario.existing)
        for step in scenario.setup:
            done = self.run_cli(box, step, 300)
            if done.returncode != 0:
                raise RuntimeError(f"setup step {' '.join(step)} failed: {done.stderr.decode(errors='replace')}")
        return box

    def calibrate(self, scenario):
        """Runs the step unkilled twice; returns the shorter wall time (so that few kills come after
        a faster run ended) and any broken invariants."""
        durations, problems = [], []
        for _ in range(2):
            box = self.prepare(scenario)
            source = source_snapshot(box)
            started = time.monotonic()
            done = self.run_cli(box, scenario.step, 300)
            durations.append(time.monotonic() - started)
            if done.returncode != 0:
                problems.append(f"unkilled run exited {done.returncode}: {done.stderr.decode(errors='replace')}")
            check = Check(box, scenario, self.manifests).run().check_done(source)
            problems += check.violations + [f"debris: {path}" for path in check.debris]
            remove_sandbox(box)
        return min(durations), problems

    def kill_once(self, scenario, seed, duration, outcome):
        delay = random.Random(seed).random() * duration
        box = self.prepare(scenario)
        process = subprocess.Popen(self.command(box, scenario.step), env=box.env(), stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
        time.sleep(delay)
        if process.poll() is not None:
            outcome.before_kill += 1
        else:
            process.send_signal(signal.SIGKILL)
        process.wait()

        check = self.check(box, scenario, outcome, "after the kill")
        problems = [f"after the kill: {v}" for v in check.violations]
        outcome.debris_after_kill += bool(check.debris)
        limit = max(60.0, duration * 20)
        source = source_snapshot(box)
        try:
            again = self.run_cli(box, scenario.step, limit)
            if again.returncode not in (0, 1) or b"internal error" in again.stderr:
                problems.append(f"follow-up run ended with status {again.returncode}: "
                                f"{again.stderr.decode(errors='replace').strip()}")
            check = self.check(box, scenario, outcome, "after the follow-up")
            if again.returncode == 0:
                check.check_done(source)
                if SOURCE in scenario.done.values() and source != self.manifests["new"]:
                    problems.append(f"the follow-up run moved what the killed one had left of a/src "
                                    f"({len(source or {})} of {len(self.manifests['new'])} entries) and said done; "
                                    f"the rest is gone from a/src and missing from o/src")
            problems += [f"after the follow-up run (status {again.returncode}): {v}" for v in check.violations]
            outcome.debris_kept += bool(check.debris)
        except subprocess.TimeoutExpired:
            problems.append(f"follow-up run still running after {limit:.0f} s")

        if problems:
            outcome.failed += 1
            outcome.failures.append((seed, delay, box.top, problems))
        else:
            outcome.passed += 1
        if not problems or not self.options.keep:
            remove_sandbox(box)

    def check(self, box, scenario, outcome, stage):
        check = Check(box, scenario, self.manifests).run()
        for note in set(check.notes):
            key = f"{note} {stage}"
            outcome.notes[key] = outcome.notes.get(key, 0) + 1
        return check


def find_other_volume(work, wanted):
    """A folder on a volume other than work's, and that volume's mount point: a private tmpfs when
    we may mount one, else /dev/shm; (None, None, None) when there is none. The third value is the
    mount to undo at the end."""
    device = os.stat(work).st_dev
    if wanted:
        return (wanted, mount_point_of(wanted), None) if os.stat(wanted).st_dev != device else (None, None, None)
    if os.geteuid() == 0 and shutil.which("mount"):
        point = os.path.join(work, "other-volume")
        os.mkdir(point)
        if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=2g", "orbisk-torture", point],
                          stderr=subprocess.DEVNULL).returncode == 0:
            return point, point, point
        os.rmdir(point)
    for candidate in ("/dev/shm", tempfile.gettempdir(), "/var/tmp"):
        if os.path.isdir(candidate) and os.access(candidate, os.W_OK) and os.stat(candidate).st_dev != device:
            return tempfile.mkdtemp(prefix="orbisk-crash-torture-", dir=candidate), mount_point_of(candidate), None
    return None, None, None


def mount_point_of(path):
    path = os.path.realpath(path)
    while not os.path.ismount(path):
        path = os.path.dirname(path)
    return path


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    here = os.path.dirname(os.path.abspath(__file__))
    parser.add_argument("--cli", default=os.path.join(here, "..", "build", "bin", "orbisk-cli"))
    parser.add_argument("--runs", type=int, default=int(os.environ.get("CRASH_TORTURE_RUNS", "10")),
                        help="kills per scenario")
    parser.add_argument("--seed", type=int, default=random.randrange(1 << 31))
    parser.add_argument("--big-mib", type=int, default=24, help="size of the biggest file")
    parser.add_argument("--scenario", action="append", help="run only these (repeatable)")
    parser.add_argument("--except", dest="excluded", action="append", default=[],
                        help="leave these out (repeatable)")
    parser.add_argument("--replay", help="SCENARIO:SEED: one kill again, keeping its sandbox")
    parser.add_argument("--work", default=tempfile.gettempdir(), help="where sandboxes are made")
    parser.add_argument("--other", help="a folder on another volume (default: a private tmpfs, or /dev/shm)")
    parser.add_argument("--keep", action="store_true", help="keep the sandboxes of failed kills")
    options = parser.parse_args()
    if not os.access(options.cli, os.X_OK):
        print(f"skipped: no orbisk-cli at {options.cli} (build it, or pass --cli)")
        return SKIP
    options.cli = os.path.abspath(options.cli)

    chosen = scenarios()
    replay_seed = None
    if options.replay:
        name, _, seed = options.replay.rpartition(":")
        options.scenario, replay_seed, options.keep = [name], int(seed), True
    if options.scenario or options.excluded:
        chosen = [s for s in chosen if (not options.scenario or s.name in options.scenario)
                  and s.name not in options.excluded]
        if not chosen:
            print(f"no such scenario; known: {', '.join(s.name for s in scenarios())}", file=sys.stderr)
            return 2

    work = tempfile.mkdtemp(prefix="orbisk-crash-torture-", dir=options.work)
    other, other_top, mounted = find_other_volume(work, options.other)
    print(f"seed {options.seed}  ({len(chosen) if replay_seed is None else 1} scenarios, {options.runs} kills per scenario, biggest file {options.big_mib} MiB, "
          f"work {work}, other volume {other or 'none'})", flush=True)
    passed = failed = 0
    try:
        torture = Torture(options, work, other, other_top)
        for scenario in chosen:
            if scenario.other_volume and not other:
                print(f"{scenario.name:<28} skipped: no other volume to move to")
                continue
            outcome = Outcome()
            seeds = [replay_seed] if replay_seed is not None else [
                random.Random(f"{options.seed}:{scenario.name}:{i}").getrandbits(32) for i in range(options.runs)]
            duration = 0.0
            try:
                duration, problems = torture.calibrate(scenario)
                if problems:
                    outcome.failed += 1
                    outcome.failures.append(("unkilled", 0.0, "", problems))
                for seed in seeds:
                    torture.kill_once(scenario, seed, duration, outcome)
            except (RuntimeError, subprocess.TimeoutExpired) as error:
                outcome.failed += 1
                outcome.failures.append(("setup", 0.0, "", [str(error)]))
            report(options.seed, scenario, duration, len(seeds), outcome)
            passed += outcome.passed
            failed += outcome.failed
    finally:
        if mounted and options.keep:
            print(f"kept: {work} (the other volume is still mounted there: umount {mounted})")
        elif mounted:
            subprocess.run(["umount", mounted])
        if not options.keep:
            shutil.rmtree(work, ignore_errors=True)
            if other and not mounted:
                shutil.rmtree(other, ignore_errors=True)
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


def report(master_seed, scenario, duration, kills, outcome):
    extra = [f"{outcome.before_kill} came after it ended"] if outcome.before_kill else []
    if outcome.debris_after_kill:
        extra.append(f"hidden temporary entries after {outcome.debris_after_kill} kills, "
                     f"{outcome.debris_kept} still there after the follow-up")
    extra += [f"{text}: {count}" for text, count in sorted(outcome.notes.items())]
    verdict = "ok" if not outcome.failed else f"{outcome.failed} FAILED"
    print(f"{scenario.name:<28} {kills} kills within {duration * 1000:.0f} ms: {verdict}"
          + (f" ({'; '.join(extra)})" if extra else ""), flush=True)
    for seed, delay, top, problems in outcome.failures:
        replay = f"--seed {master_seed} --replay '{scenario.name}:{seed}'" if isinstance(seed, int) else seed
        print(f"  {replay} (kill at {delay * 1000:.1f} ms){' sandbox ' + top if top else ''}:")
        for problem in problems[:8]:
            print(f"    {problem}")
        if len(problems) > 8:
            print(f"    … and {len(problems) - 8} more")


if __name__ == "__main__":
    sys.exit(main())
