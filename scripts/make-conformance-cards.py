#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""make-conformance-cards.py [--build FOLDER] [--jobs N] [--only GLOB] [--list] [SUBJECT...]

Holds real players and devices to the contract, listens to them and, where they have a display, looks at them, and writes
docs/conformance: for each a card, as Markdown and as JSON, and the matrix of all cards that are there. Without a name: all
subjects. Each runs in a home, on a bus, a display, a sound
server and, where it is a device, a network of its own, and not as root. With --only some statements are tried, and what
comes of them is only shown.

Needs the packages of the tests, the packages that --list names, and a build with kelvo-test. A card takes from some
seconds to half an hour, mostly of waiting, so that several are made side by side.
"""
import argparse
import json
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass, field

ROOT = pathlib.Path(__file__).resolve().parents[1]
DOCS = ROOT / "docs" / "conformance"
CARDS = DOCS / "cards"
LONGEST = 3600  # seconds for one card
KEYFILE = "config/glib-2.0/settings/keyfile"
VERDICTS = {"holds": "yes", "does-not-hold": "**no**", "overclaimed": "**claimed**", "refused": "refused",
            "not-tried": "?"}


@dataclass
class Subject:
    """Something to be held to the contract."""
    name: str  # of its files
    title: str
    package: str  # of Debian; empty: ours
    command: list = field(default_factory=list)  # empty: it is a back end
    plugin: str = "mpris"
    renderer: str = "mpris:*"
    files: dict = field(default_factory=dict)  # path below the home -> text
    has_display: bool = False
    eye: str = ""  # where its videos are seen

    @property
    def is_device(self):
        return self.plugin == "upnp"

    def version(self):
        if not self.package:
            return "this tree"
        done = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", self.package], capture_output=True, text=True,
                              check=False)
        return done.stdout


# A network of one machine, on which its devices are found.
NETWORK = """ip link set lo up
ip link add net0 type veth peer name net1
ip address add 10.9.0.1/24 dev net0
ip link set net0 up
ip link set net1 up
"""
RYGEL = """[general]
ipv6=false
interface=net0
upnp-enabled=true
enable-transcoding=false
[Playbin]
enabled=true
title=Rygel
[MediaExport]
enabled=false
[Tracker3]
enabled=false
[MPRIS]
enabled=false
[GstLaunch]
enabled=false
[External]
enabled=false
[LMS]
enabled=false
"""
SCREEN = "1280x800"
ALL_OF_IT = "0,0,1280,800"
SUBJECTS = [
    Subject("gst-renderer", "KelvoGstRenderer", "", plugin="gst-renderer", renderer="KelvoGstRenderer", has_display=True,
            eye="auto"),
    Subject("simulator", "Simulator A", "", plugin="simulator", renderer="KelvoSimulatorA"),
    Subject("rygel", "Rygel", "rygel", ["rygel"], "upnp", "*", {"config/rygel.conf": RYGEL}),
    Subject("gmediarender", "gmediarender", "gmediarender",
            ["gmediarender", "-I", "net0", "-f", "gmediarender", "--gstout-audiosink=pulsesink"],
            "upnp", "*"),
    Subject("mpv", "mpv", "mpv-mpris", ["mpv", "--no-config", "--script=/usr/lib/mpv-mpris/mpris.so", "--ao=pulse",
                                        "--vo=x11", "--idle=yes", "--no-terminal"], has_display=True, eye=ALL_OF_IT),
    Subject("vlc", "VLC", "vlc-bin", ["vlc", "--intf=dummy"], has_display=True, eye=ALL_OF_IT),
    Subject("celluloid", "Celluloid", "celluloid", ["celluloid"], has_display=True, eye=ALL_OF_IT,
            files={KEYFILE: "[io/github/celluloid-player/celluloid]\nmpris-enable=true\nalways-use-floating-controls=false\n"}),
    Subject("rhythmbox", "Rhythmbox", "rhythmbox-plugins", ["rhythmbox"], has_display=True),
    Subject("strawberry", "Strawberry", "strawberry", ["strawberry"], has_display=True),
    Subject("clementine", "Clementine", "clementine", ["clementine"], has_display=True),
    Subject("totem", "Totem", "totem-plugins", ["totem"], has_display=True, eye=ALL_OF_IT),
    Subject("smplayer", "SMPlayer", "smplayer", ["smplayer"], has_display=True, eye=ALL_OF_IT),
    Subject("haruna", "Haruna", "haruna", ["haruna"], has_display=True, eye=ALL_OF_IT),
    Subject("dragon", "Dragon Player", "dragonplayer", ["dragon"], has_display=True, eye=ALL_OF_IT),
]


class House:
    """The surroundings of one subject, in a process group that ends with it."""

    def __init__(self, subject, home):
        self.subject = subject
        self.home = home
        self.processes = []

    def start(self, command, **options):
        log = open(self.home / f"{pathlib.Path(command[0]).name}.log", "w", encoding="utf-8")
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=log, stderr=log, **options)
        self.processes.append(process)
        return process

    def furnish(self):
        os.environ["PULSE_SERVER"] = f"unix:{self.home}/sound"
        self.start(["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
                    "-L", "module-null-sink sink_name=silence", "-L", f"module-native-protocol-unix auth-anonymous=1 socket={self.home}/sound"])
        if self.subject.has_display:
            ours, theirs = os.pipe()
            self.start(["Xvfb", "-displayfd", str(theirs), "-screen", "0", f"{SCREEN}x24", "-nolisten", "tcp"],
                       pass_fds=[theirs])
            os.close(theirs)
            with os.fdopen(ours) as display:
                os.environ["DISPLAY"] = ":" + display.readline().strip()
            self.start(["openbox", "--config-file", str(ROOT / "scripts" / "headless-openbox.xml")])
        if self.subject.command:
            self.start(self.subject.command)

    def leave(self):
        for process in reversed(self.processes):
            process.terminate()
            try:
                process.wait(5)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()


def inside(subject, program, only):
    """Runs within the surroundings: makes the card in the home and ends with kelvo-test's exit code."""
    home = pathlib.Path(os.environ["HOME"])
    for path, text in subject.files.items():
        file = home / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")
    house = House(subject, home)
    house.furnish()
    try:
        words = ["conform", "--on", subject.renderer, "--wait", "60s", "--json", home / "card.json", "--markdown",
                 home / "card.md", "--ear", "silence.monitor", *(["--eye", subject.eye] if subject.eye else [])]
        return subprocess.run([program, *words, *(["--only", only] if only else [])], stdin=subprocess.DEVNULL,
                              timeout=LONGEST, check=False).returncode
    finally:
        house.leave()


