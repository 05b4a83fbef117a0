#!/usr/bin/env python3
"""Quick open side by side with the tools people use instead, in one run, with the ratios.

Needs ripgrep, fd-find and fzf, which only this benchmark uses (Debian: apt-get install ripgrep
fd-find fzf), and a release build of vx.

    bench/quick_open_peers.py [--vx build/release/src/app/vx] [--files 100000] [--runs 5]

Cases:
  1. Indexing a generated tree of --files files (a source tree's shape: nested modules, words for
     names, a dozen extensions; kept in the temporary folder between runs):
     `vx quick-open ROOT --list files` against `rg --files ROOT` and `fdfind --type f . ROOT`.
  2. The same on /usr.
  3. One query over the generated tree's paths. vx's search alone (the index built, as in the
     editor; `--timing` reports it) against `fzf --filter QUERY` reading the path list, and the
     whole job, index and query from nothing, against `rg --files | fzf --filter`.
  4. Memory: vx's peak resident size (its own VmHWM, printed by --timing) on the generated tree
     less that on a 100-file tree, per indexed path (files and folders), beyond the path text.
Measured on the 2-core development machine while other builds ran (load average about 6),
100,000 files, CPU / wall in ms:
  indexing   vx 173 / 263; rg --files 275 / 416; fdfind 246 / 375
  /usr       vx 278 / 483; rg 488 / 715; fdfind 423 / 653 (vx leaves out what its filter drops)
  one query  vx search 8.8 / 12.9; fzf --filter 39 / 63
  whole job  vx 179 / 273; rg --files | fzf --filter 405 / 567
  memory     59 bytes a path beyond the path text (the lower-cased copy included)
Times are medians over --runs; CPU is user + system of the process and its threads (the peers use
every core, as vx does), wall is elapsed. A ratio below 1 means vx took less.
"""
import argparse
import os
import random
import statistics
import subprocess
import sys
import tempfile
import time

WORDS = ["src", "lib", "core", "util", "view", "model", "controller", "server", "client", "test",
         "string", "parse", "render", "layout", "cache", "buffer", "network", "http", "json", "config",
         "widget", "event", "thread", "memory", "stream", "index", "search", "query", "table", "file",
         "window", "text", "editor", "plugin", "color", "theme", "syntax", "token", "scope", "match"]
EXTENSIONS = [".c", ".h", ".cpp", ".hpp", ".py", ".js", ".ts", ".go", ".rs", ".md", ".json", ".txt"]


def make_tree(root, count):
    marker = os.path.join(root, ".complete")
    if os.path.exists(marker):
        return
    rng = random.Random(12345)
    made = 0
    while made < count:
        depth = rng.randint(1, 5)
        parts = [rng.choice(WORDS)]
        for _ in range(depth):
            parts.append(rng.choice(WORDS) + ("_" + rng.choice(WORDS) if rng.random() < 0.33 else ""))
        folder = os.path.join(root, *parts)
        os.makedirs(folder, exist_ok=True)
        for f in range(rng.randint(5, 44)):
            if made >= count:
                break
            name = rng.choice(WORDS) + ("_" + rng.choice(WORDS) if rng.random() < 0.5 else "")
            name += str(f) if rng.random() < 0.25 else ""
            if rng.random() < 0.33:
                name = name[0].upper() + name[1:]
            path = os.path.join(folder, name + rng.choice(EXTENSIONS))
            if not os.path.exists(path):
                open(path, "w").close()
                made += 1
    open(marker, "w").close()


def run_once(argv, shell):
    """Wall and CPU seconds, peak resident KiB and output of one run (its own rusage, by wait4)."""
    with tempfile.TemporaryFile() as err:
        start = time.perf_counter()
        child = subprocess.Popen(argv, shell=shell, stdout=subprocess.PIPE, stderr=err)
        out = child.stdout.read()
        _, status, usage = os.wait4(child.pid, 0)
        wall = time.perf_counter() - start
        child.returncode = os.waitstatus_to_exitcode(status)
        err.seek(0)
        out += err.read()
    if child.returncode != 0:
        sys.exit("%s failed: %s" % (argv, out[-500:]))
    return wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss, out


def measure(argv, runs, shell=False):
    """Median wall and CPU seconds, the peak resident size (KiB) and the last output."""
    results = [run_once(argv, shell) for _ in range(runs)]
    return (statistics.median(r[0] for r in results), statistics.median(r[1] for r in results),
            max(r[2] for r in results), results[-1][3])


