"""Mails as they arrive at a real mail server and at a stand-in for sendmail, read back by Python's email package; and what
users are told when a mail cannot be sent.

VANTREL_SEND_MAIL and VANTREL_SEND_MAIL_WINDOWS name the programs that send a mail described in a file, VANTREL_WINE what runs
the latter; tests of what is unset are skipped.
"""

import base64
import contextlib
import email
import email.header
import email.policy
import email.utils
import importlib.util
import itertools
import json
import os
import pathlib
import random
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import textwrap
import threading
import unittest

import wine

HERE = pathlib.Path(__file__).resolve().parent
TIMEOUT = 120  # only there to catch a hang
PASSWORD = "s3cret P\u00e4ssword"
NASTY_TEXTS = ["Report", "", "Pr\u00fcfbericht f\u00fcr M\u00fcller", "\U0001f4be disk full \U0001f600" * 12, "x" * 1000,
               "\u00e4\U0001f600" * 300, "word " * 200 + "end", "=?utf-8?Q?no_word?=", 'say "yes" \\ no', " blanks ", ",;<>@"]
FILE_NAMES = ["data.csv", "Pr\u00fcfbericht \U0001f600.xml", 'a "quoted" back%slash.txt', "n" * 180 + "\u00fc.ZIP",
              "x;y='z',.html", "no extension", "\u4e2d" * 60 + ".pdf"]
TYPES = {".csv": "text/csv", ".xml": "application/xml", ".txt": "text/plain", ".zip": "application/zip", ".html": "text/html",
         ".pdf": "application/pdf"}


def server_python():
    """An interpreter that has aiosmtpd: Debian's package is for Debian's Python only."""
    return sys.executable if importlib.util.find_spec("aiosmtpd") else "/usr/bin/python3"


def unfolded(text):
    return re.sub(r"\r?\n(?=[ \t])", "", str(text))


class MailTest(unittest.TestCase):
    command = None

    def setUp(self):
        if not self.command:
            self.skipTest("no program to run")
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="vantrel-mail-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        (self.folder / "inbox").mkdir()

    def native(self, path):
        return str(path)

    def file(self, name, contents):
        path = self.folder / name
        path.write_bytes(contents)
        return path

    def send(self, environment=None, attach=(), patience=TIMEOUT, **settings):
        """Sends a mail to the loopback host unless told otherwise. Returns the message that it was refused with, or
        nothing."""
        values = {"host": "127.0.0.1", "security": "none", "from": "sender@example.org", "to": "a@example.org", **settings}
        pieces = [f"{name}={value}" for name, value in values.items()]
        pieces += [f"attach={self.native(path)}" for path in attach]
        description = self.file("mail.settings", "".join(piece + "\0" for piece in pieces).encode())
        clean = {name: value for name, value in os.environ.items() if name not in ("SSL_CERT_FILE", "SSL_CERT_DIR")}
        run = wine.run([*self.command, self.native(description)], stdin=subprocess.DEVNULL, capture_output=True,
                       timeout=patience, env={**clean, **(environment or {})}, cwd=self.folder)
        message = wine.without_remarks(run.stderr).decode().strip()
        self.assertEqual((run.returncode, run.stdout), (1 if message else 0, b""), message)
        self.assertLessEqual(len(message.splitlines()), 1, message)
        self.assertNotIn(PASSWORD, message)
        return message

    def assert_refused(self, *words, **settings):
        """The message holds these words, and nothing arrived."""
        message = self.send(**settings)
        for word in words or ("?",):
            self.assertIn(word, message)
        self.assertEqual(self.arrived(), [])

    @contextlib.contextmanager
    def server(self, **settings):
        """Gives the port of a server that keeps what it gets."""
        with open(self.folder / "server.log", "wb") as log:  # it has much to say of clients that leave in anger
            process = subprocess.Popen([server_python(), HERE / "mail_server.py", self.folder / "inbox", json.dumps(settings)],
                                       stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=log)
        try:
            yield int(process.stdout.readline())
        finally:
            process.kill()
            process.wait()
            process.stdout.close()

    def arrived(self):
        """The mails that the server has, as (facts, bytes); they are gone from there afterwards."""
        mails = []
        for path in sorted((self.folder / "inbox").glob("*.json"), key=lambda file: int(file.stem)):
            contents = path.with_suffix(".eml")
            mails.append((json.loads(path.read_text()), contents.read_bytes()))
            path.unlink()
            contents.unlink()
        return mails

    def check_form(self, raw):
        """What every mail has to keep to on the wire."""
        self.assertTrue(raw.isascii())
        self.assertEqual(re.sub(rb"\r\n", b"", raw).count(b"\n") + re.sub(rb"\r\n", b"", raw).count(b"\r"), 0)
        self.assertLessEqual(max(map(len, raw.split(b"\r\n"))), 998)
        for word in re.findall(rb"=\?utf-8\?B\?(.*?)\?=", raw):
            base64.b64decode(word, validate=True).decode()  # Python forgives a character cut in two, others do not
        mail = email.message_from_bytes(raw, policy=email.policy.default)
        for part in mail.walk():
            self.assertEqual(part.defects, [])
        for name in ("Date", "From", "To", "Subject", "Message-ID", "MIME-Version"):
            self.assertEqual(len(mail.get_all(name)), 1, name)
        self.assertIsNotNone(mail["Date"].datetime)
        self.assertRegex(mail["Message-ID"], r"^<[0-9a-f]{32}@[^@>]+>$")
        return mail


