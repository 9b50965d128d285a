#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Holds the arrows of the architecture: who may include what, and what each binary links.

    console -> {shared, tracker} -> core -> Qt Core and Gui
    kelvo-test -> verbs -> trials -> {scenario, conformance}, verbs -> {scenario, conformance, recording, shared} -> core, scenario -> {report, ear, eye} -> {media, senses}
    kelvo-media-maker, kelvo-bare-player, kelvo-ear, kelvo-eye (programs of their own, which kelvo-test starts) -> media, senses, ear, eye
    conformance (a static library, for whoever holds a renderer to the contract) -> core
    plug-ins -> core (tracker-source also tracker) + their one foreign library
    gst-renderer, simulator, upnp, mpris -> playback (a static library) -> core
    shared, mpris, recording, screen-lock -> session-bus (a static library) -> core
    programs -> recording (a static library) -> core
    console -> screen-lock (a static library) -> core
    tracker-source, gst-renderer -> media (a static library) -> core, which alone reads playlist files
    gst-renderer, media, tracker, tracker-source, upnp -> glib (headers only)

The programs alone load none of the libraries that only a back end needs: they come with its plug-in.

Each binary finds our libraries by its own place, each kind of them in one way.

ARCHITECTURE.md has a row for each folder that is built.

No two classes of the product have one name.

A class has one pair of files, but for the window and the controllers of src, which have files by role (X_role.cpp).

