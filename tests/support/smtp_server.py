#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""A mail server on loopback for the mail tests.

Every message received is kept in FOLDER as NNN.eml (the bytes as they came) and NNN.json (envelope,
decoded subject and body, header names and values), the JSON written last so that a reader never sees
half a message. With --user and --password the server wants a login and accepts only that one; with
--refuse it answers 550 to that recipient. The port chosen is printed as "PORT n"; the server stops when
its standard input closes, so it never outlives the test that started it.
"""
import argparse
import email
import email.policy
import json
import os
import socket
import sys

from aiosmtpd.controller import Controller
from aiosmtpd.smtp import AuthResult, LoginPassword


def login_of(session):
    data = getattr(session, "auth_data", None)
    return data.login.decode() if isinstance(data, LoginPassword) else None


class Keeper:
    def __init__(self, folder, refused):
        self.folder = folder
        self.refused = {address.lower() for address in refused}
        self.count = 0

    async def handle_RCPT(self, server, session, envelope, address, rcpt_options):
        if address.lower() in self.refused:
            return "550 5.1.1 <%s>: destinatario sconosciuto" % address
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        self.count += 1
        base = os.path.join(self.folder, "%03d" % self.count)
        raw = envelope.original_content or envelope.content
        with open(base + ".eml", "wb") as out:
            out.write(raw)
        parsed = email.message_from_bytes(raw, policy=email.policy.default)
        record = {
            "mail_from": envelope.mail_from,
            "rcpt_tos": envelope.rcpt_tos,
            "login": login_of(session),
            "subject": str(parsed["subject"]),
            "body": parsed.get_content(),
            "headers": [[name, str(value)] for name, value in parsed.items()],
            "date_valid": getattr(parsed["date"], "datetime", None) is not None,
            "raw_lines_crlf": all(line.endswith(b"\r\n") for line in raw.splitlines(keepends=True)),
        }
        with open(base + ".tmp", "w", encoding="utf-8") as out:
            json.dump(record, out, ensure_ascii=False)
        os.replace(base + ".tmp", base + ".json")
        return "250 2.0.0 Messaggio accettato"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder")
    parser.add_argument("--user")
    parser.add_argument("--password")
    parser.add_argument("--refuse", action="append", default=[])
    args = parser.parse_args()

    def authenticate(server, session, envelope, mechanism, auth_data):
        ok = (isinstance(auth_data, LoginPassword)
              and auth_data.login == args.user.encode()
              and auth_data.password == args.password.encode())
        return AuthResult(success=ok, handled=False, auth_data=auth_data)

    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        port = probe.getsockname()[1]
    options = {}
    if args.user:
        # Plain loopback: the login is wanted without TLS.
        options = dict(authenticator=authenticate, auth_required=True, auth_require_tls=False)
    controller = Controller(Keeper(args.folder, args.refuse), hostname="127.0.0.1", port=port, **options)
    controller.start()
    print("PORT %d" % port, flush=True)
    try:
        sys.stdin.read()
    finally:
        controller.stop()


if __name__ == "__main__":
    main()