class Deliveries:
    """What arrives, on both platforms."""

    file_names = FILE_NAMES
    system_checks_certificates = True

    def test_every_text_arrives(self):
        texts = ["", "plain\n.\n..dots\r\nFrom me\n", "gr\u00fc\u00dfe \U0001f600\n.\n", "y" * 3000, "bell \a and\ttab"]
        cases = list(itertools.zip_longest(NASTY_TEXTS, texts, fillvalue="same"))
        with self.server() as port:
            for number, (subject, text) in enumerate(cases, 1):
                self.assertEqual(self.send(port=port, subject=subject, text=text), "")
                self.assertEqual(len(list((self.folder / "inbox").glob("*.json"))), number, f"lost: {subject!r}")
        mails = self.arrived()
        self.assertEqual(len({self.check_form(raw)["Message-ID"] for _, raw in mails}), len(mails))
        for (subject, text), (facts, raw) in zip(cases, mails):
            with self.subTest(subject=subject, text=text[:20]):
                mail = self.check_form(raw)
                self.assertEqual(unfolded(mail["Subject"]), subject)
                self.assertEqual(facts["from"], "sender@example.org")
                content = mail.get_payload(decode=True).decode().replace("\r\n", "\n")
                self.assertEqual(content.rstrip("\n"), text.replace("\r\n", "\n").rstrip("\n"))

    def test_header_lines_from_outside_stay_text(self):
        with self.server() as port:
            self.assertEqual(self.send(port=port, subject="x\r\nBcc: other@example.org\r\n\r\nbody"), "")
        (facts, raw), = self.arrived()
        mail = self.check_form(raw)
        self.assertEqual((facts["to"], mail["Bcc"]), (["a@example.org"], None))
        self.assertEqual(mail["Subject"].split(), ["x", "Bcc:", "other@example.org", "body"])

    def test_several_recipients_with_names(self):
        recipients = [("", "a@example.org"), ("M\u00fcller, J\u00f6rg", "b.c+d@example.org"), ('The "Boss" \\', "e@localhost"),
                      ("\U0001f600" * 60, "f@example.org"), ("Plain Name", "g@a-b.example")]
        listed = [f'"{name}" <{address}>'.replace('"Boss" \\', '\\"Boss\\" \\\\') if name else address
                  for name, address in recipients]
        with self.server() as port:
            self.assertEqual(self.send(port=port, to=" ; ".join(listed) + ",", **{"from": "\u00dcber <me@example.org>"}), "")
        (facts, raw), = self.arrived()
        self.check_form(raw)
        self.assertEqual(facts["from"], "me@example.org")
        self.assertEqual(facts["to"], [address for _, address in recipients])
        # The newer interface puts blanks between encoded words of a name.
        old = email.message_from_bytes(raw)
        read = [(str(email.header.make_header(email.header.decode_header(name))), address)
                for name, address in email.utils.getaddresses([old["To"], old["From"]])]
        self.assertEqual(read, [*recipients, ("\u00dcber", "me@example.org")])

    def test_attachments_arrive_byte_by_byte(self):
        seeded = random.Random(5)
        # Around the ends of lines and of the pieces in which a file is read.
        sizes = [0, 1, 56, 57, 58, 58367, 58368, 58369, 300_001]
        names = self.file_names + [f"{size}.bin" for size in sizes[len(self.file_names):]]
        files = [self.file(name, seeded.randbytes(size)) for name, size in zip(names, sizes)]
        with self.server() as port:
            self.assertEqual(self.send(port=port, text="see \u00fc", attach=files), "")
        (_, raw), = self.arrived()
        body, *parts = self.check_form(raw).iter_parts()
        self.assertEqual(body.get_content().strip(), "see \u00fc")
        self.assertEqual([part.get_filename() for part in parts], names)
        for part, path in zip(parts, files):
            with self.subTest(name=path.name):
                self.assertEqual(part.get_payload(decode=True), path.read_bytes())
                self.assertEqual(part.get_content_disposition(), "attachment")
                self.assertEqual(part.get_content_type(), TYPES.get(path.suffix.lower(), "application/octet-stream"))

    def test_login(self):
        with self.server(user="reports", password=PASSWORD) as port:
            self.assertEqual(self.send(port=port, user="reports", password=PASSWORD), "")
            (facts, _), = self.arrived()
            self.assertEqual(facts["user"], "reports")
            self.assert_refused(f"127.0.0.1:{port}", '"reports"', "password", port=port, user="reports", password="wrong")
            self.assert_refused('"other"', port=port, user="other", password=PASSWORD)
            self.assert_refused(f"127.0.0.1:{port}", "530", port=port)

    def test_the_user_is_the_sender_when_none_is_named(self):
        with self.server(user="reports@example.org", password=PASSWORD) as port:
            self.assertEqual(self.send(port=port, user="reports@example.org", password=PASSWORD, **{"from": ""}), "")
        (facts, raw), = self.arrived()
        self.assertEqual(facts["from"], "reports@example.org")
        self.assertEqual(self.check_form(raw)["From"], "reports@example.org")

    def certificate(self, folder="."):
        """A certificate for "localhost" and its key."""
        (self.folder / folder).mkdir(exist_ok=True)
        paths = {name: str(self.folder / folder / f"{name}.pem") for name in ("certificate", "key")}
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                        "-subj", "/CN=localhost", "-addext", "subjectAltName=DNS:localhost", "-days", "2",
                        "-keyout", paths["key"], "-out", paths["certificate"]], check=True, capture_output=True)
        return paths

    def test_encryption(self):
        paths = self.certificate()
        trust, mistrust = ({"SSL_CERT_FILE": self.native(known["certificate"])}
                           for known in (paths, self.certificate("other")))
        for security in ("starttls", "tls"):
            with self.subTest(security=security), self.server(security=security, user="u", password=PASSWORD, **paths) as port:
                login = {"port": port, "security": security, "user": "u", "password": PASSWORD}
                self.assertEqual(self.send(trust, host="localhost", **login), "")
                (facts, _), = self.arrived()
                self.assertEqual((facts["user"], facts["encrypted"]), ("u", True))
                self.assert_refused("certificate", "not trusted", environment=mistrust, host="localhost", **login)
                if self.system_checks_certificates:
                    self.assert_refused("certificate", "not trusted", host="localhost", **login)
                # The certificate is not for the address.
                self.assert_refused("certificate", "not trusted", environment=trust, **login)
                missing = {"SSL_CERT_FILE": self.native(self.folder / "missing.pem")}
                self.assert_refused("SSL_CERT_FILE", environment=missing, host="localhost", **login)

    def test_encryption_is_insisted_on(self):
        with self.server() as port:
            self.assert_refused("STARTTLS", port=port, security="starttls", user="u", password=PASSWORD)
            self.assert_refused("encryption", port=port, security="tls", user="u", password=PASSWORD)


