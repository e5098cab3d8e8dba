#!/usr/bin/env python3
"""Applies deliberate faults to the engine one at a time, runs the test suite against each, and
reports which faults the suite catches (a failing run) and which it misses.

Each entry of faults.txt is four lines and a blank one:
    id: short-name
    file: path from the project root
    find: text that must occur exactly once in that file (\\n for a line break)
    put: what replaces it
Faults are applied in a git worktree of HEAD under build/mutation/ (or --work), so the working tree
is never touched; the worktree's x86_64 Debug build is incremental from one fault to the next.

    python3 scripts/mutation/mutate.py --check            # every fault applies exactly once
    python3 scripts/mutation/mutate.py [ID...] [-R REGEX] [--out FILE] [--rev REV] [--work DIR]
                                                          # run (all faults, or those named)
A case that fails is run once more before the fault counts as caught, since the platform fails a
few cases of a loaded machine on its own; the first case that fails for good ends the fault's run.
The test programs of the faulty file's own folder run first and the rest only if those pass, so a
verdict is the whole suite's while a caught fault costs only its folder's cases; the verdict line
names the case that failed. --rev runs against another commit's suite (default: HEAD), so a run
that takes hours is not moved onto a suite changed under it.
With --out, each verdict is appended to FILE as it comes and faults already there are skipped, so
a run cut short goes on where it stopped; several runs with the same --out and each its own --work
share the faults between them.
"""
import argparse
import fcntl
import os
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
FAULTS = os.path.join(ROOT, "scripts", "mutation", "faults.txt")

# The test programs that exercise each folder most directly (ctest names start with the program's).
FIRST = [
    ("engine/", "engine_tests|server_tests"), ("server/", "server_tests|engine_tests"),
    ("objects/", "objects_tests|server_tests"), ("base/", "base_tests"),
    ("dispatch/", "mediaplayer_tests"), ("display/", "display_tests"),
    ("inspect/", "inspect_tests|dshow_tests"), ("backends/dshow/", "dshow_tests"),
    ("backends/picture/", "picture_tests"), ("backends/quicktime/", "qt_tests"),
    ("qtml/", "qtml_tests"), ("backends/wmp/", "wmp_tests"), ("backends/cdda/", "cdda_tests"),
    ("cdsource/", "cdsource_tests|cdsource_server_tests"), ("cdimage/", "cdimage_tests"),
    ("hosts/", "hostparts_tests|hostrun_tests"),
]


def first_programs(path):
    for prefix, programs in FIRST:
        if path.startswith(prefix):
            return "^(%s)[.]" % programs
    return None


def read_faults():
    faults, entry = [], {}
    with open(FAULTS, encoding="utf-8") as f:
        for raw in f.read().split("\n") + [""]:
            line = raw.rstrip("\n")
            if line.startswith("#"):
                continue
            if not line.strip():
                if entry:
                    faults.append(entry)
                    entry = {}
                continue
            key, _, value = line.partition(": ")
            entry[key.strip()] = value.replace("\\n", "\n")
    return faults


def apply(fault, tree):
    path = os.path.join(tree, fault["file"])
    with open(path, encoding="utf-8") as f:
        text = f.read()
    count = text.count(fault["find"])
    if count != 1:
        return None, "find occurs %d times" % count
    return (path, text), None


def run(cmd, cwd, log):
    with open(log, "a") as out:
        return subprocess.call(cmd, cwd=cwd, stdout=out, stderr=subprocess.STDOUT)


def cmake_escape(name):
    return "".join("\\" + c if c in "\\.^$|()[]*+?{}" else c for c in name)


def case_regex(name):
    # A parameterised case's ctest name goes on with "  # GetParam() = ...".
    return "^%s$|^%s  #" % (cmake_escape(name), cmake_escape(name))


def failed_case(log, mark):
    """The first case ctest lists as failed in what the log gained since mark."""
    with open(log, encoding="utf-8", errors="replace") as f:
        f.seek(mark)
        lines = f.read().split("\n")
    for i, line in enumerate(lines):
        if line.startswith("The following tests FAILED:"):
            for entry in lines[i + 1:]:
                parts = entry.split(" - ")
                if len(parts) > 1:
                    return parts[1].split(" (")[0].split("  #")[0].strip()
    return "?"


def read_done(out):
    if not out or not os.path.exists(out):
        return set()
    with open(out, encoding="utf-8") as f:
        return {line.split()[0] for line in f if line.strip() and not line.startswith("#")}


def claim(out, fault_id):
    """Whether this run takes the fault. Runs that share --out share a list of claims beside it
    (in build/), so each fault goes to one of them; a claim of a run that has ended does not hold."""
    if not out:
        return True
    os.makedirs(os.path.join(ROOT, "build"), exist_ok=True)
    path = os.path.join(ROOT, "build", os.path.basename(out) + ".claims")
    with open(path, "a+", encoding="utf-8") as f:
        fcntl.flock(f, fcntl.LOCK_EX)
        f.seek(0)
        for line in f.read().split("\n"):
            parts = line.split()
            if len(parts) == 2 and parts[0] == fault_id and alive(int(parts[1])):
                return False
        if fault_id in read_done(out):
            return False
        f.write("%s %d\n" % (fault_id, os.getpid()))
        return True