def row(label, wall, cpu, base=None):
    ratio = ""
    if base:
        ratio = "   vx/this: wall %.2f, CPU %.2f" % (base[0] / wall, base[1] / cpu)
    print("  %-44s wall %8.1f ms   CPU %8.1f ms%s" % (label, wall * 1e3, cpu * 1e3, ratio))


def indexing_case(title, vx, root, runs):
    print(title)
    ours = measure([vx, "quick-open", root, "--list", "files"], runs)
    rg = measure(["rg", "--files", root], runs)
    fd = measure(["fdfind", "--type", "f", ".", root], runs)
    row("vx quick-open --list files (%d paths)" % ours[3].count(b"\n"), ours[0], ours[1])
    row("rg --files (%d paths)" % rg[3].count(b"\n"), rg[0], rg[1], ours)
    row("fdfind --type f (%d paths)" % fd[3].count(b"\n"), fd[0], fd[1], ours)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    here = os.path.dirname(os.path.abspath(__file__))
    parser.add_argument("--vx", default=os.path.join(here, "..", "build", "release", "src", "app", "vx"))
    parser.add_argument("--files", type=int, default=100000)
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--query", default="contr/pars")
    args = parser.parse_args()
    for tool in ("rg", "fdfind", "fzf"):
        if subprocess.run(["which", tool], stdout=subprocess.DEVNULL).returncode != 0:
            sys.exit("%s is missing: apt-get install ripgrep fd-find fzf" % tool)
    vx = os.path.abspath(args.vx)
    os.environ["VX_LOG"] = "off"
    tree = os.path.join("/tmp", "vx-quick-open-bench-%d" % args.files)
    small = os.path.join("/tmp", "vx-quick-open-bench-100")
    print("making the trees (once) ...", file=sys.stderr)
    make_tree(tree, args.files)
    make_tree(small, 100)
    cores = os.cpu_count()

    indexing_case("1. indexing %d generated files (%d cores)" % (args.files, cores), vx, tree, args.runs)
    indexing_case("2. indexing /usr", vx, "/usr", args.runs)

    print("3. the query %r over %d paths" % (args.query, args.files))
    listing = subprocess.run([vx, "quick-open", tree, "--list", "files"], stdout=subprocess.PIPE, check=True).stdout
    list_file = os.path.join("/tmp", "vx-quick-open-bench-%d.paths" % args.files)
    with open(list_file, "wb") as f:
        f.write(listing)
    timed = subprocess.run([vx, "quick-open", tree, "--timing"] + [args.query] * max(args.runs, 5),
                           stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=True).stderr.decode()
    searches = [line.split("\t") for line in timed.splitlines() if line.startswith("search\t")]
    search_wall = statistics.median(float(s[2]) for s in searches) / 1e3
    search_cpu = statistics.median(float(s[3]) for s in searches) / 1e3
    fzf = measure("fzf --filter '%s' < %s" % (args.query, list_file), args.runs, shell=True)
    row("vx search alone (index in memory)", search_wall, search_cpu)
    row("fzf --filter, reading the list", fzf[0], fzf[1], (search_wall, search_cpu))
    whole = measure([vx, "quick-open", tree, args.query], args.runs)
    pipeline = measure("rg --files %s | fzf --filter '%s'" % (tree, args.query), args.runs, shell=True)
    row("vx quick-open ROOT QUERY (index + query)", whole[0], whole[1])
    row("rg --files | fzf --filter", pipeline[0], pipeline[1], whole)

    print("4. memory")

    def timing_lines(root):
        err = subprocess.run([vx, "quick-open", root, "--timing", "zzqqxxjj"], stdout=subprocess.DEVNULL,
                             stderr=subprocess.PIPE, check=True).stderr.decode()
        return {line.split("\t")[0]: line.split("\t")[1:] for line in err.splitlines()}

    big, little = timing_lines(tree), timing_lines(small)
    paths = int(big["index"][0]) + int(big["index"][1]) - int(little["index"][0]) - int(little["index"][1])
    folders = subprocess.run([vx, "quick-open", tree, "--list", "dirs"], stdout=subprocess.PIPE, check=True).stdout
    text = sum(len(line) for line in listing.splitlines()) + sum(len(line) for line in folders.splitlines())
    grown = (int(big["memory"][0]) - int(little["memory"][0])) * 1024
    print("  peak resident %s KiB with %s files and %s folders indexed, %s KiB with %s and %s" %
          (big["memory"][0], big["index"][0], big["index"][1], little["memory"][0], little["index"][0], little["index"][1]))
    print("  path text %.1f bytes a path; memory per path beyond it: %.1f bytes (target: under 200)" %
          (text / paths, (grown - text) / paths))

if __name__ == "__main__":
    main()