class Refusals:
    """What users are told, on both platforms."""

    def test_refused_recipients_and_mails(self):
        with self.server(largest=100_000) as port:
            self.assert_refused("the recipient <nobody@example.org>", "550 5.1.1", port=port,
                                to="a@example.org;nobody@example.org;b@example.org")
            self.assert_refused("refuses the mail", "554 5.7.1", port=port, subject="spam")
            self.assert_refused("552", "size", port=port, attach=[self.file("large.bin", bytes(100_000))])

    def test_attachments_that_cannot_be_read(self):
        with self.server() as port:
            good = self.file("good.csv", b"1,2")
            self.assert_refused("missing \u00fc.csv", "cannot be attached", port=port,
                                attach=[good, self.folder / "missing \u00fc.csv"])
            self.assert_refused("inbox", "cannot be attached", port=port, attach=[self.folder / "inbox"])

    def test_servers_that_are_not_there(self):
        with socket.socket() as unused:
            unused.bind(("127.0.0.1", 0))  # nobody listens, and nobody else gets the port
            port = unused.getsockname()[1]
            self.assert_refused(f'"127.0.0.1:{port}"', "does not answer", port=port)
        self.assert_refused("no-such-host.invalid", "is not known", host="no-such-host.invalid")
        for host in ("example.org:25", "example.org/x", "u@example.org", "\u00fc.example"):
            with self.subTest(host=host):
                self.assert_refused(host, "no name of a mail server", host=host)
        self.assert_refused("70000", "port", port=70000)

    @contextlib.contextmanager
    def talking(self, talk):
        """The port of a server that talks with one client and then hangs up."""
        def serve():
            connection, _ = listener.accept()
            with connection, connection.makefile("rb") as lines:
                talk(connection, lines)

        with socket.create_server(("127.0.0.1", 0)) as listener:
            thread = threading.Thread(target=serve)
            thread.start()
            yield listener.getsockname()[1]
            thread.join()

    def scripted(self, *replies):
        """One that says one thing after the other, each after a line from the client but the first."""
        def talk(connection, lines):
            for number, reply in enumerate(replies):
                if number and not lines.readline():
                    return
                connection.sendall(reply)

        return self.talking(talk)

    def test_servers_that_misbehave(self):
        hello = b"220 hi\r\n", b"250-hi\r\n250 AUTH PLAIN\r\n", b"334 \r\n"
        for replies, words in (
                ((), ("ended the conversation",)),
                (hello[:1], ("ended the conversation",)),
                ((*hello, b"235 in\r\n", b"250 ok\r\n", b"250 ok\r\n"), ("ended the conversation",)),
                ((b"554 go\x1b[31m away\r\n",), ("554 go\\x1B[31m away",)),
                ((*hello, b"235 in\r\n", b"550-first line\r\n550 second line\r\n"),
                 ("<sender@example.org>", "first line second line")),
                # No login is offered, so that it goes on without.
                ((hello[0], b"250 hi\r\n", b"530 log in first\r\n"), ("refuses this mail from", "530 log in first")),
                ((*hello, f"535 {PASSWORD} is wrong\r\n".encode()), ('"u"', "password"))):
            with self.subTest(replies=replies), self.scripted(*replies) as port:
                self.assert_refused(f'"127.0.0.1:{port}"', *words, port=port, user="u", password=PASSWORD)

    def test_servers_that_repeat_the_password(self):
        raw = PASSWORD.encode()
        plain, login, hexed = base64.b64encode(raw), base64.b64encode(b"\0u\0" + raw), raw.hex().encode()
        hello = b"220 hi\r\n", b"250-hi\r\n250 AUTH PLAIN\r\n", b"334 \r\n"
        for said in (plain + b" is wrong", login, b"xy" + login, raw.upper(), hexed, raw[:8] + b"\r\n535 " + raw[8:],
                     b"5.7.8 " + login[:9] + b"\r\n535 5.7.8 " + login[9:], b"s%33cret%20P%C3%A4ssword", b"x" * 592 + raw,
                     b"x" * 590 + b" " + plain, plain.replace(b"+", b"-").replace(b"/", b"_").rstrip(b"=")):
            reply = b"535" + (b"-" if b"\r\n" in said else b" ") + said + b"\r\n"
            for replies in ((*hello, reply), (*hello, b"235 in\r\n", reply.replace(b"535", b"550"))):
                with self.subTest(replies=replies), self.scripted(*replies) as port:
                    message = self.send(port=port, user="u", password=PASSWORD).encode()
                    self.assertIn(b"may hold the password", message)
                    for piece in (raw, plain, login, hexed, b"s%33cret"):
                        for start in range(len(piece) - 7):
                            self.assertNotIn(piece[start:start + 8].lower(), message.lower())

    def test_a_server_that_does_not_say_goodbye_has_the_mail(self):
        def talk(connection, lines):
            connection.sendall(b"220 hi\r\n")
            in_mail = False
            for line in lines:
                if in_mail and line != b".\r\n" or line == b"QUIT\r\n":
                    continue  # and after the latter nothing more is said until the other side has gone
                in_mail = line == b"DATA\r\n"
                connection.sendall(b"354 go on\r\n" if in_mail else b"250 fine\r\n")

        # Less than what a silent server is given, so that waiting for the goodbye is a failure.
        with self.talking(talk) as port:
            self.assertEqual(self.send(port=port, patience=45), "")


