"""Makes a profile of Thunderbird with sample mail: nested folders in several scripts, 2,000 sent messages, a second
account and two address books. Everything is the same in each run."""

import json
import shutil
import sqlite3
from datetime import datetime, timedelta, timezone
from email.utils import formataddr, format_datetime

SENT_MESSAGES = 2000
DAY = datetime(2026, 3, 2, 9, 0, tzinfo=timezone.utc)
ME = "Anna Beispiel <anna@post.example>"
MARK = "X-Postmarker-Spam"

LOCAL = "Mail/Local Folders"
OTHER = "Mail/pop.post.example"

# Keeps Thunderbird from asking and from calling anybody, and lets it run the extension that is installed into the profile without a question.
PREFERENCES = {
    "app.donation.eoy.version.viewed": 999,
    "app.update.enabled": False,
    "browser.aboutwelcome.enabled": False,
    "browser.region.network.url": "",
    "browser.region.update.enabled": False,
    "datareporting.healthreport.uploadEnabled": False,
    "datareporting.policy.dataSubmissionEnabled": False,
    "devtools.console.stdout.chrome": True,
    "devtools.console.stdout.content": True,
    "extensions.autoDisableScopes": 0,
    "extensions.getAddons.cache.enabled": False,
    "extensions.update.enabled": False,
    "mail.inappnotifications.enabled": False,
    "mail.provider.suppress_dialog_on_startup": True,
    "mail.rights.version": 1,
    "mail.shell.checkDefaultClient": False,
    "mail.spotlight.firstRunDone": True,
    "mail.startup.enabledMailCheckOnce": True,
    "mailnews.start_page.enabled": False,
    "mailnews.start_page_override.mstone": "ignore",
    "network.captive-portal-service.enabled": False,
    "network.connectivity-service.enabled": False,
    "services.settings.server": "data:,",
    "toolkit.telemetry.enabled": False,
    "toolkit.telemetry.reportingpolicy.firstRun": False,
}


def account_preferences(mail_port):
    return {
        "mail.accountmanager.accounts": "account1,account2",
        "mail.accountmanager.defaultaccount": "account2",
        "mail.accountmanager.localfoldersserver": "server1",
        "mail.account.account1.server": "server1",
        "mail.server.server1.type": "none",
        "mail.server.server1.hostname": "Local Folders",
        "mail.server.server1.name": "Local Folders",
        "mail.server.server1.userName": "nobody",
        "mail.server.server1.directory-rel": f"[ProfD]{LOCAL}",
        "mail.account.account2.server": "server2",
        "mail.account.account2.identities": "id1",
        "mail.server.server2.type": "pop3",
        "mail.server.server2.hostname": "127.0.0.1",
        "mail.server.server2.port": mail_port,
        "mail.server.server2.name": "anna@post.example",
        "mail.server.server2.userName": "anna",
        "mail.server.server2.directory-rel": f"[ProfD]{OTHER}",
        "mail.server.server2.authMethod": 3,
        "mail.server.server2.check_new_mail": False,
        "mail.server.server2.login_at_startup": False,
        "mail.identity.id1.fullName": "Anna Beispiel",
        "mail.identity.id1.useremail": "anna@post.example",
        "mail.identity.id1.valid": True,
        "mail.identity.id1.fcc_folder": "mailbox://anna@127.0.0.1/Sent",
        "mail.smtpservers": "",
    }


def write_preferences(profile, mail_port, control_port):
    preferences = PREFERENCES | account_preferences(mail_port)
    if control_port:
        preferences |= {"marionette.port": control_port, "remote.prefs.recommended": False}
    lines = [f"user_pref({json.dumps(name)}, {json.dumps(value)});\n" for name, value in preferences.items()]
    (profile / "user.js").write_text("".join(lines), encoding="utf-8")


