"""Runs Orvelin and other tools, its peers, in turn on the same files. Called by script/bench."""

import atexit
import os
import re
import shutil
import statistics
import subprocess
import sys
import time
from pathlib import Path

from card import Card, NoCard, stick

PAIRS = 5
quick = "--quick" in sys.argv
bench = Path("build/bench").resolve()
work = Path("build/tools").resolve() / "work/Orvelin.app/Contents/Linux/orvelin-work"
# In memory: otherwise a build, which waits until its files are on the disk, would be compared with
# tools that leave them to the kernel.
memory = Path("/dev/shm/orvelin-bench")
atexit.register(shutil.rmtree, memory, ignore_errors=True)


def shell(script):
    """A shell command that reads from $1 and writes to the folder $2."""
    return ["sh", "-ec", script, "sh"]


# All use 4:2:0 chroma subsampling, as Orvelin and cameras do.
BUILD = [work, "build"]
UNPACK = [work, "unpack"]
PACK = shell(f'exec "{work}" pack "$1" "$2/archive"')
DJPEG = shell(
    'cd "$1"; for f in */*; do djpeg -outfile /dev/null "$f"; done; '
    'for f in */*; do cp "$f" "$2"; done'
)
MOGRIFY = shell(
    'cd "$1"; exec mogrify -auto-orient -quality 90 -sampling-factor 2x2 -format jpg -path "$2" */*'
)
GM = shell(
    'cd "$1"; for f in */*; do printf \'convert "%s" -auto-orient -quality 90 -sampling-factor '
    '2x2 "%s"\\n\' "$f" "$2/${f##*/}"; done | gm batch -'
)
VIPS = shell(
    'cd "$1"; for f in */*; do '
    'vips copy "$f[autorotate]" "$2/${f##*/}[Q=90,subsample-mode=on]"; done'
)
CAT = shell('exec cat "$1"/*/* > /dev/null')
TAR_C = shell('exec tar -cf "$2/archive" -C "$1" .')
CP = shell('cp -r "$1"/* "$2"; exec sync -f "$2"')
UNSYNCED = shell(
    f'LD_PRELOAD="{bench}/liborvelin-unsynced.so" "{work}" build "$1" "$2"; exec sync -f "$2"'
)


