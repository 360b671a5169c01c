#!/usr/bin/env python3
"""Fails when a file under src/ includes what its folder may not.

What a folder may include is the DEPENDS of its varnok_library() call, and what
those may include in turn. There is no second list. Beyond that, the core must
not reach for the system: see RESTRICTED below.
"""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent / "src"

# Includes and names that only some folders may use: pattern, who may, why.
RESTRICTED = [
    (re.compile(r"#include <Q\w+"), ("ui/",), "Qt belongs to ui/"),
    (re.compile(r"#include <(boost/asio|sys/|netinet/|arpa/|unistd\.h|fcntl\.h|pthread\.h|csignal)"),
     ("platform/linux/", "cli/", "web/http/", "ui/"), "system headers belong to platform/linux/ and the front ends"),
    (re.compile(r"#include <(filesystem|fstream|random|iostream)>"),
     ("platform/linux/", "host/", "cli/", "ui/"), "files and chance come through interfaces"),
    (re.compile(r"\b(system_clock::now|getenv|random_device|std::thread|std::jthread|std::async)\b"),
     ("platform/linux/", "host/", "cli/", "ui/"), "time, environment, chance and threads come through interfaces"),
    (re.compile(r"#include <(glib|gio|libebook|libsecret)"), ("platform/linux/", "ui/"), "GLib belongs to its backends"),
    (re.compile(r"#include <CLI/"), ("cli/main.cpp",), "the command line is parsed in main.cpp only"),
]


def libraries():
    """Folder to the folders named by its DEPENDS, by library name."""
    depends, folders = {}, {}
    for build_file in ROOT.rglob("CMakeLists.txt"):
        folder = build_file.parent.relative_to(ROOT).as_posix()
        text = re.sub(r"#.*", "", build_file.read_text())
        for call in re.findall(r"varnok_library\((.*?)\)", text, re.S):
            words = call.split()
            name = words[words.index("NAME") + 1]
            folders[name] = folder
            depends[name] = re.findall(r"varnok::(\w+)", call)
        # A front end without a library of its own: everything it links.
        name = folder.replace("/", "_")
        if "add_executable(" in text and name not in folders:
            folders[name] = folder
            depends[name] = re.findall(r"varnok::(\w+)", text)
    return depends, folders


def reachable(name, depends, path=()):
    if name in path:
        sys.exit("the folders form a circle: " + " -> ".join((*path, name)))
    found = {name}
    for other in depends.get(name, []):
        found |= reachable(other, depends, (*path, name))
    return found


def folder_of(path, folders):
    """The library whose folder holds `path`: the deepest one."""
    fitting = [name for name, folder in folders.items() if path == folder or path.startswith(folder + "/")]
    return max(fitting, key=lambda name: len(folders[name]), default=None)


def main():
    depends, folders = libraries()
    allowed = {name: reachable(name, depends) for name in depends}
    faults = []
    for source in sorted(p for p in ROOT.rglob("*") if p.suffix in (".h", ".cpp")):
        path = source.relative_to(ROOT).as_posix()
        owner = folder_of(path, folders)
        if owner is None:
            faults.append(f"{path} belongs to no library")
            continue
        text = source.read_text()
        for include in re.findall(r'^#include "([^"]+)"', text, re.M):
            target = folder_of(include, folders)
            if not (ROOT / include).exists():
                faults.append(f"{path}: includes are paths from src/: {include}")
            elif target not in allowed[owner]:
                faults.append(f"{path}: {owner} may not include {include} ({target})")
        for pattern, who, why in RESTRICTED:
            found = pattern.search(text)
            if found and not path.startswith(who):
                faults.append(f"{path}: {found.group(0)}: {why}")
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
