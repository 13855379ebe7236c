-- The sample store: folders, headers of sent mail and contacts of two identities, in the client's
-- tables. make-store runs this file with the databases attached as nora, nora_book, club and
-- club_book. All names and addresses are made up.

-- Folders ---------------------------------------------------------------------------------------

CREATE TABLE nora.Containers(
  ContainerID TEXT PRIMARY KEY,
  ParentContainerID TEXT,   -- empty for the root
  IndexInParent INTEGER,    -- in the root: 0 inbox, 1 outbox, 2 sent, 3 deleted
  Label TEXT,               -- empty for the root
  FileName TEXT,
  SortField INTEGER,
  SortOrder INTEGER,
  Color INTEGER,
  MsgsCount INTEGER,
  NewMsgsCount INTEGER
);
CREATE TABLE club.Containers(
  ContainerID TEXT PRIMARY KEY,
  ParentContainerID TEXT,   -- empty for the root
  IndexInParent INTEGER,    -- in the root: 0 inbox, 1 outbox, 2 sent, 3 deleted
  Label TEXT,               -- empty for the root
  FileName TEXT,
  SortField INTEGER,
  SortOrder INTEGER,
  Color INTEGER,
  MsgsCount INTEGER,
  NewMsgsCount INTEGER
);

-- One row a folder: its number, its parent's, its place among the parent's children, its name.
CREATE TEMP TABLE nora_folders(id INTEGER PRIMARY KEY, parent INTEGER, place, label, messages);
INSERT INTO temp.nora_folders VALUES
  ( 1, NULL, 0, '', 0),
  ( 2,    1, 0,   'Inbox', 128),
  ( 3,    1, 1,   'Outbox', 0),
  ( 4,    1, 2,   'Sent Items', 300),
  ( 5,    1, 3,   'Deleted Items', 41),
  ( 6,    1, 4,   'Drafts', 3),
  ( 7,    1, 5,   'Junk Mail', 512),
  ( 8,    1, 6,   'Kunden', 0),
  ( 9,    8, 0,     'Ελληνικά', 17),
  (10,    9, 0,       'Αθήνα – Συμβόλαια', 9),
  (11,    8, 1,     'Русский', 22),
  (12,   11, 0,       'Договоры 2008', 14),
  (13,    8, 2,     '日本語', 8),
  (14,   13, 0,       '東京支社', 5),
  (15,    1, 7,   'Rechnungen', 36),
  (16,   15, 0,     'Überfällig', 4),
  (17,    1, 8,   'Privat', 60),
  (18,   17, 0,     'Familie', 77),
  (19,   18, 0,       'Großeltern', 12);

CREATE TEMP TABLE club_folders(id INTEGER PRIMARY KEY, parent INTEGER, place, label, messages);
INSERT INTO temp.club_folders VALUES
  ( 1, NULL, 0, '', 0),
  ( 2,    1, 0,   'Inbox', 54),
  ( 3,    1, 1,   'Outbox', 1),
  ( 4,    1, 2,   'Sent Items', 40),
  ( 5,    1, 3,   'Deleted Items', 6),
  ( 6,    1, 4,   'Drafts', 0),
  ( 7,    1, 5,   'Mitglieder', 33),
  ( 8,    7, 0,     'Anträge', 7),
  ( 9,    7, 1,     'Beiträge', 12),
  (10,    1, 6,   'Turniere', 25),
  (11,   10, 0,     'Kořenný memoriál', 4),
  (12,   10, 1,     'Łódź Open', 6),
  (13,   12, 0,       'Paarungen', 10);

INSERT INTO nora.Containers
SELECT printf('{4D1F0A00-5B7C-4E7A-9C55-0F3B6C2A%04X}', id),
       iif(parent IS NULL, '', printf('{4D1F0A00-5B7C-4E7A-9C55-0F3B6C2A%04X}', parent)),
       place, label, iif(parent = 1, label, 'Folder' || id), 1, 0, 0, messages, 0
FROM temp.nora_folders;

INSERT INTO club.Containers
SELECT printf('{91E4B700-2C3D-4A68-B1F0-6A7D8E5C%04X}', id),
       iif(parent IS NULL, '', printf('{91E4B700-2C3D-4A68-B1F0-6A7D8E5C%04X}', parent)),
       place, label, iif(parent = 1, label, 'Folder' || id), 1, 0, 0, messages, 0
