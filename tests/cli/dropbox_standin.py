"""A stand-in for the Dropbox service: the part of its HTTP API that varnokctl speaks, over TLS on this machine.

It checks what the real one checks, and refuses likewise. What a client should never do is kept in `complaints`.
Faults are ordered by call: `service.faults["files/upload"] = ["cut", "429"]` spoils the first two of these calls.

    cut       the connection ends in the place of an answer, and nothing was done
    lost      it ends after the call was done
    half      a download's connection ends in its middle
    429, 500  with "Retry-After: 0"
    patience  429 with a Retry-After of an hour
    expired   the access token is not accepted any more
    damaged   a byte of a download is another; an upload's content hash does not match
    changed   the file is another one before a download's answer begins
    unnamed   a download's answer does not say what it is
"""

import base64
import collections
import hashlib
import http.server
import json
import pathlib
import re
import secrets
import ssl
import subprocess
import threading
import urllib.parse

APP_KEY = "r4wzt8kq1hyd0mv"
BLOCK = 4 << 20
MOST_IN_ONE_CALL = 150 << 20
STEP = 1 << 20


class ContentHash:
    """SHA-256 of the SHA-256 digests of the blocks."""

    def __init__(self):
        self.digests = b""
        self.block = hashlib.sha256()
        self.room = BLOCK

    def update(self, data):
        view = memoryview(data)
        while view:
            part = view[:self.room]
            self.block.update(part)
            self.room -= len(part)
            view = view[len(part):]
            if self.room == 0:
                self.end_block()

    def end_block(self):
        self.digests += self.block.digest()
        self.block = hashlib.sha256()
        self.room = BLOCK

    def hexdigest(self):
        if self.room < BLOCK:
            self.end_block()
        return hashlib.sha256(self.digests).hexdigest()


def content_hash(path):
    digest = ContentHash()
    with open(path, "rb") as file:
        while piece := file.read(STEP):
            digest.update(piece)
    return digest.hexdigest()


class Refusal(Exception):
    """An answer that is not a success."""

    def __init__(self, code, error, headers=()):
        super().__init__(code, error)
        self.code, self.error, self.headers = code, error, dict(headers)


def endpoint_error(summary, **fields):
    """409 with an error whose tags are the summary's parts."""
    tags = summary.split("/")
    error = {".tag": tags[-1], **fields}
    for tag in reversed(tags[:-1]):
        error = {".tag": tag, tag: error}
    return Refusal(409, {"error_summary": summary + "/...", "error": error})


def certificates(folder):
    """A certificate authority of our own, and what it says of 127.0.0.1."""
    def openssl(*arguments):
        subprocess.run(["openssl", *arguments], check=True, capture_output=True, cwd=folder)

    (folder / "name.cnf").write_text("subjectAltName=IP:127.0.0.1\n")
    openssl("req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days", "2",
            "-subj", "/CN=Stand-in authority", "-keyout", "ca.key", "-out", "ca.pem")
    openssl("req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-subj", "/CN=127.0.0.1",
            "-keyout", "server.key", "-out", "server.csr")
    openssl("x509", "-req", "-in", "server.csr", "-CA", "ca.pem", "-CAkey", "ca.key", "-CAcreateserial", "-days", "2",
            "-extfile", "name.cnf", "-out", "server.pem")
    return folder / "ca.pem"