Exit status 1 and one line for each arrow that points the wrong way.
"""
import argparse
import pathlib
import re
import subprocess
import sys

# Folder -> folders whose headers it may include besides its own. The longest matching folder counts.
MAY_INCLUDE = {
    "src": {"framework/core", "framework/recording", "framework/screen-lock", "framework/shared", "framework/tracker"},
    # kelvo-test: the boundary is all that it knows of the framework, too.
    "kelvo-test": {"framework/core", "kelvo-test/verbs"},
    "kelvo-test/media": set(),
    "kelvo-test/media/maker": {"framework/glib", "kelvo-test/media"},
    "kelvo-test/senses": set(),
    "kelvo-test/senses/player": {"framework/glib", "kelvo-test/senses"},
    "kelvo-test/ear": {"kelvo-test/media", "kelvo-test/senses"},
    "kelvo-test/eye": {"kelvo-test/media", "kelvo-test/senses"},
    "kelvo-test/eye/capture": {"kelvo-test/eye", "kelvo-test/media", "kelvo-test/senses"},
    "kelvo-test/ear/capture": {"framework/glib", "kelvo-test/ear", "kelvo-test/media", "kelvo-test/senses"},
    "kelvo-test/trials": {
        "conformance", "framework/core", "kelvo-test/ear", "kelvo-test/eye", "kelvo-test/media", "kelvo-test/scenario",
        "kelvo-test/senses"},
    "kelvo-test/report": {"framework/recording"},
    "kelvo-test/scenario": {
        "framework/core", "kelvo-test/ear", "kelvo-test/eye", "kelvo-test/media", "kelvo-test/report", "kelvo-test/senses"},
    "kelvo-test/verbs": {
        "conformance", "framework/core", "framework/recording", "framework/shared", "kelvo-test/ear", "kelvo-test/eye",
        "kelvo-test/trials", "kelvo-test/media", "kelvo-test/report", "kelvo-test/scenario"},
    # The contract is one for all renderers: it knows the boundary and none of them.
    "conformance": {"framework/core"},
    "framework/core": set(),
    "framework/session-bus": {"framework/core"},
    "framework/glib": set(),
    "framework/media": {"framework/core", "framework/glib"},
    "framework/playback": {"framework/core"},
    "framework/playback/remote": {"framework/core", "framework/playback"},
    "framework/recording": {"framework/core", "framework/session-bus"},
    "framework/screen-lock": {"framework/core", "framework/session-bus"},
    "framework/shared": {"framework/session-bus", "framework/core"},
    "framework/tracker": {"framework/core", "framework/glib"},
    "framework/plugins/gst-renderer": {
        "framework/core", "framework/glib", "framework/media", "framework/playback"},
    "framework/plugins/simulator": {"framework/core", "framework/playback"},
    "framework/plugins/upnp": {
        "framework/core", "framework/glib", "framework/playback", "framework/playback/remote"},
    "framework/plugins/mpris": {
        "framework/session-bus", "framework/core", "framework/playback", "framework/playback/remote"},
    "framework/plugins/tracker-source": {
        "framework/core", "framework/glib", "framework/media", "framework/tracker"},
}

# The boundary: all that the console may know of the framework.
BOUNDARY_HEADERS = {
    "KelvoContent.h", "KelvoError.h", "KelvoGeneralSourcePlaylist.h", "KelvoMessageHandler.h", "KelvoPlaylist.h",
    "KelvoPluginLoader.h", "KelvoRegistry.h", "KelvoRenderer.h", "KelvoSource.h",
    "KelvoShared.h", "Recorder.h", "ScreenLock.h", "UserFolders.h",
    "KelvoTrackerModel.h", "KelvoTrackerModelFactory.h", "QSparqlConnection.h", "QSparqlQueryModel.h",
}

# Headers of foreign libraries -> the folders that may know them.
FOREIGN = {
    # The indexer looks into videos with the media engine's discoverer.
    r"gst/": {
        "framework/glib", "kelvo-test/media/maker", "kelvo-test/senses/player", "framework/plugins/gst-renderer",
        "framework/plugins/tracker-source"},
    r"totem-pl-parser": {"framework/media"},
    r"libtracker-sparql|tracker-sparql": {"framework/tracker"},
    r"^curl/": {"framework/tracker"},
    r"taglib/|^(fileref|tag|tfile|tfilestream|tpropertymap)\.h$": {"framework/plugins/tracker-source"},
    r"yaml-cpp": {"kelvo-test/scenario"},
    r"^ltc\.h$": {"kelvo-test/media"},
    r"uchardet/": {"framework/plugins/tracker-source"},
    r"libgupnp|libgssdp|libsoup": {"framework/plugins/upnp"},
    r"xcb/": {"framework/plugins/gst-renderer", "kelvo-test/eye/capture"},
    # Read beside the window.
    r"fontconfig/": {"src"},
    # The lock that libraries are loaded under.
    r"gmodule": {"framework/core"},
    r"glib|gio/|gobject/": {
        "framework/glib", "framework/plugins/gst-renderer", "framework/plugins/tracker-source", "framework/tracker",
        "framework/plugins/upnp"},
    r"QtWidgets/|Q(Widget|Dialog|MainWindow|Application|MessageBox)\b": {"src"},
    r"QDBus": {
        "framework/session-bus", "framework/recording", "framework/screen-lock", "framework/shared", "framework/plugins/mpris"},
}

# Headers that no folder includes -> what is used instead.
INSTEAD = {
    r"Q(Mutex|MutexLocker|ReadWriteLock|WaitCondition)$": "std::mutex and std::condition_variable",
}

# Binary (relative to the build folder, as a pattern) -> libraries it may need besides the C and C++ runtime.
QT_BASE = r"libQt6(Core|Gui)\.so"
MAY_LINK = {
    r"lib/libkelvo-core\.so": QT_BASE + r"|libgmodule-2\.0",
    r"lib/libkelvo-shared\.so": QT_BASE + r"|libQt6DBus\.so|libkelvo-core\.so",
    # GLib is what libtracker-sparql's own interface is made of.
    r"lib/libkelvo-tracker\.so": QT_BASE + r"|libkelvo-core\.so|libg(lib|object)-2\.0",
    r"bin/kelvo-test": QT_BASE + r"|libQt6(DBus|Network)\.so|libkelvo-(core|shared)\.so|libyaml-cpp|libltc",
    # Make media and listen in processes of their own, so that kelvo-test loads none of this.
    # D-Bus comes with the sanitizers.
    r"libexec/kelvo/kelvo-(media-maker|ear)": QT_BASE + r"|libQt6DBus\.so|libgstreamer-1\.0|libg(lib|object)-2\.0|libltc",
    r"libexec/kelvo/kelvo-bare-player": QT_BASE + r"|libQt6DBus\.so|libgst(reamer|video)-1\.0|libg(lib|object)-2\.0",
    r"libexec/kelvo/kelvo-eye": QT_BASE + r"|libQt6DBus\.so|libltc|libxcb",
    r"bin/kelvo-test-gui": r"libQt6(Core|Gui|Widgets|Network|DBus)\.so|libkelvo-(core|shared|tracker)\.so|libfontconfig",
    r"lib/kelvo/plugins/gst-renderer\.so":
        QT_BASE + r"|libQt6Network\.so|libkelvo-core\.so|libgst\w+-1\.0|libg(lib|object|io)-2\.0|libxcb",
    r"lib/kelvo/plugins/simulator\.so": QT_BASE + r"|libkelvo-core\.so",
    r"lib/kelvo/plugins/tracker-source\.so":
        QT_BASE + r"|libkelvo-(core|tracker)\.so|libtag\.so|libgst(pbutils|reamer)-1\.0|libg(lib|object|io)-2\.0"
        r"|libuchardet",
    r"lib/kelvo/plugins/upnp\.so": QT_BASE + r"|libkelvo-core\.so|libgupnp|libgssdp|libsoup|libg(lib|object|io)-2\.0|libxml2",
    r"lib/kelvo/plugins/mpris\.so": QT_BASE + r"|libQt6DBus\.so|libkelvo-core\.so",
}
# Not loaded by any program or library of the boundary, not even by way of others: only plug-ins bring them.
OF_BACK_ENDS = re.compile(r"libgst|libtag\.so|libtotem-plparser|libuchardet|libgupnp|libgssdp|libsoup")
# Nor are these: they are loaded when they are first needed, which is after the start. Each would make it longer, and so would
# all that they need.
WHEN_NEEDED = re.compile(r"libtracker-sparql|libgio-2\.0|libsqlite3|libcurl")
# Kind of binary -> where it looks for our libraries: by its own place, never by that of the build.
RUN_PATHS = {
    r"bin/.*": "$ORIGIN/../lib",
    r"lib/libkelvo-.*": "$ORIGIN",
    r"lib/kelvo/plugins/.*": "$ORIGIN/../..",
    # Needs none of our libraries.
    r"libexec/.*": None,
}
RUNTIME = re.compile(r"lib(stdc\+\+|m|gcc_s|c|pthread|dl|rt|asan|ubsan|tsan)\.so|ld-linux")

CLASS = re.compile(r"^(?:class|struct)\s+(?:[A-Z_]+_EXPORT\s+)?(\w+)[^;{]*\{", re.MULTILINE)
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def folder_of(path, folders):
    """The longest of `folders` that `path` lies in, or None."""
    inside = [folder for folder in folders if path.startswith(folder + "/")]
    return max(inside, key=len, default=None)


def include_faults(relative, text, owners):
    """Faults of one file. `owners` maps a header's file name to the folders that hold one of that name."""
    home = folder_of(relative, MAY_INCLUDE)
    if home is None:
        return []
    faults = []
    for _, name in INCLUDE.findall(text):
        holders = owners.get(name.rsplit("/", 1)[-1], set())
        if holders and home not in holders and not holders & MAY_INCLUDE[home]:
            faults.append(f"{relative}: includes {name} of {', '.join(sorted(holders))}")
        elif home == "src" and holders and home not in holders and name.rsplit("/", 1)[-1] not in BOUNDARY_HEADERS:
            faults.append(f"{relative}: includes {name}, which is no header of the boundary")
        if holders:
            continue
        for pattern, allowed in FOREIGN.items():
            if re.search(pattern, name) and home not in allowed:
                faults.append(f"{relative}: includes {name}, which only {', '.join(sorted(allowed))} may know")
        for pattern, other in INSTEAD.items():
            if re.search(pattern, name):
                faults.append(f"{relative}: includes {name} instead of {other}")
    return faults


