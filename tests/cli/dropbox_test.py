#!/usr/bin/python3
"""The linked Dropbox account, against a stand-in of the service that spoils its answers.

    dropbox_test.py PROGRAM
"""

import http.client
import os
import pathlib
import resource
import signal
import stat
import time

import cli_support
from dropbox_standin import APP_KEY, Service, content_hash

MEBIBYTE = 1 << 20
BIG = 200 * MEBIBYTE + 12345

# A sanitised program would keep what it has freed.
AT_ONCE = {"ASAN_OPTIONS": "quarantine_size_mb=1"}

# More than a small transfer needs, for one of BIG.
MOST_MEMORY = 16 * MEBIBYTE

NAMES = ["plain.vcf", "with blank & ampersand.vcf", "türkçe שלום 日本語 \U0001F600.vcf", "quote\"back\\slash'%41.vcf",
         "del\x7f and \x85.vcf"]


class Dropbox(cli_support.Case):
    def setUp(self):
        super().setUp()
        self.service = Service(self.folder / "service")
        self.addCleanup(self.assertNoComplaints)
        self.addCleanup(self.service.close)
        os.environ.pop("http_proxy", None)
        self.place = self.home()
        self.place.ok("contacts")  # Makes the home.

    def assertNoComplaints(self):
        self.assertEqual(self.service.complaints, [])

    def run_dropbox(self, *arguments, **options):
        return self.place.run(*arguments, env=self.service.environment(), **options)

    def ok(self, *arguments):
        result = self.run_dropbox("--json", *arguments)
        self.assertEqual((result.code, result.err), (0, ""), arguments)
        return result.json

    def link(self, change=lambda address: address):
        """Links as a person does; `change` is what becomes of the address on its way back."""
        process = self.place.start("dropbox", "link", env=self.service.environment(), stdin=cli_support.subprocess.PIPE)
        while not (line := process.stdout.readline().decode().strip()).startswith("https://"):
            self.assertIsNone(process.poll(), line)
        out, err = process.communicate(change(self.service.agree(line)).encode() + b"\n", timeout=cli_support.TIME_LIMIT)
        return cli_support.Result(process.returncode, out.decode(), err.decode())

    def linked(self):
        result = self.link()
        self.assertEqual((result.code, result.err), (0, ""))

    def document(self, name, content=b"BEGIN:VCARD\r\nEND:VCARD\r\n"):
        path = self.place.documents / name
        path.write_bytes(content)
        return path

    def big_document(self):
        path = self.place.documents / "big.vcf"
        with open(path, "wb") as file:
            for _ in range(BIG // MEBIBYTE):
                file.write(os.urandom(MEBIBYTE))
            file.write(os.urandom(BIG % MEBIBYTE))
        return path

    def assertSays(self, result, words):
        self.assertSaysOneLine(result)
        self.assertIn(words, result.err)


class Link(Dropbox):
    def test_lasts_until_unlinked(self):
        self.assertEqual(self.ok("dropbox"), {"linked": False, "account": None, "tokens": None})
        self.linked()
        state = {"linked": True, "account": "dbid:AAA", "tokens": "file"}
        self.assertEqual(self.ok("dropbox"), state)
        self.assertEqual(self.ok("dropbox", "link"), state)  # Nothing is asked again.
        kept = self.place.path / "dropbox.json"
        self.assertEqual(stat.S_IMODE(kept.stat().st_mode), 0o600)
        self.assertEqual(self.ok("dropbox", "unlink")["linked"], False)
        self.assertFalse(kept.exists())
        self.assertEqual(self.service.refresh, set(), "the service was not told")
        self.assertSays(self.run_dropbox("dropbox", "list"), "no Dropbox account is linked")

    def test_secrets_stay_where_they_are_kept(self):
        self.linked()
        self.service.faults["files/list_folder"] = ["expired"]
        self.ok("dropbox", "list")
        secrets = self.service.access | self.service.refresh
        holding = {path.name for path in self.place.path.rglob("*") if path.is_file()
                   and any(secret.encode() in path.read_bytes() for secret in secrets)}
        self.assertEqual(holding, {"dropbox.json"})

    def test_refused_addresses(self):
        cases = {
            "of another sign-in": lambda address: address.partition("&state=")[0] + "&state=other",
            "not allowed": lambda address: f"db-{APP_KEY}://2/token?error=access_denied&" + address.rpartition("&")[2],
            "out of order": lambda address: f"db-{APP_KEY}://2/token?error=server_error&error_description=out+of+order&"
                                            + address.rpartition("&")[2],
            "does not accept": lambda address: address.replace("code=", "code=x"),
            "not the address": lambda address: "https://example.org/?code=1",
            "no address": lambda address: "",
        }
        for words, change in cases.items():
            with self.subTest(words):
                result = self.link(change)
                self.assertEqual(result.code, 1)
                self.assertRegex(result.err, r"\Avarnokctl: [^\n]*\n\Z")
                self.assertFalse(self.ok("dropbox")["linked"])

    def test_permission_taken_back(self):
        self.linked()
        self.service.access.clear()
        self.service.refresh.clear()
        self.assertSays(self.run_dropbox("dropbox", "list"), "link the account again")
        self.assertFalse(self.ok("dropbox")["linked"])

    def test_only_the_service_is_trusted(self):
        self.linked()
        known = self.service.environment()
        plain = known["VARNOK_DROPBOX_API"].replace("https", "http")
        for words, change in {"is not Dropbox": {"VARNOK_DROPBOX_CA": ""},
                              "is not an https address": {"VARNOK_DROPBOX_API": "http://example.org"},
                              "nor an http one of this machine": {"VARNOK_DROPBOX_API": "http://127.0.0.1@example.org/"},
                              "cannot be reached": {"VARNOK_DROPBOX_API": "https://127.0.0.1:1"},
                              "again and again": {"VARNOK_DROPBOX_API": plain}}.items():
            with self.subTest(words):
                self.assertSays(self.place.run("dropbox", "list", env={**known, **change}), words)


class Files(Dropbox):
    def setUp(self):
        super().setUp()
        self.linked()

    def test_names_go_and_come_back_unchanged(self):
        for name in NAMES:
            with self.subTest(name):
                self.document(name, name.encode())
                self.assertEqual(self.ok("dropbox", "put", name)["name"], name)
                self.assertEqual(self.service.stored("/" + name).read_bytes(), name.encode())
        listed = self.ok("dropbox", "list")["entries"]
        self.assertEqual({entry["name"] for entry in listed}, set(NAMES))
        for name in NAMES:
            with self.subTest(name):
                self.document(name, b"older")
                got = self.ok("dropbox", "get", "/" + name)
                self.assertEqual(got["bytes"], len(name.encode()))
                self.assertEqual(pathlib.Path(got["path"]).read_bytes(), name.encode())

    def test_downloads_stay_in_the_documents_directory(self):
        for name, kept in {"..": "_.", ".hidden": "_hidden", "a\\..\\b.vcf": "a_.._b.vcf", "n\nl.vcf": "n_l.vcf",
                           "x" * 300 + ".vcf": "x" * 251 + ".vcf"}.items():
            with self.subTest(name):
                self.service.put("/" + name, b"content")
                got = self.ok("dropbox", "get", "/" + name)
                self.assertEqual(pathlib.Path(got["path"]), self.place.documents / kept)

    def test_listing(self):
        for name in ("/b.vcf", "/A Folder/c.vcf", "/A Folder/Inner/d.vcf", "/a.vcf", "/z.vcf"):
            self.service.put(name, b"12345")
        entries = self.ok("dropbox", "list")["entries"]
        self.assertEqual([entry["name"] for entry in entries], ["A Folder", "a.vcf", "b.vcf", "z.vcf"])
        self.assertEqual(entries[0], {"name": "A Folder", "path": "/A Folder", "folder": True, "bytes": None, "modified": None})
        self.assertEqual(entries[1], {"name": "a.vcf", "path": "/a.vcf", "folder": False, "bytes": 5,
                                      "modified": "2024-03-05T13:07:09Z"})
        inner = self.run_dropbox("dropbox", "list", "A Folder/")
        self.assertEqual(inner.out, " " * 32 + "Inner/\n2024-03-05 13:07    5.00 bytes  c.vcf\n")
        self.assertSays(self.run_dropbox("dropbox", "list", "/nowhere"), "no file or folder of that name")

    def test_empty_file(self):
        self.document("empty.vcf", b"")
        self.ok("backups", "upload", "empty.vcf")
        self.document("empty.vcf", b"older")
        self.ok("dropbox", "get", "empty.vcf")
        self.assertEqual((self.place.documents / "empty.vcf").read_bytes(), b"")

    def test_what_fails_for_the_moment_is_done_again(self):
        content = os.urandom(300000)
        path = self.document("a.vcf", content)
        for call, faults, command in (
                ("files/upload", ("cut", "lost", "429", "500", "expired", "damaged"), ("dropbox", "put", "a.vcf")),
                ("files/download", ("cut", "half", "429", "500", "expired", "damaged", "changed"), ("dropbox", "get", "a.vcf")),
                ("files/list_folder", ("cut", "lost", "429", "500", "expired"), ("dropbox", "list")),
                ("files/list_folder/continue", ("cut", "429", "expired"), ("dropbox", "list"))):
            for fault in (*faults, *(["cut", "500", "429", "cut"],)):
                with self.subTest(call=call, fault=fault):
                    for name in "abcd":
                        self.service.put(f"/{name}.vcf", content)
                    path.write_bytes(content)
                    self.service.faults[call] = [fault] if isinstance(fault, str) else list(fault)
                    self.ok(*command)
                    self.assertEqual(self.service.faults[call], [])
                    expected = content[::-1] if fault == "changed" else content
                    self.assertEqual(self.service.stored("/a.vcf").read_bytes(), expected)
                    self.assertEqual(path.read_bytes(), expected)

    def test_refreshing_may_fail_for_the_moment_too(self):
        for fault in ("cut", "lost", "429", "500"):
            with self.subTest(fault):
                self.service.faults["files/list_folder"] = ["expired"]
                self.service.faults["oauth2/token"] = [fault]
                self.ok("dropbox", "list")

    def test_half_a_download_is_not_fetched_again(self):
        self.service.put("/a.vcf", os.urandom(3 * MEBIBYTE))
        self.service.faults["files/download"] = ["half"] * 8  # Each brings something.
        self.ok("dropbox", "get", "a.vcf")
        self.assertEqual(self.service.calls.count("files/download"), 9)

    def test_gives_up_clearly_and_loses_nothing(self):
        path = self.document("a.vcf", b"mine")
        self.service.put("/a.vcf", b"theirs" * 100000)
        self.document("full.vcf")
        for words, call, faults, command in (
                ("has trouble itself (500)", "files/upload", ["500"] * 9, ("dropbox", "put", "a.vcf")),
                ("asks for less", "files/upload", ["429"] * 9, ("dropbox", "put", "a.vcf")),
                ("a pause of 60 minutes", "files/upload", ["patience"], ("dropbox", "put", "a.vcf")),
                ("again and again", "files/upload", ["cut"] * 9, ("dropbox", "put", "a.vcf")),
                ("arrived damaged", "files/upload", ["damaged"] * 9, ("dropbox", "put", "a.vcf")),
                ("link the account again", "files/upload", ["expired", "expired"], ("dropbox", "put", "a.vcf")),
                ("is full", "files/upload", [], ("backups", "upload", "full.vcf")),
                ("no backup", "files/upload", [], ("backups", "upload", "../contacts.db")),
                ("again and again", "files/download", ["cut"] * 9, ("dropbox", "get", "a.vcf")),
                ("not what Dropbox has", "files/download", ["damaged"] * 9, ("dropbox", "get", "a.vcf")),
                ("does not say what it sends", "files/download", ["unnamed"], ("dropbox", "get", "a.vcf")),
                ("no file or folder", "files/download", [], ("dropbox", "get", "none.vcf")),
                ("has trouble itself", "files/list_folder/continue", ["500"] * 9, ("dropbox", "list"))):
            with self.subTest(words, call=call):
                for name in "bcd":
                    self.service.put(f"/{name}.vcf", b"x")
                self.service.faults[call] = faults
                self.assertSays(self.run_dropbox(*command), words)
                self.service.faults[call] = []
                self.assertEqual(self.service.stored("/a.vcf").read_bytes(), b"theirs" * 100000)
                self.assertEqual(path.read_bytes(), b"mine")
                self.assertEqual(self.place.stale_parts(), [])

    def test_full_disk(self):
        path = self.document("a.vcf", b"mine")
        self.service.put("/a.vcf", os.urandom(4 * MEBIBYTE))

        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (2 * MEBIBYTE, 2 * MEBIBYTE))
        self.assertSays(self.run_dropbox("dropbox", "get", "a.vcf", preexec_fn=limit), "Cannot write")
        self.assertEqual(path.read_bytes(), b"mine")
        self.assertEqual(self.place.stale_parts(), [])