def message(number, subject, to, sender=ME, **headers):
    """The bytes of a message. Names of people are pairs with their address, as formataddr has them."""
    lines = {"From": sender, "To": to} | headers | {
        "Subject": subject, "Date": format_datetime(DAY + timedelta(minutes=number)),
        "Message-ID": f"<{number}@sample.example>", "Content-Type": "text/plain; charset=UTF-8"}
    return "".join(f"{name}: {value}\n" for name, value in lines.items()).encode() + f"\nMessage {number}.\n".encode()


def write_mbox(path, mails):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(b"".join(b"From - Mon Mar  2 09:00:00 2026\n" + mail + b"\n" for mail in mails))


def sent_message(number):
    """A Cc in every third, a Bcc in every fifth, and names that need quotes or encoding now and then."""
    name = {0: f"Kunde, Nr. {number}", 1: f"Дмитрий {number}", 2: f"Person {number}"}.get(number % 4, "")
    headers = {"X-Mozilla-Status": "0001"}  # read
    if number % 3 == 0:
        headers["Cc"] = f"cc{number}@kunden.example, {formataddr(('Büro', 'Buero@Post.Example'))}"
    if number % 5 == 0:
        headers["Bcc"] = f"bcc{number}@kunden.example"
    return message(number, f"Angebot {number}", formataddr((name, f"to{number}@kunden.example")), **headers)


def write_mail(profile):
    local = profile / LOCAL
    inbox = [message(9000, "Hello", ME, sender="ben@freunde.example"),
             message(9001, "Win a prize", ME, sender="prize@spam.example", **{MARK: "yes"}),
             message(9002, "Lunch", ME, sender="clara@freunde.example", **{MARK: "no, score=0.1"})]
    write_mbox(local / "Inbox", inbox)
    write_mbox(local / "Inbox.sbd" / "Büro", [message(9010, "Rechnung", ME, sender="buero@post.example")])
    write_mbox(local / "Inbox.sbd" / "Büro.sbd" / "Проекты", [])
    write_mbox(local / "Inbox.sbd" / "案件", [message(9020, "Cheap", ME, sender="x@spam.example", **{MARK: "yes"})])
    write_mbox(local / "C# und F#", [])  # the wizard's protocol can't express it
    write_mbox(local / "Trash", [])
    write_mbox(profile / OTHER / "Inbox", [])
    write_mbox(profile / OTHER / "Trash", [])
    write_mbox(profile / OTHER / "Sent", [sent_message(number) for number in range(SENT_MESSAGES)])


def card(name, *addresses):
    emails = "".join(f"EMAIL{';PREF=1' if i == 0 else ''}:{address}\r\n" for i, address in enumerate(addresses))
    return f"BEGIN:VCARD\r\nVERSION:4.0\r\nFN:{name}\r\n{emails}END:VCARD\r\n"


def write_book(path, cards):
    with sqlite3.connect(path) as book:
        book.executescript("""
            CREATE TABLE properties (card TEXT, name TEXT, value TEXT);
            CREATE TABLE lists (uid TEXT PRIMARY KEY, name TEXT, nickName TEXT, description TEXT);
            CREATE TABLE list_cards (list TEXT, card TEXT, PRIMARY KEY(list, card));
            CREATE INDEX properties_card ON properties(card);
            CREATE INDEX properties_name ON properties(name);
            PRAGMA user_version = 4;""")
        for number, text in enumerate(cards):
            book.execute("INSERT INTO properties VALUES (?, '_vCard', ?)", (f"{path.stem}-{number}", text))
    book.close()


def write_books(profile):
    write_book(profile / "abook.sqlite", [card("Ben", "Ben@Freunde.Example", "ben.zwei@freunde.example"),
                                          card("Юлия", "julia@freunde.example"), card("Nobody")])
    write_book(profile / "history.sqlite", [card("Clara", "clara@freunde.example")])


def make_profile(profile, mail_port, control_port):
    """Makes the folder `profile` anew."""
    shutil.rmtree(profile, ignore_errors=True)
    profile.mkdir(parents=True)
    write_preferences(profile, mail_port, control_port)
    write_mail(profile)
    write_books(profile)