def name_faults(relative):
    """Faults of a file's name: one class per file pair, but for the window and the controllers of the console."""
    by_role = "_" in pathlib.PurePath(relative).stem and relative.startswith(("src/", "kelvo-test/", "conformance/", "framework/"))
    if by_role and not re.match(r"src/Kelvo(MainWindow|\w+Controller)_\w+\.cpp$", relative):
        return [f"{relative}: is a part of a class, which only the window and the controllers have files for"]
    return []


def class_faults(headers):
    """Faults of the headers of the product, text by name: each class has a name of its own. Two of one name that come into one
    program become one of them, without a word from compiler or linker."""
    found = {}
    for name, text in headers.items():
        for defined in set(CLASS.findall(text)):
            found.setdefault(defined, []).append(name)
    return [f"{' and '.join(sorted(names))}: both define {defined}" for defined, names in found.items() if len(names) > 1]


def source_faults(source):
    files = [path for folder in ("src", "kelvo-test", "conformance", "framework", "tests", "benchmarks", "cmake", "examples", "scripts")
             for path in (source / folder).rglob("*") if path.is_file()]
    owners = {}
    headers = {}
    for path in files:
        home = folder_of(path.relative_to(source).as_posix(), MAY_INCLUDE)
        if home and path.suffix == ".h":
            owners.setdefault(path.name, set()).add(home)
            if not home.startswith(("tests", "benchmarks")):
                headers[path.relative_to(source).as_posix()] = path.read_text(encoding="utf-8")
    faults = class_faults(headers)
    for path in files:
        if path.suffix not in (".h", ".cpp"):
            continue
        relative = path.relative_to(source).as_posix()
        text = path.read_text(encoding="utf-8")
        faults += name_faults(relative)
        if not text.startswith("// SPDX-License-Identifier: MIT\n"):
            faults.append(f"{relative}: does not begin with its licence line")
        faults += include_faults(relative, text, owners)
    if not owners:
        faults.append(f"{source}: no headers found")
    return faults