class Service:
    """Serves from construction to close()."""

    def __init__(self, folder, page=2):
        self.folder = pathlib.Path(folder)
        self.folder.mkdir()
        self.ca = certificates(self.folder)
        self.page = page  # Entries of a listing's page.
        self.files = {}  # Path in lower case to (path, file on disk).
        self.sessions = {}  # Id to the file on disk.
        self.codes = {}  # Code to its challenge.
        self.access, self.refresh = set(), set()
        self.faults = collections.defaultdict(list)
        self.calls = []
        self.complaints = []
        self.lock = threading.RLock()
        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.server.daemon_threads = True
        self.server.handle_error = lambda *_: None  # Broken connections are what these tests are about.
        self.server.service = self
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(self.folder / "server.pem", self.folder / "server.key")
        self.server.socket = context.wrap_socket(self.server.socket, server_side=True, do_handshake_on_connect=False)
        self.address = f"https://127.0.0.1:{self.server.server_address[1]}"
        self.thread = threading.Thread(target=self.server.serve_forever)
        self.thread.start()

    def close(self):
        self.server.shutdown()
        self.thread.join()
        self.server.server_close()

    def environment(self):
        return {"VARNOK_DROPBOX_API": self.address, "VARNOK_DROPBOX_CA": str(self.ca)}

    def agree(self, url):
        """What the user's browser does with the authorization page: the address that it ends at."""
        page, _, query = url.partition("?")
        fields = dict(urllib.parse.parse_qsl(query, strict_parsing=True))
        assert page == self.address + "/oauth2/authorize", page
        expected = {"client_id": APP_KEY, "response_type": "code", "code_challenge_method": "S256",
                    "token_access_type": "offline", "redirect_uri": f"db-{APP_KEY}://2/token"}
        assert expected.items() <= fields.items(), fields
        code = secrets.token_urlsafe(16)
        self.codes[code] = fields["code_challenge"]
        return f"{fields['redirect_uri']}?code={code}&state={fields['state']}"

    def new_path(self):
        return self.folder / secrets.token_hex(8)

    def put(self, path, content):
        """A file that is in the account already."""
        stored = self.new_path()
        stored.write_bytes(content)
        self.files[path.lower()] = (path, stored)

    def stored(self, path):
        return self.files[path.lower()][1]

    def metadata(self, path):
        name, stored = self.files[path.lower()]
        return {".tag": "file", "name": name.rpartition("/")[2], "path_lower": name.lower(), "path_display": name,
                "id": "id:1", "client_modified": "2024-03-05T13:07:09Z", "server_modified": "2024-03-05T13:07:10Z",
                "rev": "1", "size": stored.stat().st_size, "content_hash": content_hash(stored)}

    def entries(self, folder):
        """Of a folder that exists because something is in it."""
        prefix = folder.lower() + "/"
        inside = [name for name, _ in self.files.values() if name.lower().startswith(prefix)]
        if not inside and folder:
            raise endpoint_error("path/not_found")
        folders = sorted({name[len(prefix):].split("/")[0] for name in inside if "/" in name[len(prefix):]})
        return ([self.metadata(name) for name in sorted(inside) if "/" not in name[len(prefix):]]
                + [{".tag": "folder", "name": name, "path_lower": (prefix + name).lower(),
                    "path_display": folder + "/" + name, "id": "id:2"} for name in folders])


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    timeout = 60

    def log_message(self, *_):
        pass

    def handle(self):
        try:
            super().handle()
        except OSError:
            self.close_connection = True

    def do_POST(self):
        service = self.server.service
        self.name = self.path.removeprefix("/2/").lstrip("/")
        self.left = int(self.headers.get("Content-Length", 0))
        with service.lock:
            service.calls.append(self.name)
            faults = service.faults[self.name]
            self.fault = faults.pop(0) if faults else None
        if self.fault == "cut":
            self.close_connection = True
            return
        try:
            self.check_head()
            self.spoil()
            answer = getattr(self, "call_" + re.sub(r"\W", "_", self.name), self.unknown)()
            self.drain()
            if self.fault == "lost":
                self.close_connection = True
            elif answer is not None:
                self.answer(200, answer)
        except Refusal as refusal:
            self.drain()
            self.answer(refusal.code, refusal.error, refusal.headers)

    def answer(self, code, body, headers=None):
        data = body.encode() if isinstance(body, str) else json.dumps(body).encode()
        self.send_response(code)
        self.send_header("Content-Type", "text/plain" if isinstance(body, str) else "application/json")
        self.send_header("Content-Length", str(len(data)))
        for name, value in (headers or {}).items():
            self.send_header(name, value)
        self.end_headers()
        self.wfile.write(data)

    def read(self):
        piece = self.rfile.read(min(STEP, self.left))
        self.left -= len(piece)
        if not piece and self.left:
            raise ConnectionError("the client went")
        return piece

    def drain(self):
        while self.left:
            self.read()

    def body(self):
        data = b""
        while self.left:
            data += self.read()
        return data

    def complain(self, text):
        self.server.service.complaints.append(f"{self.name}: {text}")
        return Refusal(400, f"Error in call to API function: {text}")

    def check_head(self):
        kind = {"oauth2/token": "application/x-www-form-urlencoded", "files/list_folder": "application/json",
                "files/list_folder/continue": "application/json", "files/get_metadata": "application/json",
                "auth/token/revoke": None}.get(self.name, "application/octet-stream")
        given = self.headers.get("Content-Type")
        if kind and given != kind:
            raise self.complain(f"Content-Type {given}")
        if self.headers.get("Expect") or self.headers.get("Transfer-Encoding"):
            raise self.complain("a head that asks for a special body")
        if self.name == "oauth2/token":
            return
        token = self.headers.get("Authorization", "")
        if not token.startswith("Bearer ") or len(token) < 20:
            raise self.complain("no token")
        if self.fault == "expired":
            self.server.service.access.discard(token[7:])
        if token[7:] not in self.server.service.access:
            raise Refusal(401, {"error_summary": "expired_access_token/.", "error": {".tag": "expired_access_token"}})

    def spoil(self):
        if self.fault in ("429", "patience"):
            wait = "3600" if self.fault == "patience" else "0"
            raise Refusal(429, {"error_summary": "too_many_requests/.", "error": {"reason": {".tag": "too_many_requests"}}},
                          {"Retry-After": wait})
        if self.fault == "500":
            raise Refusal(500, "Internal server error", {"Retry-After": "0"})

    def unknown(self):
        raise self.complain("there is no such call")

    def argument(self):
        """The argument in the head, which is ASCII."""
        text = self.headers.get("Dropbox-API-Arg", "")
        if not text.isascii() or not text.isprintable():
            raise self.complain("the argument is not printable ASCII")
        try:
            return json.loads(text)
        except ValueError as error:
            raise self.complain(f"the argument is not JSON: {text}") from error

    def json_body(self):
        try:
            return json.loads(self.body())
        except ValueError as error:
            raise self.complain("the body is not JSON") from error

    def store(self, file, digest):
        """The body goes to the end of `file`."""
        own = ContentHash()
        with open(file, "ab") as out:
            while self.left:
                piece = self.read()
                own.update(piece)
                out.write(piece)
        if self.fault == "damaged" or own.hexdigest() != digest:
            return False
        return True

    # The calls.

    def call_oauth2_token(self):
        service = self.server.service
        fields = dict(urllib.parse.parse_qsl(self.body().decode(), strict_parsing=True))
        if fields.get("client_id") != APP_KEY:
            raise self.complain("client_id")
        if fields["grant_type"] == "authorization_code":
            challenge = base64.urlsafe_b64encode(hashlib.sha256(fields["code_verifier"].encode()).digest())
            if not 43 <= len(fields["code_verifier"]) <= 128 or fields["redirect_uri"] != f"db-{APP_KEY}://2/token":
                raise self.complain("code_verifier or redirect_uri")
            if service.codes.pop(fields["code"], "") != challenge.decode().rstrip("="):
                raise Refusal(400, {"error": "invalid_grant", "error_description": "code doesn't exist or has expired"})
            service.refresh.add("refresh-" + secrets.token_urlsafe(16))
        elif fields["refresh_token"] not in service.refresh:
            raise Refusal(400, {"error": "invalid_grant", "error_description": "refresh token is invalid or revoked"})
        access = "access-" + secrets.token_urlsafe(16)
        service.access.add(access)
        answer = {"access_token": access, "token_type": "bearer", "expires_in": 14400}
        if fields["grant_type"] == "authorization_code":
            answer.update(refresh_token=next(iter(service.refresh)), account_id="dbid:AAA", uid="1", scope="files")
        return answer

    def call_auth_token_revoke(self):
        if self.left:
            raise self.complain("a body")
        self.server.service.access.clear()
        self.server.service.refresh.clear()
        return "null"

    def commit(self, argument, temporary):
        service = self.server.service
        if argument.get("mode") != "overwrite" or not argument.get("path", "").startswith("/"):
            raise self.complain(f"mode or path: {argument}")
        service.files[argument["path"].lower()] = (argument["path"], temporary)
        return {key: value for key, value in service.metadata(argument["path"]).items() if key != ".tag"}

    def call_files_upload(self):
        if self.left > MOST_IN_ONE_CALL:
            raise self.complain("more than one call takes")
        argument, temporary = self.argument(), self.server.service.new_path()
        if argument["path"] == "/full.vcf":
            raise endpoint_error("path/insufficient_space")
        temporary.touch()
        if not self.store(temporary, argument["content_hash"]):
            raise endpoint_error("content_hash_mismatch")
        return self.commit(argument, temporary)

    def call_files_upload_session_start(self):
        if self.argument() != {"close": False} or self.left:
            raise self.complain("a start with more than a start")
        identity = "session-" + secrets.token_hex(4)
        self.server.service.sessions[identity] = self.server.service.new_path()
        self.server.service.sessions[identity].touch()
        return {"session_id": identity}

    def session(self, argument, wrap):
        """The file of the session at the right offset."""
        file = self.server.service.sessions.get(argument["cursor"]["session_id"])
        if file is None:
            raise endpoint_error(wrap + "not_found")
        if argument["cursor"]["offset"] != file.stat().st_size:
            raise endpoint_error(wrap + "incorrect_offset", correct_offset=file.stat().st_size)
        return file

    def add_to_session(self, file, digest):
        size = file.stat().st_size
        if not self.store(file, digest):
            with open(file, "ab") as out:
                out.truncate(size)
            raise endpoint_error("content_hash_mismatch")

    def call_files_upload_session_append_v2(self):
        argument = self.argument()
        if self.left % BLOCK or not self.left:
            raise self.complain("a piece that is not whole blocks")
        self.add_to_session(self.session(argument, ""), argument["content_hash"])
        return "null"

    def call_files_upload_session_finish(self):
        argument = self.argument()
        file = self.session(argument, "lookup_failed/")
        self.add_to_session(file, argument["content_hash"])
        del self.server.service.sessions[argument["cursor"]["session_id"]]
        return self.commit(argument["commit"], file)

    def call_files_get_metadata(self):
        path = self.json_body()["path"]
        if path.lower() not in self.server.service.files:
            raise endpoint_error("path/not_found")
        return self.server.service.metadata(path)

    def listing(self, folder, start):
        service = self.server.service
        entries = service.entries(folder)
        more = start + service.page < len(entries)
        return {"entries": entries[start:start + service.page], "has_more": more,
                "cursor": json.dumps([folder, start + service.page])}

    def call_files_list_folder(self):
        path = self.json_body()["path"]
        if path and not path.startswith("/") or path == "/":
            raise self.complain(f"path {path!r}: the root is the empty path")
        return self.listing(path, 0)

    def call_files_list_folder_continue(self):
        return self.listing(*json.loads(self.json_body()["cursor"]))

    def call_files_download(self):
        service = self.server.service
        path = self.argument()["path"]
        if self.left:
            raise self.complain("a body")
        if path.lower() not in service.files:
            raise endpoint_error("path/not_found")
        if self.fault == "changed":
            service.put(path, service.stored(path).read_bytes()[::-1])
        stored, size = service.stored(path), service.stored(path).stat().st_size
        wanted = re.fullmatch(r"bytes=(\d+)-", self.headers.get("Range", "bytes=0-"))
        start = int(wanted[1])
        if start >= size > 0:
            raise Refusal(416, "Range not satisfiable")
        self.send_response(206 if "Range" in self.headers else 200)
        if "Range" in self.headers:
            self.send_header("Content-Range", f"bytes {start}-{size - 1}/{size}")
        if self.fault != "unnamed":
            self.send_header("Dropbox-API-Result", json.dumps(service.metadata(path)))
        self.send_header("Content-Type", "application/octet-stream")
        self.send_header("Content-Length", str(size - start))
        self.end_headers()
        self.send_file(stored, start, (start + size) // 2 if self.fault == "half" else size)
        return None

    def send_file(self, stored, start, end):
        with open(stored, "rb") as file:
            file.seek(start)
            while start < end:
                piece = file.read(min(STEP, end - start))
                start += len(piece)
                if self.fault == "damaged":
                    piece = bytes([piece[0] ^ 1]) + piece[1:]
                self.wfile.write(piece)
        if self.fault == "half":
            self.close_connection = True