FROM temp.club_folders;

-- Sent mail: the recipients come round again and again, in the shapes that mails have them -------

CREATE TABLE nora.Headers(
  HeaderID TEXT PRIMARY KEY,
  ContainerID TEXT,
  FromSender TEXT,
  ToSender TEXT,
  Subject TEXT,
  Account TEXT,
  ReceivedDate INTEGER,
  SentDate INTEGER,
  Unread INTEGER,
  Flagged INTEGER,
  OnlineImages INTEGER,
  HighlightColor INTEGER,
  Priority INTEGER,
  MsgSize INTEGER,
  LightMsgSize INTEGER,
  MsgPos INTEGER,
  Deleted INTEGER
);
CREATE TABLE club.Headers(
  HeaderID TEXT PRIMARY KEY,
  ContainerID TEXT,
  FromSender TEXT,
  ToSender TEXT,
  Subject TEXT,
  Account TEXT,
  ReceivedDate INTEGER,
  SentDate INTEGER,
  Unread INTEGER,
  Flagged INTEGER,
  OnlineImages INTEGER,
  HighlightColor INTEGER,
  Priority INTEGER,
  MsgSize INTEGER,
  LightMsgSize INTEGER,
  MsgPos INTEGER,
  Deleted INTEGER
);

CREATE TEMP TABLE nora_recipients(id INTEGER PRIMARY KEY, toSender TEXT);
INSERT INTO temp.nora_recipients(toSender) VALUES
  ('karl.brandt@example.com'),
  ('<maria.lehmann@example.com>'),
  ('Maria Lehmann <maria.lehmann@example.com>'),
  ('"Brandt, Karl" <Karl.Brandt@Example.COM>'),
  ('Jürgen Müller <j.mueller@example.net>'),
  ('=?iso-8859-1?Q?J=FCrgen_M=FCller?= <j.mueller@example.net>'),
  ('=?utf-8?B?zpXOu86tzr3OtyDOoM6xz4DOsc60zqzOus63?= <eleni.papadaki@athens.example.org>'),
  ('Ελένη Παπαδάκη <eleni.papadaki@athens.example.org>'),
  ('=?koi8-r?B?6dfBziDwxdTSz9c=?= <ivan.petrov@example.net>'),
  ('Иван Петров <ivan.petrov@example.net>'),
  ('=?iso-2022-jp?B?GyRCOzNFREJATzobKEI=?= <yamada.taro@tokyo.example.com>'),
  ('山田太郎 <yamada.taro@tokyo.example.com>'),
  ('karl.brandt@example.com, maria.lehmann@example.com'),
  ('Anna Schulz <anna@example.org>; Bernd Schulz <bernd@example.org>'),
  ('Anna Schulz <anna@example.org>, "Schulz, Bernd" <bernd@example.org>, info@example.com'),
  ('orders+2008@shop.example.com'),
  ('o.hara@example.org'),
  ('"O''Hara, Sean" <o.hara@example.org>'),
  ('printing_dept@example.com'),
  ('rechnung@verlag.example.net'),
  ('Verlag am Markt <rechnung@verlag.example.net>, lektorat@verlag.example.net'),
  ('support@software.example.com (Ticket 4711)'),
  ('Notariat Dr. Hoffmann <kanzlei@hoffmann.example.org>'),
  ('undisclosed-recipients:;'),
  ('Team: lisa@example.com, tom@example.com;'),
  ('François Lefèvre <f.lefevre@paris.example.org>'),
  ('=?windows-1252?Q?Fran=E7ois_Lef=E8vre?= <f.lefevre@paris.example.org>'),
  ('Zoë Núñez <zoe.nunez@example.net>'),
  ('mailto:zoe.nunez@example.net'),
  ('  hans.peter@example.com  '),
  ('HANS.PETER@EXAMPLE.COM'),
  ('first.last@sub.domain.example.org'),
  ('a@b.example.com'),
  ('very.long.address.with.many.dots.in.it@correspondence.department.example.org'),
  ('"karl.brandt@example.com" <karl.brandt@example.com>'),
  ('Oma & Opa <grosseltern@example.net>'),
  (''),
  ('Steuerbüro Krämer <krämer@example.net>'),
  ('reise@bahn.example.com,flug@luft.example.com,hotel@haus.example.com'),
  ('newsletter-bestaetigung@liste.example.org');