def plan_faults(plan, folders):
    """Faults of the table of folders in ARCHITECTURE.md: `folders` are those that are built."""
    rows = set()
    for line in plan.splitlines():
        cells = line.split("|")
        if line.startswith("| `") and len(cells) > 2:
            rows.update(re.findall(r"`([\w/-]+)`", cells[1]))
    known = {row for row in rows if row.split("/")[0] in ("src", "kelvo-test", "conformance", "framework")}
    return ([f"ARCHITECTURE.md: no row for {folder}" for folder in sorted(set(folders) - rows)]
            + [f"ARCHITECTURE.md: {folder}, which is not built" for folder in sorted(known - set(folders))])


def built_folders(source):
    """The folders of the product that a target is made in."""
    files = [path for top in ("src", "kelvo-test", "conformance", "framework") for path in sorted((source / top).rglob("CMakeLists.txt"))]
    makes = re.compile(r"^(add_library|add_executable|kelvo_add_\w+)\(", re.MULTILINE)
    return [path.parent.relative_to(source).as_posix() for path in files
            if makes.search(path.read_text(encoding="utf-8"))]


def link_faults(binary, needed):
    """Faults of one binary, given relative to the build folder, with the libraries it needs."""
    for pattern, allowed in MAY_LINK.items():
        if re.fullmatch(pattern, binary):
            return [f"{binary}: links {library}" for library in needed
                    if not RUNTIME.match(library) and not re.match(allowed, library)]
    return [f"{binary}: no rule says what it may link"]


def needed_libraries(path):
    output = subprocess.run(["readelf", "-d", str(path)], check=True, capture_output=True, text=True).stdout
    return re.findall(r"\(NEEDED\)\s+Shared library: \[(.+)\]", output)


def run_path_faults(binary, run_path):
    """Faults of the RUNPATH of one binary, given relative to the build folder; None: it has none."""
    wanted = next(path for kind, path in RUN_PATHS.items() if re.fullmatch(kind, binary))
    return [] if run_path == wanted else [f"{binary}: its RUNPATH is {run_path}, not {wanted}"]


def run_path_of(path):
    output = subprocess.run(["readelf", "-d", str(path)], check=True, capture_output=True, text=True).stdout
    found = re.search(r"\((?:RUNPATH|RPATH)\)\s+Library r(?:un)?path: \[(.*)\]", output)
    return found.group(1) if found else None


def load_faults(binary, loaded):
    """Faults of a program, or a library that it links, with all that is loaded for it before any plug-in."""
    return ([f"{binary}: loads {library}, which belongs to a plug-in"
             for library in loaded if OF_BACK_ENDS.match(library)]
            + [f"{binary}: loads {library} at its start, before it is needed"
               for library in loaded if WHEN_NEEDED.match(library)])


def loaded_libraries(path):
    output = subprocess.run(["ldd", str(path)], check=True, capture_output=True, text=True).stdout
    return re.findall(r"^\s+(\S+) =>", output, re.MULTILINE)


def binary_faults(build):
    binaries = sorted(path for pattern in ("bin/*", "libexec/kelvo/*", "lib/libkelvo-*.so", "lib/kelvo/plugins/*.so")
                      for path in build.glob(pattern) if path.is_file())
    if not binaries:
        return [f"{build}: nothing built"]
    faults = []
    for path in binaries:
        name = path.relative_to(build).as_posix()
        faults += link_faults(name, needed_libraries(path))
        faults += run_path_faults(name, run_path_of(path))
        if not name.startswith(("lib/kelvo/plugins/", "libexec/")):
            faults += load_faults(name, loaded_libraries(path))
    return faults


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--source", type=pathlib.Path, required=True)
    parser.add_argument("--build", type=pathlib.Path, required=True)
    arguments = parser.parse_args()
    plan = (arguments.source / "ARCHITECTURE.md").read_text(encoding="utf-8")
    faults = (source_faults(arguments.source) + plan_faults(plan, built_folders(arguments.source))
              + binary_faults(arguments.build))
    print("\n".join(faults) or "All arrows point the right way.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