def surroundings(home, has_display):
    """The environment of a subject: nothing of the user's."""
    environment = {name: os.environ[name] for name in ("PATH", "LANG") if name in os.environ}
    folders = {"XDG_CONFIG_HOME": "config", "XDG_DATA_HOME": "data", "XDG_CACHE_HOME": "cache",
               "XDG_STATE_HOME": "state", "XDG_RUNTIME_DIR": "runtime", "XDG_MUSIC_DIR": "music"}
    for name, folder in folders.items():
        (home / folder).mkdir(mode=0o700)
        environment[name] = str(home / folder)
    if not has_display:
        environment["KELVO_VIDEO_SINK"] = "fakesink sync=true"
    return {**environment, "HOME": str(home), "LC_ALL": "C.UTF-8", "GSETTINGS_BACKEND": "keyfile",
            "KELVO_AUDIO_SINK": "pulsesink", "KELVO_UPNP_INTERFACE": "net0",
            "NO_AT_BRIDGE": "1", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "0"}


def without_folders(text):
    """Names of folders that are gone by now, and other in each run."""
    return re.sub(r"/tmp/[\w.-]+", "/tmp/...", text)


def make_card(subject, program, only):
    """Returns (the subject, an error, what was said)."""
    with tempfile.TemporaryDirectory(prefix=f"kelvo-card-{subject.name}-") as name:
        home = pathlib.Path(name)
        environment = surroundings(home, subject.has_display)
        environment["KELVO_PLUGINS"] = subject.plugin
        bus = (pathlib.Path("/usr/share/dbus-1/session.conf").read_text(encoding="utf-8")
               .replace("<standard_session_servicedirs />", "").replace("<standard_session_servicedirs/>", ""))
        (home / "bus.conf").write_text(bus, encoding="utf-8")
        command = []
        if subject.is_device:
            command += ["unshare", "--net", "sh", "-c", NETWORK + 'exec "$@"', "sh"]
        if os.geteuid() == 0:
            subprocess.run(["chown", "-R", "nobody:nogroup", home], check=True)
            command += ["setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"]
        command += ["dbus-run-session", f"--config-file={home}/bus.conf", "--", "/usr/bin/python3", "-B", __file__,
                    "--inside", "--program", program, subject.name, *(["--only", only] if only else [])]
        process = subprocess.Popen(command, env=environment, cwd=home, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.STDOUT, text=True, start_new_session=True)
        try:
            said, _ = process.communicate(timeout=LONGEST + 60)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            said, _ = process.communicate()
        card = home / "card.json"
        if not card.exists():
            logs = "".join(f"--- {log.name}\n{log.read_text(errors='replace')[-2000:]}" for log in home.glob("*.log") if log.stem != "pulseaudio")
            return subject, f"no card (exit code {process.returncode})", said + logs
        if not only:
            CARDS.mkdir(parents=True, exist_ok=True)
            found = json.loads(without_folders(card.read_text(encoding="utf-8")))
            found["subject"] = {"title": subject.title, "package": subject.package, "version": subject.version()}
            (CARDS / f"{subject.name}.json").write_text(json.dumps(found, indent=1, ensure_ascii=False) + "\n",
                                                        encoding="utf-8")
            text = without_folders((home / "card.md").read_text(encoding="utf-8"))
            (CARDS / f"{subject.name}.md").write_text(text, encoding="utf-8")
        return subject, "", said


