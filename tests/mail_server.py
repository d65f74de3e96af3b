"""A mail server on a free loopback port that keeps what it gets: FOLDER/N.eml and, after it, N.json with sender,
recipients, user and whether the line was encrypted. Prints its port, then serves until it is ended.

Usage: mail_server.py FOLDER SETTINGS, with these settings as JSON, all of them optional: "user" and "password" (then nobody
else may send), "security" ("starttls" or "tls") with "certificate" and "key", "largest" (bytes of a mail). Recipients that
begin with "nobody" and mails about "spam" are refused.
"""

import asyncio
import json
import pathlib
import ssl
import sys

from aiosmtpd.smtp import SMTP, AuthResult


class Keeper:
    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.count = 0

    async def handle_RCPT(self, server, session, envelope, address, options):
        if address.startswith("nobody"):
            return f"550 5.1.1 <{address}>: nobody here of that name"
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        if b"\r\nSubject: spam\r\n" in envelope.content:
            return "554 5.7.1 looks like spam"
        facts = {"from": envelope.mail_from, "to": envelope.rcpt_tos, "user": session.auth_data,
                 "encrypted": session.ssl is not None or server.transport.get_extra_info("sslcontext") is not None}
        (self.folder / f"{self.count}.eml").write_bytes(envelope.content)
        (self.folder / f"{self.count}.json").write_text(json.dumps(facts), encoding="utf-8")
        self.count += 1
        return "250 OK"


async def serve(folder, settings):
    def authenticate(server, session, envelope, mechanism, data):
        right = (data.login.decode(), data.password.decode()) == (settings["user"], settings["password"])
        return AuthResult(success=right, handled=False, auth_data=data.login.decode())

    security, context = settings.get("security"), None
    if security:
        context = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
        context.load_cert_chain(settings["certificate"], settings["key"])
    login = "user" in settings
    keeper = Keeper(folder)

    def make():
        return SMTP(keeper, hostname="test", data_size_limit=settings.get("largest", 0),
                    tls_context=context if security == "starttls" else None, require_starttls=security == "starttls",
                    auth_required=login, auth_require_tls=False, authenticator=authenticate if login else None)

    server = await asyncio.get_running_loop().create_server(make, "127.0.0.1", 0,
                                                            ssl=context if security == "tls" else None)
    print(server.sockets[0].getsockname()[1], flush=True)
    await server.serve_forever()


asyncio.run(serve(sys.argv[1], json.loads(sys.argv[2])))
