import assert from "node:assert/strict";
import {test} from "node:test";

import {cardAddresses, contacts, countSent, messagesOf, sentRecipients}
  from "../extension/addresses.js";
import {FolderDirectory} from "../extension/folders.js";
import {Summaries} from "../extension/summaries.js";
import {FakeApi, account, collect, folder, noSleep} from "./fakeApi.js";

const sent = (name, more) => folder(name, [], {specialUse: ["sent"], ...more});

// `more` is the state of the folder "Sent".
function contextOf(messages, more = {}) {
  const accounts = [
    account("account1", "A", [folder("Inbox"), sent("Sent", more)]),
    account("account2", "B", [folder("Deep", [sent("Gesendet")])]),
  ];
  const api = new FakeApi({accounts, messages});
  const lines = [];
  const log = (line) => lines.push(line);
  const directory = new FolderDirectory({api, sleep: noSleep});
  const summaries = new Summaries({api, log, sleep: noSleep});
  return {api, directory, summaries, lines, log};
}

const mail = (to, more = {}) => ({recipients: [to], ...more});

test("reads the addresses of a card", () => {
  const card = [
    "BEGIN:VCARD",
    "EMAIL;PREF=1:one@example.com",
    'EMAIL;TYPE="a:b";X=y:two@example.com',
    "item1.EMAIL:three@exa",
    " mple.com",
    "email:four@example.com",
    "NOTE:EMAIL:five@example.com",
    "EMAILS:six@example.com",
  ].join("\r\n");
  assert.deepEqual(
    [...cardAddresses(card)],
    ["one", "two", "three", "four"].map((name) => `${name}@example.com`)
  );
});

test("reads a hostile card in little time", () => {
  const card = `EMAIL;${'"'.repeat(50000)}${";".repeat(50000)}`;
  const start = process.cpuUsage().user;
  assert.deepEqual([...cardAddresses(card)], []);
  assert.ok(process.cpuUsage(undefined).user - start < 2e6);
});

test("gives the contacts of all books, each address once", async () => {
  const books = [
    {
      contacts: [
        {properties: {PrimaryEmail: "a@example.com", SecondEmail: " b@example.com "}},
        {properties: {vCard: "EMAIL:a@example.com\nEMAIL:c@example.com"}},
        {properties: {PrimaryEmail: ""}},
        {properties: {PrimaryEmail: 5}},
        {},
      ],
    },
    {contacts: [{properties: {PrimaryEmail: "d@example.com"}}]},
    {remote: true},
  ];
  assert.deepEqual(
    await collect(contacts(new FakeApi({books}))),
    ["a", "b", "c", "d"].map((name) => `${name}@example.com`)
  );
});

test("reads sent mail of every account and no other mail", async () => {
  const context = contextOf({
    Inbox: [mail("nobody@example.com")],
    Sent: [
      mail("a@example.com", {ccList: ["b@example.com"], bccList: ["c@example.com"]}),
      {},
      mail("d@example.com"),
    ],
    Gesendet: [mail("e@example.com")],
  });
  assert.deepEqual(await collect(countSent(context)), [4]);
  assert.deepEqual(await collect(sentRecipients(context)), [
    {to: ["a@example.com"], cc: ["b@example.com"], bcc: ["c@example.com"]},
    {to: [], cc: [], bcc: []},
    {to: ["d@example.com"], cc: [], bcc: []},
    {to: ["e@example.com"], cc: [], bcc: []},
  ]);
});

test("goes on after a folder that can't be read", async () => {
  const context = contextOf({Gesendet: [mail("e@example.com")]}, {isDamaged: true});
  context.api.openWindow(1);
  assert.deepEqual(await collect(countSent(context)), [1]);
  assert.equal((await collect(sentRecipients(context))).length, 1);
  assert.ok(context.lines.some((line) => /can't be counted: the folder's summary/.test(line)));
  assert.ok(context.lines.some((line) => /can't be read: the folder's summary/.test(line)));
});

test("reads a folder that was never shown", async () => {
  const context = contextOf({Sent: [mail("a@example.com")]}, {isNew: true});
  context.api.openWindow(1);
  assert.deepEqual(await collect(sentRecipients(context)), [
    {to: ["a@example.com"], cc: [], bcc: []},
  ]);
});

test("lets Thunderbird forget a list that is left early", async () => {
  const many = Array.from({length: 9}, (_, i) => mail(`${i}@example.com`));
  const {api, summaries} = contextOf({Sent: many});
  const list = messagesOf({api, summaries}, {id: "account1://Sent"});
  for (let i = 0; i < 3; ++i) {
    await list.next();
  }
  assert.equal(api.openLists, 1);
  await list.return();
  assert.equal(api.openLists, 0);
});