class Big(Dropbox):
    """More than one call takes."""

    def setUp(self):
        super().setUp()
        self.linked()

    def peak(self, *arguments):
        """Runs a command that must succeed; the most memory it had, in bytes."""
        process = self.place.start(*arguments, env={**self.service.environment(), **AT_ONCE},
                                   stdout=cli_support.subprocess.DEVNULL, stderr=None)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        self.assertEqual(process.returncode, 0)
        return usage.ru_maxrss * 1024

    def test_goes_and_comes_in_pieces(self):
        self.document("small.vcf")
        least = self.peak("dropbox", "put", "small.vcf")
        path = self.big_document()
        digest = content_hash(path)
        self.assertLess(self.peak("dropbox", "put", "big.vcf") - least, MOST_MEMORY)
        self.assertEqual(content_hash(self.service.stored("/big.vcf")), digest)
        self.assertEqual(self.service.calls.count("files/upload_session/append_v2"), BIG // (16 * MEBIBYTE))
        path.unlink()
        self.assertLess(self.peak("dropbox", "get", "big.vcf") - least, MOST_MEMORY)
        self.assertEqual(content_hash(path), digest)

    def test_every_call_spoiled(self):
        path = self.big_document()
        digest = content_hash(path)
        faults = ["cut", None, "lost", "429", "500", "expired", "damaged", None, "lost", "cut", "cut"]
        self.service.faults["files/upload_session/start"] = ["500", "lost"]
        self.service.faults["files/upload_session/append_v2"] = list(faults)
        self.service.faults["files/upload_session/finish"] = ["429", "damaged", "cut", "lost"]
        self.service.faults["files/get_metadata"] = ["500"]
        self.ok("dropbox", "put", "big.vcf")
        self.assertEqual({call: left for call, left in self.service.faults.items() if left}, {})
        self.assertEqual(content_hash(self.service.stored("/big.vcf")), digest)
        path.unlink()
        self.service.faults["files/download"] = ["half", "500", "half", "cut", "expired", "429", "half"]
        self.ok("dropbox", "get", "big.vcf")
        self.assertEqual(content_hash(path), digest)

    def test_interrupted(self):
        path = self.big_document()
        self.service.put("/other.vcf", path.read_bytes())
        for command in (("dropbox", "put", "big.vcf"), ("dropbox", "get", "other.vcf")):
            with self.subTest(command):
                self.service.calls.clear()
                process = self.place.start(*command, env=self.service.environment())
                while not any(call.startswith(("files/upload_session/append", "files/download"))
                              for call in self.service.calls):
                    time.sleep(0.01)
                process.send_signal(signal.SIGINT)
                result = cli_support.finish(process)
                self.assertEqual((result.code, result.out, result.err), (130, "", ""))
                self.assertNotIn("/big.vcf", self.service.files)
                self.assertFalse((self.place.documents / "other.vcf").exists())
                self.assertEqual(self.place.stale_parts(), [])


if __name__ == "__main__":
    cli_support.main()
