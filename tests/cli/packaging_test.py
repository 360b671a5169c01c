#!/usr/bin/python3
"""What goes into the packages beside the programs: manuals, completions, desktop and service files.

    packaging_test.py PROGRAM
"""

import pathlib
import re
import subprocess
import tempfile
import unittest

import cli_support

PACKAGING = pathlib.Path(__file__).resolve().parents[2] / "packaging"


def output_of(*command, **options):
    done = subprocess.run(command, capture_output=True, text=True, timeout=60, check=False, **options)
    return done.returncode, done.stdout + done.stderr


def commands_of(words=()):
    """Every command below `words`, with its options, as the program itself tells them."""
    _, text = output_of(cli_support.program, *words, "--help")
    yield words, set(re.findall(r"--[a-z][a-z-]+", text)) - {"--help"}
    below = text.partition("Subcommands:")[2]
    for name in re.findall(r"^  ([a-z]+)", below, re.M):
        yield from commands_of((*words, name))


class Packaging(unittest.TestCase):
    def test_manual_and_completions_know_every_command_and_option(self):
        manual = (PACKAGING / "man/varnokctl.1").read_text().replace("Fl -", "--")
        bash = (PACKAGING / "completions/varnokctl.bash").read_text()
        zsh = (PACKAGING / "completions/_varnokctl").read_text()
        fish = re.sub(r"-l ", "--", (PACKAGING / "completions/varnokctl.fish").read_text())
        found = list(commands_of())
        self.assertGreater(len(found), 25)
        for words, options in found:
            if words:
                self.assertRegex(manual, r"(?m)^\.It Cm " + " ".join(words) + r"\b")
            for name in [*words[-1:], *options]:
                for shell, text in {"bash": bash, "zsh": zsh, "fish": fish, "manual": manual}.items():
                    self.assertRegex(text, rf"(?<![\w-]){name}(?![\w-])", f"{name} of {words} in {shell}")

    def test_bash_completes(self):
        def complete(*line):
            script = ("source /usr/share/bash-completion/bash_completion; source " + str(PACKAGING / "completions/varnokctl.bash")
                      + '; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); COMP_LINE="$*"; COMP_POINT=${#COMP_LINE}; _varnokctl;'
                      + ' printf "%s\\n" "${COMPREPLY[@]}"')
            code, text = output_of("bash", "-c", script, "_", *line,
                                   env={"PATH": str(pathlib.Path(cli_support.program).parent) + ":/usr/bin:/bin", "VARNOK_HOME": self.home})
            self.assertEqual(code, 0, text)
            return text.split()

        with tempfile.TemporaryDirectory() as self.home:
            self.assertEqual(complete("varnokctl", "du"), ["duplicates"])
            self.assertEqual(complete("varnokctl", "--home", "/x", "contacts", "r"), ["remove"])
            self.assertEqual(complete("varnokctl", "serve", "--re"), ["--read-only", "--request-log"])
            self.assertEqual(complete("varnokctl", "settings", "get", "EXPORT_TY"), ["EXPORT_TYPE"])

    def test_files_are_well_formed(self):
        with tempfile.TemporaryDirectory() as state:
            for command in (
                ["mandoc", "-Tlint", "-Wwarning", PACKAGING / "man/varnokctl.1", PACKAGING / "man/varnok.1"],
                ["desktop-file-validate", *PACKAGING.glob("desktop/*.desktop")],
                ["appstreamcli", "validate", "--no-net", "--pedantic", *PACKAGING.glob("desktop/*.metainfo.xml")],
                ["flatpak-builder", "--show-manifest", *PACKAGING.glob("flatpak/*.yml")],
                ["zsh", "-n", PACKAGING / "completions/_varnokctl"],
                ["fish", "--no-execute", PACKAGING / "completions/varnokctl.fish"],
            ):
                code, text = output_of(*map(str, command), cwd=state)
                self.assertEqual(code, 0, f"{command[0]}: {text}")

    def test_units_are_ones_that_systemd_takes(self):
        with tempfile.TemporaryDirectory() as folder:
            for unit in PACKAGING.glob("systemd/*"):
                text = unit.read_text().replace("@CMAKE_INSTALL_FULL_BINDIR@/varnokctl", cli_support.program)
                (pathlib.Path(folder) / unit.name.removesuffix(".in")).write_text(text)
            units = [str(path) for path in pathlib.Path(folder).iterdir()]
            self.assertEqual(len(units), 3)
            code, text = output_of("systemd-analyze", "verify", "--user", "--man=no", *units,
                                   env={"XDG_RUNTIME_DIR": folder, "PATH": "/usr/bin:/bin", "HOME": folder})
            self.assertEqual((code, text), (0, ""))


if __name__ == "__main__":
    cli_support.main()
