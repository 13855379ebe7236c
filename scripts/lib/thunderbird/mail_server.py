"""A POP3 server for one mailbox in memory, which lets everybody in: as much of the protocol as Thunderbird uses."""

import socketserver
import threading


class MailServer(socketserver.ThreadingTCPServer):
    """Serves on a port of its own, in a thread of its own, until it is closed."""

    daemon_threads = True

    def __init__(self):
        super().__init__(("127.0.0.1", 0), MailSession)
        self.messages = []  # bytes; None for one that was fetched and deleted
        threading.Thread(target=self.serve_forever, daemon=True).start()

    @property
    def port(self):
        return self.server_address[1]

    def put(self, mail):
        self.messages.append(mail.encode())


class MailSession(socketserver.StreamRequestHandler):
    timeout = 60

    def say(self, line):
        self.wfile.write(line + b"\r\n")

    def say_list(self, lines):
        self.say(b"+OK")
        for line in lines:
            self.say(b"." + line if line.startswith(b".") else line)
        self.say(b".")

    def list(self, number, describe):
        """Answers LIST and UIDL, which take a number or mean all."""
        present = {n: m for n, m in enumerate(self.server.messages, 1) if m is not None}
        if number is None:
            self.say_list(b"%d %s" % (n, describe(n, m)) for n, m in present.items())
        elif number in present:
            self.say(b"+OK %d %s" % (number, describe(number, present[number])))
        else:
            self.say(b"-ERR no such message")

    def answer(self, command, number):
        messages = self.server.messages
        if command in (b"USER", b"PASS", b"NOOP", b"RSET"):
            self.say(b"+OK")
        elif command == b"CAPA":
            self.say_list([b"USER", b"UIDL"])
        elif command == b"STAT":
            sizes = [len(m) for m in messages if m is not None]
            self.say(b"+OK %d %d" % (len(sizes), sum(sizes)))
        elif command == b"LIST":
            self.list(number, lambda _, m: b"%d" % len(m))
        elif command == b"UIDL":
            self.list(number, lambda n, _: b"message-%d" % n)
        elif command in (b"RETR", b"DELE") and number and number <= len(messages) and messages[number - 1]:
            if command == b"RETR":
                self.say_list(messages[number - 1].split(b"\r\n"))
            else:
                messages[number - 1] = None
                self.say(b"+OK")
        else:
            self.say(b"-ERR")

    def handle(self):
        self.say(b"+OK ready")
        for line in self.rfile:
            words = line.split()
            command = words[0].upper() if words else b""
            if command == b"QUIT":
                self.say(b"+OK")
                return
            self.answer(command, int(words[1]) if len(words) > 1 and words[1].isdigit() else None)