CREATE TEMP TABLE club_recipients(id INTEGER PRIMARY KEY, toSender TEXT);
INSERT INTO temp.club_recipients(toSender) VALUES
  ('vorstand@club.example.org'),
  ('Vorstand <vorstand@club.example.org>, kasse@club.example.org'),
  ('"Novák, Jiří" <jiri.novak@example.com>'),
  ('=?utf-8?Q?Ji=C5=99=C3=AD_Nov=C3=A1k?= <jiri.novak@example.com>'),
  ('Łukasz Wójcik <lukasz@lodz.example.net>'),
  ('mitglieder@club.example.org'),
  ('turnierleitung@verband.example.org; presse@verband.example.org'),
  ('Erika Beck <erika.beck@example.com>');

WITH RECURSIVE mail(n) AS (SELECT 0 UNION ALL SELECT n + 1 FROM mail WHERE n < 299)
INSERT INTO nora.Headers
SELECT
  printf('{0E3D9A52-4B60-4F7E-8D21-%012X}', n), '{4D1F0A00-5B7C-4E7A-9C55-0F3B6C2A0004}',
  'nora@weiss.example.com', toSender, printf('Nachricht %d', n + 1), 'nora@weiss.example.com',
  1199181600 + n * 43200, 1199181600 + n * 43200, 0, n % 17 = 0, 0, 0, 3,
  1500 + n * 211 % 9000, 1500 + n * 211 % 9000, n * 12000, 0
FROM mail JOIN temp.nora_recipients ON id = n % (SELECT count(*) FROM temp.nora_recipients) + 1;

WITH RECURSIVE mail(n) AS (SELECT 0 UNION ALL SELECT n + 1 FROM mail WHERE n < 39)
INSERT INTO club.Headers
SELECT
  printf('{5A7B2C14-4B60-4F7E-8D21-%012X}', n), '{91E4B700-2C3D-4A68-B1F0-6A7D8E5C0004}',
  'vorstand@club.example.org', toSender, printf('Nachricht %d', n + 1), 'vorstand@club.example.org',
  1204365600 + n * 43200, 1204365600 + n * 43200, 0, n % 17 = 0, 0, 0, 3,
  1500 + n * 211 % 9000, 1500 + n * 211 % 9000, n * 12000, 0
FROM mail JOIN temp.club_recipients ON id = n % (SELECT count(*) FROM temp.club_recipients) + 1;

-- Address books ---------------------------------------------------------------------------------

CREATE TABLE nora_book.Contacts(Email TEXT, DisplayName TEXT);
CREATE TABLE club_book.Contacts(Email TEXT, DisplayName TEXT);

INSERT INTO nora_book.Contacts VALUES
  ('karl.brandt@example.com', 'Karl Brandt'),
  ('Maria.Lehmann@example.com', 'Maria Lehmann'),
  ('j.mueller@example.net', 'Jürgen Müller'),
  ('eleni.papadaki@athens.example.org', 'Ελένη Παπαδάκη'),
  ('ivan.petrov@example.net', 'Иван Петров'),
  ('yamada.taro@tokyo.example.com', '山田太郎'),
  ('grosseltern@example.net', 'Oma & Opa'),
  ('tante.ilse@example.net', 'Tante Ilse'),
  ('zahnarzt@praxis.example.org', 'Zahnarztpraxis Dr. Öztürk'),
  ('f.lefevre@paris.example.org', 'François Lefèvre'),
  ('zoe.nunez@example.net', 'Zoë Núñez'),
  ('hausverwaltung@example.com', 'Hausverwaltung');

INSERT INTO club_book.Contacts VALUES
  ('erika.beck@example.com', 'Erika Beck'),
  ('jiri.novak@example.com', 'Jiří Novák'),
  ('lukasz@lodz.example.net', 'Łukasz Wójcik'),
  ('presse@verband.example.org', 'Pressestelle'),
  ('kasse@club.example.org', 'Kasse');