def inputs(kind, count):
    """The folder of `count` input files, created if missing, and the count."""
    count = max(1, count // 10) if quick and kind != "large" else count
    folder = bench / "inputs" / f"{kind}-{count}"
    if not folder.exists():
        print(f"making {count} files: {kind}", file=sys.stderr)
        subprocess.run([bench / "orvelin-inputs", kind, str(count), folder], check=True)
    for path in folder.rglob("*"):  # fill the page cache
        if path.is_file():
            path.read_bytes()
    return folder, count


def run(command, source, expected, in_process=None, out=memory):
    """Seconds and peak memory in bytes of one run, which must create `expected` files in `out`."""
    shutil.rmtree(out, ignore_errors=True)
    out.mkdir(parents=True)
    os.sync()
    begin = time.perf_counter()
    process = subprocess.Popen([*command, source, out], stderr=subprocess.DEVNULL,
                               preexec_fn=in_process)
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.perf_counter() - begin
    process.returncode = status
    made = out / "DIGIFILM/dcim" if command in (BUILD, UNSYNCED) else out
    count = sum(path.is_file() for path in made.rglob("*"))
    if status != 0 or count != expected:
        sys.exit(f"{command} ended with {status} and left {count} files, not {expected}")
    return seconds, usage.ru_maxrss * 1024


def row(name, against, mine, theirs, ratio, limit, unit="s"):
    reached = "yes" if ratio <= limit else "NO"
    pair = "".join(" " * 11 if figure is None else f"{figure:8.3f} {unit:2}"
                   for figure in (mine, theirs))
    print(f"{name:44}{against:28}{pair}{ratio:9.2f}{limit:9.2f}  {reached}", flush=True)


def in_turn(name, command, source, expected, peers, pairs=PAIRS):
    """Runs the command and its peers in turn, prints a row per peer, returns the peak memory."""
    runs = [command] + [peer for _, peer, _ in peers]
    seconds = [[] for _ in runs]
    peak = 0
    for pair in range(pairs):
        order = range(len(runs)) if pair % 2 == 0 else reversed(range(len(runs)))
        for i in order:
            taken, bytes_ = run(runs[i], source, expected)
            seconds[i].append(taken)
            if i == 0:
                peak = max(peak, bytes_)
    for i, (against, _, limit) in enumerate(peers, 1):
        ratio = statistics.median(a / b for a, b in zip(seconds[0], seconds[i]))
        mine, theirs = statistics.median(seconds[0]), statistics.median(seconds[i])
        row(name, against, mine, theirs, ratio, limit)
    return peak


def cold_card(kind, name):
    """Rows for a build from a card, against the slower of reading the card and a cached build."""
    source, count = inputs(kind, 400 if quick else 40)  # 40 files in both cases
    card = Card(source, bench)
    photographs = sum(path.stat().st_size for path in source.rglob("*") if path.is_file())

    def build(*limits, out=memory):
        """Seconds of a build, and bytes read per byte of the photographs."""
        with card.inserted(*limits) as folder:
            before = card.bytes_read()
            seconds, _ = run(BUILD, folder, count, card.group.enter, out)
            return seconds, (card.bytes_read() - before) / photographs

    try:
        for speed in (20, 40):
            builds, bounds = [], []
            for _ in range(2 if quick else PAIRS):
                with card.inserted(speed) as folder:
                    reading, _ = run(CAT, folder, 0, card.group.enter)
                bounds.append(max(reading, run(BUILD, source, count)[0]))
                builds.append(build(speed))
            ratio = statistics.median(a / b for (a, _), b in zip(builds, bounds))
            mine, read = map(statistics.median, zip(*builds))
            row(f"{count} {name}, cold card, {speed} MB/s", "the slower of cat and memory", mine,
                statistics.median(bounds), ratio, 1.20)
            row("  bytes read", "bytes of the files", None, None, read, 1.01)
        if kind == "jfif":
            # Too little memory to cache the photographs between scan and copy. Files in /dev/shm
            # would count too, so build on the disk.
            shutil.rmtree(memory)
            _, read = build(40, 64, out=bench / "out")
            shutil.rmtree(bench / "out")
            row("  bytes read, with 64 MB of memory", "bytes of the files", None, None, read, 1.05)
    finally:
        card.remove()


def on_stick(kind, name):
    """Rows for a build onto a stick, against copying the finished DigiFilm onto it."""
    source, count = inputs(kind, 400 if quick else 40)  # 40 files in both cases
    run(BUILD, source, count)
    tree = bench / "tree"
    shutil.rmtree(tree, ignore_errors=True)
    shutil.copytree(memory, tree)
    files = sum(path.is_file() for path in tree.rglob("*"))
    # Nothing is written during the scan. That of JFIF files takes next to no time.
    scan = seconds_of_scan(source) if kind != "jfif" else 0
    for speed in (10, 40):
        builds, bounds = [], []
        with stick(bench, speed) as (folder, group):
            for _ in range(2 if quick else PAIRS):
                bound, _ = run(CP, tree, files, group.enter, folder / "out")
                if kind != "jfif":
                    bound = scan + max(bound, run(BUILD, source, count)[0])
                bounds.append(bound)
                builds.append(run(BUILD, source, count, group.enter, folder / "out")[0])
        ratio = statistics.median(a / b for a, b in zip(builds, bounds))
        row(f"{count} {name}, onto a stick, {speed} MB/s",
            "cp, sync" if kind == "jfif" else "scan + slower of cp, memory",
            statistics.median(builds), statistics.median(bounds), ratio, 1.10)
    shutil.rmtree(tree)


def seconds_of_scan(source):
    """Seconds until a build creates the order file, which it does after the scan."""
    shutil.rmtree(memory, ignore_errors=True)
    memory.mkdir()
    begin = time.perf_counter()
    with subprocess.Popen([*BUILD, source, memory], stderr=subprocess.DEVNULL):
        while not (memory / "DIGIFILM/digifilm.txt").exists():
            time.sleep(0.001)
        return time.perf_counter() - begin


def small_on_fast_disk():
    source, count = inputs("small", 1000)
    seconds = [[], []]
    with stick(bench) as (folder, _):
        for pair in range(PAIRS):
            for i, command in ((0, BUILD), (1, UNSYNCED))[::1 if pair % 2 == 0 else -1]:
                seconds[i].append(run(command, source, count, out=folder / "out")[0])
    ratio = statistics.median(a / b for a, b in zip(*seconds))
    row(f"{count} small ones, onto a fast disk", "without the flush, then sync",
        *map(statistics.median, seconds), ratio, 1.10)


def cost_per_picture():
    costs = [[], []]
    folders = [inputs("small", 20_000), inputs("small", 500)]
    for pair in range(PAIRS):
        for i in (0, 1) if pair % 2 == 0 else (1, 0):
            folder, count = folders[i]
            costs[i].append(1000 * run(BUILD, folder, count)[0] / count)
    ratio = statistics.median(a / b for a, b in zip(*costs))
    mine, theirs = map(statistics.median, costs)
    row(f"a picture of {folders[0][1]} small ones", f"of {folders[1][1]}", mine, theirs, ratio,
        1.10, "ms")


def archives():
    tree, count = inputs("tree", 10_000)
    archive, tar = bench / "inputs/tree.archive", bench / "inputs/tree.tar"
    subprocess.run([work, "pack", tree, archive], check=True)
    subprocess.run(["tar", "-cf", tar, "-C", tree, "."], check=True)
    tar_x = shell(f'exec tar -xf "{tar}" -C "$2"')
    pairs = 3 * PAIRS  # they are short
    in_turn(f"{count} files unpacked", UNPACK, archive, count, [("tar -xf", tar_x, 1.0)], pairs)
    in_turn(f"{count} files packed", PACK, tree, 1, [("tar -cf", TAR_C, 1.0)], pairs)


def psnr(picture, reference):
    """PSNR in decibels, by ImageMagick."""
    result = subprocess.run(
        ["compare", "-metric", "PSNR", picture, reference, "null:"], capture_output=True, text=True
    )
    return float(re.match(r"[\d.]+", result.stderr).group())


def quality():
    """Compares the quality and size of a few pictures with those of the peers."""
    peers = {
        "mogrify": 'convert "$1" -auto-orient -quality 90 -sampling-factor 2x2 "$2"',
        "gm": 'gm convert "$1" -auto-orient -quality 90 -sampling-factor 2x2 "$2"',
        "vips": 'vips copy "$1[autorotate]" "$2[Q=90,subsample-mode=on]"',
    }
    worst = {peer: [99.0, 0.0] for peer in peers}
    for kind, count, known in (("exif", 200, peers), ("tiff", 50, peers), ("png", 100, peers),
                               ("heic", 30, ["mogrify", "vips"])):
        source, all_of_them = inputs(kind, count)
        run(BUILD, source, all_of_them)
        sources = sorted(path for path in source.rglob("*") if path.is_file())[:4]
        for number, picture in enumerate(sources, 1):
            mine = memory / f"DIGIFILM/dcim/100k6230/{number:03}.jpg"
            reference, theirs = memory / "reference.png", memory / "theirs.jpg"
            convert = ["convert", picture, "-auto-orient", "-depth", "8", reference]
            subprocess.run(convert, check=True)
            decibels = psnr(mine, reference)
            for peer in known:
                subprocess.run([*shell(peers[peer]), picture, theirs], check=True)
                low, high = worst[peer]
                worst[peer] = [min(low, decibels - psnr(theirs, reference)),
                               max(high, mine.stat().st_size / theirs.stat().st_size)]
    for peer, (difference, size) in worst.items():
        row("PSNR below a peer's, worst (dB; < 0: above)", peer, None, None, -difference, 0.5)
        row("size to a peer's, worst case", peer, None, None, size, 1.1)


print(f"{'work':44}{'against':28}{'Orvelin':>11}{'peer':>11}{'ratio':>9}{'at most':>9}  reached")

folder, count = inputs("jfif", 200)
in_turn(f"{count} JFIF JPEGs, 12 MP", BUILD, folder, count,
        [("djpeg of each, cp of each", DJPEG, 0.70)])
folder, count = inputs("exif", 200)
peak = in_turn(f"{count} Exif JPEGs, 12 MP, a third turned", BUILD, folder, count,
               [("mogrify", MOGRIFY, 0.40), ("gm convert, in batch mode", GM, 0.85),
                ("vips, one process a file", VIPS, 0.60)])
try:
    cold_card("jfif", "JFIF JPEGs, 12 MP")
    cold_card("exif", "Exif JPEGs, 12 MP")
    on_stick("jfif", "JFIF JPEGs, 12 MP")
    on_stick("exif", "Exif JPEGs, 12 MP")
    small_on_fast_disk()
except NoCard as reason:
    print(f"no card or stick here: {reason}", flush=True)
for kind, name, count, limit in (("tiff", "TIFF", 50, 0.50), ("lzw", "TIFF, LZW", 50, 0.50),
                                 ("png", "PNG", 100, 1.00), ("heic", "HEIC", 30, 1.50)):
    folder, count = inputs(kind, count)
    in_turn(f"{count} {name}, 8 MP", BUILD, folder, count, [("mogrify", MOGRIFY, limit)])
cost_per_picture()
archives()

row("peak memory, 12 MP JPEGs (MB)", "-", None, None, peak / 1e6, 150)
folder, count = inputs("large", 1)
_, peak = run(BUILD, folder, count)
row("peak memory, a 100 MP JPEG, turned", "its decoded size", None, None,
    peak / (11_600 * 8_700 * 3), 1.5)
os.environ["QT_QPA_PLATFORM"] = "offscreen"
nanoseconds = [float(subprocess.check_output(bench / "orvelin-yield", stderr=subprocess.DEVNULL))
               for _ in range(PAIRS)]
row("yield with nothing waiting (ns)", "-", None, None, statistics.median(nanoseconds), 50)
quality()
