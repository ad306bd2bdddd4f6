#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""A mail server on loopback for the mail tests.

Every message received is kept in FOLDER as NNN.eml (the bytes as they came) and NNN.json (envelope,
decoded subject and body, header names and values), the JSON written last so that a reader never sees
half a message. With --user and --password the server wants a login and accepts only that one; with
--refuse it answers 550 to that recipient. The port chosen is printed as "PORT n"; the server stops when
its standard input closes, so it never outlives the test that started it.

With --tls starttls or --tls tls it speaks TLS, after STARTTLS (which it then insists on) or from the
first byte; its certificate is signed by a CA made for this one server, written to FOLDER/ca.pem for the
client to trust. A login is then taken only over TLS.
"""
import argparse
import datetime
import email
import email.policy
import ipaddress
import json
import os
import socket
import ssl
import sys

from aiosmtpd.controller import Controller
from aiosmtpd.smtp import AuthResult, LoginPassword


def login_of(session):
    data = getattr(session, "auth_data", None)
    return data.login.decode() if isinstance(data, LoginPassword) else None


def make_certificates(folder):
    """A CA and the server's certificate for 127.0.0.1 signed by it; the server's SSL context."""
    from cryptography import x509
    from cryptography.hazmat.primitives import hashes, serialization
    from cryptography.hazmat.primitives.asymmetric import ec
    from cryptography.x509.oid import NameOID

    now = datetime.datetime.now(datetime.timezone.utc)

    def certificate(subject, key, issuer, issuer_key, is_ca):
        def name(text):
            return x509.Name([x509.NameAttribute(NameOID.COMMON_NAME, text)])

        builder = (x509.CertificateBuilder()
                   .subject_name(name(subject))
                   .issuer_name(name(issuer))
                   .public_key(key.public_key())
                   .serial_number(x509.random_serial_number())
                   .not_valid_before(now - datetime.timedelta(minutes=5))
                   .not_valid_after(now + datetime.timedelta(days=1))
                   .add_extension(x509.BasicConstraints(ca=is_ca, path_length=None), critical=True))
        if not is_ca:
            builder = builder.add_extension(x509.SubjectAlternativeName(
                [x509.IPAddress(ipaddress.ip_address("127.0.0.1")), x509.DNSName("localhost")]), critical=False)
        return builder.sign(issuer_key, hashes.SHA256())

    ca_key = ec.generate_private_key(ec.SECP256R1())
    ca = certificate("xVELARIO CA di prova", ca_key, "xVELARIO CA di prova", ca_key, True)
    key = ec.generate_private_key(ec.SECP256R1())
    cert = certificate("127.0.0.1", key, "xVELARIO CA di prova", ca_key, False)
    paths = {name: os.path.join(folder, name) for name in ("ca.pem", "server.pem", "server.key")}
    pem = serialization.Encoding.PEM
    with open(paths["ca.pem"], "wb") as out:
        out.write(ca.public_bytes(pem))
    with open(paths["server.pem"], "wb") as out:
        out.write(cert.public_bytes(pem))
    with open(paths["server.key"], "wb") as out:
        out.write(key.private_bytes(pem, serialization.PrivateFormat.PKCS8, serialization.NoEncryption()))
    context = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
    context.load_cert_chain(paths["server.pem"], paths["server.key"])
    return context


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
            "tls": server.transport.get_extra_info("ssl_object") is not None,
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
    parser.add_argument("--tls", choices=["starttls", "tls"])
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
        # aiosmtpd counts only STARTTLS as TLS: after it the login is insisted on; otherwise it is taken
        # on the connection as it is, plain or TLS from the first byte.
        options = dict(authenticator=authenticate, auth_required=True, auth_require_tls=args.tls == "starttls")
    if args.tls == "starttls":
        options.update(tls_context=make_certificates(args.folder), require_starttls=True)
    elif args.tls == "tls":
        options.update(ssl_context=make_certificates(args.folder))
    controller = Controller(Keeper(args.folder, args.refuse), hostname="127.0.0.1", port=port, **options)
    controller.start()
    print("PORT %d" % port, flush=True)
    try:
        sys.stdin.read()
    finally:
        controller.stop()


if __name__ == "__main__":
    main()