def cell(text):
    return text.replace("|", "\\|")


def matrix(cards):
    """The Markdown of all cards: name -> card."""
    names = [subject.name for subject in SUBJECTS if subject.name in cards]
    lines = ["# How renderers keep the contract", "",
             "Written by `scripts/make-conformance-cards.py` from the cards beside it; [what the words mean](README.md). "
             "The players and devices are those of Debian, each driven through this tree's own back end: what is found "
             "may be the fault of either, or what the protocol between them cannot say.", "",
             "| renderer | version | of 100 tried, hold | " + " | ".join(key.replace("-", " ") for key in VERDICTS) + " |",
             "|---|---|---" + "|---" * len(VERDICTS) + "|"]
    for name in names:
        card = cards[name]
        counts = [card["counts"].get(key, 0) for key in VERDICTS]
        tried = sum(counts[:3])
        share = f"{100 * counts[0] / tried:.1f}" if tried else "-"
        lines.append(f"| [{cell(card['subject']['title'])}](cards/{name}.md) | {cell(card['subject']['version'])} | {share} | "
                     + " | ".join(str(count) for count in counts) + " |")
    verdicts = {name: {result["id"]: result["verdict"] for result in cards[name]["results"]} for name in names}
    sentences = {result["id"]: result["statement"] for name in names for result in cards[name]["results"]}
    odd = [ident for ident in sentences
           if any(verdicts[name].get(ident, "not-tried") != "holds" for name in names)]
    lines += came_out(cards)
    lines += ["", "## Statement by statement", "",
              f"The {len(sentences) - len(odd)} statements that hold on all of them are left out; "
              "[all of them](statements.md).", "",
              "| statement | " + " | ".join(names) + " |", "|---|" + "---|" * len(names)]
    for ident in odd:
        words = [VERDICTS[verdicts[name].get(ident, "not-tried")] for name in names]
        lines.append(f"| `{ident}` | " + " | ".join(words) + " |")
    return "\n".join(lines) + "\n"


def difference(row):
    """A cell: by how much what came out differs from what was said."""
    if row is None or row["said"] is None or row["came-out"] is None:
        return "" if row is None else "?"
    value = row["came-out"] - row["said"]
    text = {"s": f"{1000 * value:+.0f} ms", "dB": f"{value:+.1f} dB"}.get(row["unit"], f"{value:+g}")
    return f"**{text}**" if row["off"] else text


def came_out(cards):
    """The Markdown of what was heard and seen, beside what was said: name -> card."""
    rows = {name: {row["id"]: row for row in card.get("came-out", [])} for name, card in cards.items()}
    names = [subject.name for subject in SUBJECTS if rows.get(subject.name)]
    texts = {ident: row["what"] for name in names for ident, row in rows[name].items()}
    lines = ["", "## What came out, against what was said", "",
             "By how much what was heard and seen differs from what the renderer says; set in bold where that is more than it may "
             "be and than the measuring may be off. ? stands for what was not said or could not be measured: the cards say why.", "",
             "| | " + " | ".join(names) + " |", "|---|" + "---|" * len(names)]
    for ident, text in texts.items():
        cells = [difference(rows[name].get(ident)) for name in names]
        lines.append(f"| `{ident}` {cell(text)} | " + " | ".join(cells) + " |")
    return lines if names else []


def write_matrix():
    cards = {file.stem: json.loads(file.read_text(encoding="utf-8")) for file in sorted(CARDS.glob("*.json"))}
    (DOCS / "matrix.md").write_text(matrix(cards), encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build")
    parser.add_argument("--jobs", type=int, default=4)
    parser.add_argument("--only", default="")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--matrix", action="store_true", help="writes the matrix of the cards that are there, and no more")
    parser.add_argument("--inside", action="store_true", help=argparse.SUPPRESS)
    parser.add_argument("--program", help=argparse.SUPPRESS)
    parser.add_argument("subjects", nargs="*")
    arguments = parser.parse_args()
    known = {subject.name: subject for subject in SUBJECTS}
    unknown = set(arguments.subjects) - set(known)
    if unknown:
        parser.error(f"there is no subject {', '.join(sorted(unknown))}; there are {', '.join(known)}")
    chosen = [known[name] for name in arguments.subjects] or SUBJECTS
    if arguments.inside:
        return inside(chosen[0], arguments.program, arguments.only)
    if arguments.list:
        for subject in chosen:
            print(f"{subject.name:14} {subject.package or '-'}")
        return 0
    if arguments.matrix:
        write_matrix()
        return 0
    program = arguments.build.resolve() / "bin" / "kelvo-test"
    failed = 0
    with ThreadPoolExecutor(arguments.jobs) as pool:
        for subject, error, said in pool.map(lambda one: make_card(one, str(program), arguments.only), chosen):
            print(f"==> {subject.title}: {error or said.strip().splitlines()[-1]}", flush=True)
            if error or arguments.only:
                print(said, flush=True)
            failed += bool(error)
    if not arguments.only:
        write_matrix()
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
