#!/usr/bin/python3
"""`varnokctl serve`, from outside: a browser's requests over real connections, many at once, and kills.

    serve_test.py PROGRAM

VARNOK_TEST_SEED repeats the moments of the kills, as far as the machine repeats its own. VARNOK_TEST_TRANSFER is the
size in bytes of the large transfers: 2147483648 takes a minute and as much disk.
"""

import concurrent.futures
import contextlib
import http.client
import json
import os
import random
import re
import signal
import sqlite3
import subprocess
import threading
import time
import urllib.parse

import cli_support

UPLOADS, UPLOAD_SIZE = 50, 5_000_000
SAVERS = 40
KILLS, KILLED_SAVERS = 200, 4
LATEST_KILL = 0.25  # Seconds; a save takes some hundredths where the disk is slow.
TRANSFER = int(os.environ.get("VARNOK_TEST_TRANSFER") or 100_000_000)
MEMORY = 16 << 20  # What a transfer of any size may take.

FIRST_NAME, NOTE, PHONE = "1", "12", "15"
NEW = "-1000"
BOUNDARY = "----boundary7MA4YWxkTrZu0gW"


class Server:
    """A running `serve`; stopped, and its exit status checked, at the end of a with block."""

    def __init__(self, home, *options, env=None):
        self.process = home.start("serve", "--port", "0", "--bind", "127.0.0.1", *options, env=env)
        line = self.process.stdout.readline().decode()
        match = re.fullmatch(r"Web access at (http://127\.0\.0\.1:(\d+))\n", line)
        if not match:
            raise AssertionError(f"{line!r}, {cli_support.finish(self.process)}")
        self.url, self.port = match[1], int(match[2])

    def __enter__(self):
        return self

    def __exit__(self, kind, *_):
        self.process.send_signal(signal.SIGINT)
        result = cli_support.finish(self.process)
        if kind is None and (result.code, result.err) != (130, ""):
            raise AssertionError(result)

    def connection(self):
        return http.client.HTTPConnection("127.0.0.1", self.port, timeout=cli_support.TIME_LIMIT)

    def request(self, method, path, body=None, headers=None):
        """The status, the header fields and the body of the answer, over a connection of its own."""
        with contextlib.closing(self.connection()) as connection:
            connection.request(method, path, body, headers or {})
            answer = connection.getresponse()
            return answer.status, answer.headers, answer.read()

    def get(self, path):
        status, _, body = self.request("GET", path)
        return body if status == 200 else status

    def post(self, path, body, headers=None):
        status, _, answer = self.request("POST", path, body, headers)
        return answer if status == 200 else status

    def save(self, person, *items):
        return json.loads(self.post("/saverecord.json", json.dumps({"id": person, "records": items})))

    def names(self):
        return [record["name"] for record in json.loads(self.get("/records.json"))["records"]]

    def form(self, person):
        return json.loads(self.post("/record.json", str(person)))

    def upload(self, name, content):
        return self.request("POST", "/upload.html", part_header(name) + content + CLOSING,
                            {"Content-Type": f"multipart/form-data; boundary={BOUNDARY}"})

    def peak(self):
        """The most memory that it has held so far, in bytes."""
        with open(f"/proc/{self.process.pid}/status", encoding="ascii") as status:
            return int(re.search(r"VmHWM:\s+(\d+) kB", status.read())[1]) * 1024


def part_header(name):
    return (f'--{BOUNDARY}\r\nContent-Disposition: form-data; name="file"; filename="{name}"\r\n'
            "Content-Type: application/octet-stream\r\n\r\n").encode()


CLOSING = f"\r\n--{BOUNDARY}--\r\n".encode()


def field(name, value):
    return {"name": name, "value": value}


def new_entry(name, value, label):
    return {"name": name, "value": value, "type": "-1", "identifier": label}