@unittest.skipUnless(os.environ.get("VANTREL_SEND_MAIL"), "no program to run")
class LinuxTest(Deliveries, Refusals, MailTest):
    command = [os.environ.get("VANTREL_SEND_MAIL")]

    def test_libcurl_cannot_be_loaded(self):
        for name in ("libcurl.so.4", "libcurl-gnutls.so.4"):
            self.file(name, b"not a library")
        self.assert_refused("libcurl.so.4", "Install it", environment={"LD_LIBRARY_PATH": str(self.folder)})


@unittest.skipUnless(os.environ.get("VANTREL_SEND_MAIL_WINDOWS"), "no program to run")
class WindowsTest(Deliveries, Refusals, MailTest):
    command = [os.environ.get("VANTREL_WINE", ""), os.environ.get("VANTREL_SEND_MAIL_WINDOWS")]
    file_names = [re.sub('"', "_", name) for name in FILE_NAMES]
    system_checks_certificates = False  # Wine's Schannel does not hold them against the system's store, as Windows' does

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        wine.keep_running(cls)

    def native(self, path):
        return "Z:" + str(path).replace("/", "\\")

    def test_there_is_no_sendmail(self):
        self.assert_refused("No mail server is named", host="")


@unittest.skipUnless(os.environ.get("VANTREL_SEND_MAIL"), "no program to run")
class SendmailTest(MailTest):
    """A stand-in for sendmail takes the mails. What it got is in "arguments" and "mail", the latter only when its input came
    to an end."""

    command = [os.environ.get("VANTREL_SEND_MAIL")]

    def sendmail(self, body="", before=""):
        script = self.folder / "send mail"
        script.write_text(textwrap.dedent(f"""\
            #!/usr/bin/python3
            import os, signal, sys
            {before}
            mail = sys.stdin.buffer.read()
            with open({str(self.folder / "mail")!r}, "wb") as file:
                file.write(mail)
            with open({str(self.folder / "arguments")!r}, "w") as file:
                file.write("\\n".join(sys.argv[1:]))
            {body}
            """))
        script.chmod(0o755)
        return {"host": "", "sendmail": script}

    def test_it_gets_the_mail_that_a_server_gets(self):
        settings = {"to": "a@example.org, B <b@example.org>", "subject": "\u00fc" * 50, "text": "one\r\n.\n\u00fc",
                    "attach": [self.file("d\u00fc.csv", bytes(range(256)) * 500)]}
        with self.server() as port:
            self.assertEqual(self.send(port=port, **settings), "")
        (_, by_server), = self.arrived()
        self.assertEqual(self.send(**settings, **self.sendmail()), "")
        by_sendmail = (self.folder / "mail").read_bytes()
        self.assertNotIn(b"\r", by_sendmail)

        def without_stamp(raw):
            unique = re.search(rb"Message-ID: <(\w+)@", raw)[1]
            return re.sub(rb"Date: [^\r\n]*", b"Date", raw.replace(unique, b"unique"))

        self.assertEqual(without_stamp(by_sendmail.replace(b"\n", b"\r\n")), without_stamp(by_server))
        self.assertEqual((self.folder / "arguments").read_text().split("\n"),
                         ["-i", "-f", "sender@example.org", "--", "a@example.org", "b@example.org"])

    def test_without_a_sender_it_is_sendmails_to_fill_in(self):
        self.assertEqual(self.send(**self.sendmail(), **{"from": ""}), "")
        self.assertEqual((self.folder / "arguments").read_text().split("\n"), ["-i", "--", "a@example.org"])
        self.assertIsNone(email.message_from_bytes((self.folder / "mail").read_bytes())["From"])

    def test_its_failures(self):
        large = [self.file("large.bin", bytes(3_000_000))]
        chatter = "sys.stderr.write('chatter ' * 200_000); sys.stderr.flush()"
        for script, words in (
                (("sys.exit('no\\nqueue\\x1b[31m\\n')",), ["exit code 1: no queue\\x1B[31m"]),
                (("os.kill(os.getpid(), signal.SIGTERM)",), ["ended by signal 15"]),
                (("", "sys.exit(75)"), ["exit code 75"]),
                (("", "sys.exit(0)"), ["before it had read the whole mail"]),
                (("sys.exit(1)", chatter), ["exit code 1: chatter chatter"])):
            with self.subTest(script=script):
                self.assert_refused('send mail"', *words, attach=large, **self.sendmail(*script))

    def test_programs_that_cannot_be_started(self):
        plain = self.file("plain", b"")
        for program in (self.folder / "missing", plain, self.folder):
            with self.subTest(program=program):
                self.assert_refused(str(program), "mail program", host="", sendmail=program)

    def test_half_a_mail_is_never_taken_for_a_whole_one(self):
        # Reading the beginning of one's own memory fails, after the file was opened.
        attach = [self.file("good.bin", bytes(500_000)), "/proc/self/mem"]
        self.assert_refused("/proc/self/mem", "cannot be attached", attach=attach, **self.sendmail())
        self.assertFalse((self.folder / "mail").exists())
        with self.server() as port:
            self.assert_refused("/proc/self/mem", "cannot be attached", attach=attach, port=port)

    def test_large_attachments_are_not_held_in_memory(self):
        large = self.folder / "large.bin"
        with open(large, "wb") as file:
            file.truncate(300 << 20)
        description = self.file("d", b"".join(f"{name}={value}\0".encode() for name, value in (
            ("to", "a@example.org"), ("sendmail", self.folder / "swallow"), ("attach", large))))
        self.file("swallow", b"#!/bin/sh\nexec wc -c >%s\n" % os.fsencode(self.folder / "count")).chmod(0o755)
        process = subprocess.Popen([*self.command, description], stdin=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        self.assertEqual(process.returncode, 0)
        self.assertGreater(int((self.folder / "count").read_text()), (300 << 20) * 4 // 3)
        self.assertLess(usage.ru_maxrss, 64 << 10)  # kilobytes


if __name__ == "__main__":
    unittest.main()