def alive(pid):
    try:
        os.kill(pid, 0)
        return True
    except OSError:
        return False


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("ids", nargs="*")
    parser.add_argument("--check", action="store_true")
    parser.add_argument("-R", dest="regex", help="only the ctest cases matching this")
    parser.add_argument("--out", help="append verdicts here; skip the faults it already has")
    parser.add_argument("--rev", default="HEAD", help="the commit whose code and suite are run")
    parser.add_argument("--work", default=os.path.join(ROOT, "build", "mutation"),
                        help="the worktree, build and log of this run (two runs at once need two)")
    parser.add_argument("-j", dest="jobs", type=int, default=os.cpu_count() or 1, help="test cases at once")
    args = parser.parse_args()
    faults = [f for f in read_faults() if not args.ids or f["id"] in args.ids]

    if args.check:
        bad = 0
        for fault in faults:
            _, error = apply(fault, ROOT)
            if error:
                bad += 1
                print("%-28s %s: %s" % (fault["id"], fault["file"], error))
        print("%d faults, %d do not apply" % (len(faults), bad))
        return 1 if bad else 0

    work = os.path.abspath(args.work)
    tree = os.path.join(work, "tree")
    build = os.path.join(work, "x86_64-debug")
    log = os.path.join(work, "mutation.log")
    os.makedirs(work, exist_ok=True)
    if not os.path.isdir(tree):
        subprocess.check_call(["git", "worktree", "add", "--detach", tree, "HEAD"], cwd=ROOT)
    # The project's revision, not the worktree's own: the tree follows the commits made since it was added.
    head = subprocess.check_output(["git", "rev-parse", "--short", args.rev], cwd=ROOT, text=True).strip()
    subprocess.check_call(["git", "checkout", "--detach", "--force", head], cwd=tree)
    env_build = ("root=%s; source %s/scripts/build.sh && tessaly_build x86_64 Debug %s" % (tree, tree, build))
    ctest = "ctest -j %d --no-tests=error --repeat until-pass:2 --stop-on-failure" % args.jobs
    session = "cd %s && ./wine-run cmd /c exit >/dev/null 2>&1; ./wine-run --wineserver -p; " \
              "%s; rc=$?; ./wine-run --wineserver -k; exit $rc" % (build, "%s")
    def ctest_run(include, exclude, repeat=2, log_mark=None):
        command = ctest.replace("until-pass:2", "until-pass:%d" % repeat)
        if include:
            command += " -R '%s'" % include
        if exclude:
            command += " -E '%s'" % exclude
        return run(["xvfb-run", "-a", "-s", "-screen 0 1280x1024x24", "bash", "-c", session % command], build, log)

    def run_step(include, exclude, flaky):
        """The case that fails for good in this step, or None. A failing case is run again on its
        own, three times: a loaded machine fails some of the platform's cases by itself, and a case
        that passes alone did not catch the fault; it is left out and the step goes on."""
        for _ in range(4):
            skip = "|".join(([exclude] if exclude else []) + [case_regex(c) for c in flaky])
            mark = os.path.getsize(log)
            if ctest_run(include, skip or None) == 0:
                return None
            case = failed_case(log, mark)
            if case == "?" or ctest_run(case_regex(case), None, repeat=3) != 0:
                return case
            flaky.append(case)
        return None

    results = []
    for fault in faults:
        if not claim(args.out, fault["id"]):
            continue
        applied, error = apply(fault, tree)
        if error:
            results.append((fault["id"], "not applied: " + error, 0))
            continue
        path, text = applied
        with open(path, "w", encoding="utf-8") as f:
            f.write(text.replace(fault["find"], fault["put"]))
        start = time.time()
        with open(log, "a") as out:
            out.write("\n==== %s\n" % fault["id"])
        failed, flaky = "", []
        if run(["bash", "-c", env_build], tree, log) != 0:
            verdict = "DOES NOT BUILD"
        else:
            first = first_programs(fault["file"])
            if args.regex:
                steps = [(args.regex, None)]
            elif first:
                steps = [(first, None), (None, first)]
            else:
                steps = [(None, None)]
            verdict = "MISSED"
            for include, exclude in steps:
                failed = run_step(include, exclude, flaky)
                if failed:
                    verdict = "caught"
                    break
        with open(path, "w", encoding="utf-8") as f:
            f.write(text)
        results.append((fault["id"], verdict, time.time() - start))
        line = "%-34s %-24s %5.0f s  %s  %s" % (results[-1] + (head, failed or ""))
        if flaky:
            line += "  (failed under load, passed alone: %s)" % ", ".join(flaky)
        print(line, flush=True)
        if args.out:
            with open(args.out, "a", encoding="utf-8") as out:
                out.write(line + "\n")
    caught = sum(1 for r in results if r[1] == "caught")
    print("%d of %d faults caught; log: %s" % (caught, len(results), log))
    return 0


if __name__ == "__main__":
    sys.exit(main())