class Serve(cli_support.Case):
    def home_with_file(self, name, content):
        """A home whose last backup is that file."""
        home = self.home()
        home.ok("settings", "set", "FILE_NAME", name)
        home.ok("settings", "set", "FILE_PATH", str(home.documents / name))
        (home.documents / name).write_bytes(content)
        return home

    def test_address(self):
        home = self.home()
        process = home.start("--json", "serve", "--port=0", "--bind", "lo")
        url = json.loads(process.stdout.readline())["url"]
        port = str(urllib.parse.urlsplit(url).port)
        self.assertEqual(url, f"http://127.0.0.1:{port}")
        self.assertSaysOneLine(home.run("serve", "--port", port, "--bind", "127.0.0.1"))
        process.send_signal(signal.SIGTERM)
        self.assertEqual(cli_support.finish(process).code, 130)
        self.assertSaysOneLine(home.run("serve", "--port", "0", "--bind", "192.0.2.1"))
        for port in ("65536", "-1", "x"):
            self.assertEqual(home.run("serve", "--port", port).code, 2)

    def test_contacts(self):
        with Server(self.home()) as server:
            self.assertEqual(server.names(), [])
            hostile = "</script><script>alert(1)</script>\"'\\\u2028%%VCF_FILE%%"
            for name, person in (("Ada", 1), (hostile, 2)):
                self.assertEqual(server.save(NEW, field(FIRST_NAME, name)), {"success": True, "recordId": person})
            self.assertEqual(server.names(), ["Ada", hostile])
            self.assertEqual(server.save("1", field(FIRST_NAME, ""), new_entry(PHONE, "555", "_$!<Work>!$_")),
                             {"success": True, "recordId": 0})
            work = next(item for item in server.form(1)["items"] if item.get("value") == "555")
            self.assertEqual((work["identifier"], work["index"]), ("_$!<Work>!$_", "0"))
            self.assertEqual([server.post("/removerecord.json", "2") for _ in range(2)],
                             [b'{"success":"1"}', b'{"success":"0"}'])
            self.assertEqual(server.names(), [""])

    def test_foreign_pages_change_nothing(self):
        with Server(self.home(), "--host-name", "phone.example") as server:
            save = json.dumps({"id": NEW, "records": []})
            for headers, status in (({"Origin": "http://evil.example"}, 403), ({"Origin": "null"}, 403),
                                    ({"Host": "evil.example"}, 403), ({"Sec-Fetch-Site": "cross-site"}, 403)):
                self.assertEqual(server.post("/saverecord.json", save, headers), status, headers)
            self.assertEqual(server.names(), [])
            own = {"Host": "phone.example", "Origin": "http://phone.example"}
            self.assertEqual(server.post("/saverecord.json", save, own), b'{"success":true,"recordId":1}')

    def test_download(self):
        content = bytes(range(256)) * 1000
        home = self.home_with_file("Varnok-2024-03-05-140709-2.vcf", content)
        with Server(home, "--language", "de") as server:
            path = "/Varnok-2024-03-05-140709-2.vcf"
            status, headers, body = server.request("GET", path)
            self.assertEqual((status, body), (200, content))
            self.assertEqual({name: headers[name] for name in
                              ("Content-Type", "Content-Disposition", "Pragma", "Expires", "Cache-Control")},
                             {"Content-Type": "text/x-vcard", "Content-Disposition": "inline; filename=" + path[1:],
                              "Pragma": "public", "Expires": "0",
                              "Cache-Control": "must-revalidate, post-check=0, pre-check=0"})
            status, _, body = server.request("GET", path, headers={"Range": "bytes=1000-1999"})
            self.assertEqual((status, body), (206, content[1000:2000]))
            self.assertIn(path[1:].encode(), server.get("/download.html"))
            self.assertNotIn(b"%%", server.get("/download.html") + server.get("/upload.html"))
            for page in ("/", "/edit.html", "/download.html"):
                self.assertEqual(server.request("GET", page)[1]["X-Frame-Options"], "DENY")

    def test_upload_with_curl(self):
        home = self.home_with_file("Varnok-1.vcf", b"last")
        content = os.urandom(3_000_000) + b"\r\n" + os.urandom(100)
        source = self.file("source", content)
        with Server(home) as server:
            for name in ("kept.vcf", "Zoë 50%.bin", "C:\\\\Users\\\\ada\\\\last.bin"):
                subprocess.run(["curl", "-sf", "-o", "/dev/null", "-F", f'file=@{source};filename="{name}"',
                                server.url + "/upload.html"], check=True, timeout=cli_support.TIME_LIMIT)
            for name in ("..", "%2e%2e%2fcontacts.db", "records.json", "a%00b", ".x.part-abcdef"):
                self.assertEqual(server.upload(name, b"x")[0], 200, name)
            self.assertIn(b"upload.html", server.upload("", b"")[2])
        stored = {path.name: path for path in home.documents.iterdir()}
        self.assertEqual(set(stored), {"Varnok-1.vcf", "kept.vcf", "Zoë 50%.bin", "last.bin"})
        for name in set(stored) - {"Varnok-1.vcf"}:
            self.assertTrue(stored[name].read_bytes() == content, name)
            self.assertEqual(stored[name].stat().st_mode & 0o777, 0o600)

    def test_uploads_at_once(self):
        home = self.home()
        contents = [os.urandom(1000) * (UPLOAD_SIZE // 1000) for _ in range(UPLOADS)]
        with Server(home) as server, concurrent.futures.ThreadPoolExecutor(UPLOADS) as pool:
            list(pool.map(lambda i: server.upload(f"{i}.bin", contents[i]), range(UPLOADS)))
        for i, content in enumerate(contents):
            self.assertTrue((home.documents / f"{i}.bin").read_bytes() == content, i)
        self.assertEqual(home.stale_parts(), [])

    def test_saves_at_once(self):
        home = self.home()
        with Server(home) as server, concurrent.futures.ThreadPoolExecutor(SAVERS) as pool:
            shared = server.save(NEW, field(FIRST_NAME, "shared"))["recordId"]

            def saver(i):
                server.save(shared, new_entry(PHONE, f"{i}", "own"))
                return [server.save(NEW, field(FIRST_NAME, f"{i}-{n}"))["recordId"] for n in range(5)]

            ids = {person for people in pool.map(saver, range(SAVERS)) for person in people}
            self.assertEqual(len(ids), SAVERS * 5)
        shown = home.json("contacts", "show", str(shared))
        phones = {entry["value"] for entry in shown["properties"]["kABPersonPhoneProperty"]}
        self.assertEqual(phones, {f"{i}" for i in range(SAVERS)})
        self.assertEqual({person["name"] for person in home.json("contacts")},
                         {"shared"} | {f"{i}-{n}" for i in range(SAVERS) for n in range(5)})

    def test_access_code(self):
        process = self.home().start("--json", "serve", "--port=0", "--bind=127.0.0.1", "--access-code")
        document = json.loads(process.stdout.readline())
        self.assertRegex(document["accessCode"], r"\A\d{6}\Z")
        with contextlib.closing(http.client.HTTPConnection(urllib.parse.urlsplit(document["url"]).netloc)) as connection:
            def ask(method, path, body=None, headers=None):
                connection.request(method, path, body, headers or {})
                answer = connection.getresponse()
                answer.read()
                return answer.status, answer.headers["Set-Cookie"]

            self.assertEqual(ask("GET", "/records.json")[0], 403)
            status, cookie = ask("POST", "/access", "code=" + document["accessCode"])
            self.assertEqual(status, 302)
            self.assertEqual(ask("GET", "/records.json", headers={"Cookie": cookie.split(";")[0]})[0], 200)
        process.send_signal(signal.SIGINT)
        cli_support.finish(process)

    def test_request_log(self):
        process = self.home().start("serve", "--port=0", "--bind=127.0.0.1", "--request-log", "--read-only")
        url = process.stdout.readline().decode().split()[-1]
        with contextlib.closing(http.client.HTTPConnection(urllib.parse.urlsplit(url).netloc)) as connection:
            connection.request("POST", "/saverecord.json", "{}")
            self.assertEqual(connection.getresponse().status, 403)
        process.send_signal(signal.SIGINT)
        self.assertRegex(cli_support.finish(process).err, r"\A127\.0\.0\.1 POST /saverecord\.json 403 0 bytes \d+ ms\n\Z")


class Large(cli_support.Case):
    def test_transfers_take_little_memory(self):
        home = self.home()
        home.ok("settings", "set", "FILE_NAME", "large.bin")
        home.ok("settings", "set", "FILE_PATH", str(home.documents / "large.bin"))
        piece = os.urandom(1 << 20)
        pieces = TRANSFER // len(piece)
        header = part_header("large.bin")
        fields = {"Content-Length": str(len(header) + pieces * len(piece) + len(CLOSING))}
        options = os.environ.get("ASAN_OPTIONS", "") + ":quarantine_size_mb=1"

        def body():
            yield header
            for _ in range(pieces):
                yield piece
            yield CLOSING

        with Server(home, env={"ASAN_OPTIONS": options}) as server:
            server.get("/records.json")
            before = server.peak()
            self.assertEqual(server.request("POST", "/upload.html", body(), fields)[0], 200)
            self.assertEqual((home.documents / "large.bin").stat().st_size, pieces * len(piece))
            with contextlib.closing(server.connection()) as connection:
                connection.request("GET", "/large.bin")
                answer = connection.getresponse()
                for number in range(pieces):
                    self.assertTrue(answer.read(len(piece)) == piece, number)
            extra = server.peak() - before
        print(f"{TRANSFER / 1e6:.0f} MB up and down: {extra / 1e6:.1f} MB more memory")
        self.assertLess(extra, MEMORY)


class Kill(cli_support.Case):
    """Every save that was acknowledged before a kill is there after it."""

    def test_saves(self):
        seed = int(os.environ.get("VARNOK_TEST_SEED") or random.randrange(1 << 32))
        print(f"seed {seed}")
        chance = random.Random(seed)
        home = self.home()
        with Server(home) as server:
            people = [server.save(NEW)["recordId"] for _ in range(KILLED_SAVERS)]
        acknowledged = set()
        edits = 0
        for trial in range(KILLS):
            with self.subTest(trial=trial):
                server = Server(home)
                notes = [0] * KILLED_SAVERS
                threads = [threading.Thread(target=self.save_on, args=(server, trial, i, people[i], notes, acknowledged))
                           for i in range(KILLED_SAVERS)]
                for thread in threads:
                    thread.start()
                time.sleep(chance.uniform(0, LATEST_KILL))
                server.process.kill()
                for thread in threads:
                    thread.join()
                cli_support.finish(server.process)
                edits += sum(notes)
                self.assert_kept(home, trial, people, notes, acknowledged)
        print(f"{len(acknowledged)} new people and {edits} edits were acknowledged before {KILLS} kills")
        self.assertGreater(len(acknowledged), KILLS)
        self.assertGreater(edits, KILLS)
        self.assertLessEqual(acknowledged, {person["name"] for person in home.json("contacts")})

    @staticmethod
    def save_on(server, trial, i, person, notes, acknowledged):
        """Saves a new person and a note of `person`, in turn, until the server has gone."""
        connection = server.connection()
        try:
            for number in range(1, 1_000_000):
                name = f"{trial}-{i}-{number}"
                for target, item in ((NEW, field(FIRST_NAME, name)), (str(person), field(NOTE, f"{trial}:{number}"))):
                    connection.request("POST", "/saverecord.json", json.dumps({"id": target, "records": [item]}))
                    if json.loads(connection.getresponse().read())["success"] is not True:
                        return
                    if target == NEW:
                        acknowledged.add(name)
                    else:
                        notes[i] = number
        except (OSError, http.client.HTTPException, ValueError):
            pass
        finally:
            connection.close()

    def assert_kept(self, home, trial, people, notes, acknowledged):
        with contextlib.closing(sqlite3.connect(home.contacts_file)) as database:
            self.assertEqual(database.execute("PRAGMA quick_check").fetchall(), [("ok",)])
            names = {name for (name,) in database.execute("SELECT first_name FROM person")}
            self.assertLessEqual(acknowledged, names)
            for person, number in zip(people, notes):
                (note,) = database.execute("SELECT note FROM person WHERE id = ?", (person,)).fetchone()
                if number:
                    self.assertIn(note, (f"{trial}:{number}", f"{trial}:{number + 1}"))


if __name__ == "__main__":
    cli_support.main()
