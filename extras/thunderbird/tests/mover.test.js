import assert from "node:assert/strict";
import {test} from "node:test";

import {FolderDirectory, shortId} from "../extension/folders.js";
import {DEFAULT_HEADER, Mover, carriesMark, isHeaderName} from "../extension/mover.js";
import {Summaries} from "../extension/summaries.js";
import {FakeApi, account, folder, noSleep} from "./fakeApi.js";

const SPAM_ID = "account1://Spam";
const marked = {[DEFAULT_HEADER.toLowerCase()]: ["yes"]};

function makeMover(messages) {
  const accounts = [
    account("account1", "A", [
      folder("Damaged", [], {isDamaged: true}),
      folder("New", [], {isNew: true}),
      folder("Inbox"),
      folder("Sent", [], {specialUse: ["sent"]}),
      folder("Spam"),
    ]),
  ];
  const api = new FakeApi({accounts, messages});
  const lines = [];
  const log = (line) => lines.push(line);
  api.openWindow(1);
  const directory = new FolderDirectory({api, sleep: noSleep});
  const summaries = new Summaries({api, log, sleep: noSleep});
  const mover = new Mover({api, directory, summaries, log});
  return {api, mover, lines};
}

async function turnOn(mover) {
  await mover.set({move: true, folder: await shortId(SPAM_ID)});
}

test("tells a mark from a field that says no", () => {
  assert.ok(carriesMark({"x-spam": ["YES"]}, "X-Spam"));
  assert.ok(carriesMark({"x-spam": [""]}, "X-Spam"));
  assert.ok(carriesMark({"x-spam": ["no", "yes"]}, "X-Spam"));
  assert.ok(carriesMark({"x-spam": ["nothing good"]}, "X-Spam"));
  assert.ok(!carriesMark({"x-spam": ["No, score=1"]}, "X-Spam"));
  assert.ok(!carriesMark({"x-other": ["yes"]}, "X-Spam"));
});

test("takes only names that a header can have", async () => {
  assert.ok(isHeaderName("X-Spam-Flag"));
  for (const name of ["", "X Spam", "X-Spam:", "X-Späm", "a".repeat(71), "a\nb"]) {
    assert.ok(!isHeaderName(name), name);
  }
  const {mover} = makeMover({});
  await assert.rejects(mover.setHeader("X:Y"), /no name/);
  assert.equal((await mover.settings()).header, DEFAULT_HEADER);
});

test("moves new mail with the mark, and no other", async () => {
  const list = {
    id: null,
    messages: [{id: 1, headers: marked}, {id: 2}, {id: 3, headers: marked}],
  };
  const {api, mover} = makeMover({Inbox: list.messages});
  await turnOn(mover);
  assert.equal(await mover.moveNew(list), 2);
  assert.deepEqual(api.calls, [["move", [1, 3], SPAM_ID]]);
});

test("moves nothing until it is told to, and nothing after it is told not to", async () => {
  const list = {id: null, messages: [{id: 1, headers: marked}]};
  const {api, mover} = makeMover({Inbox: list.messages});
  assert.equal(await mover.moveNew(list), 0);
  await turnOn(mover);
  await mover.set({move: false, folder: ""});
  assert.equal(await mover.moveNew(list), 0);
  assert.deepEqual(api.calls, []);
  await mover.set({move: true, folder: ""});
  assert.equal(await mover.moveNew(list), 1, "the folder was forgotten");
});

test("looks for the mark that the options name", async () => {
  const list = {id: null, messages: [{id: 1, headers: {"x-bulk": ["1"]}}]};
  const {mover} = makeMover({Inbox: list.messages});
  await turnOn(mover);
  assert.equal(await mover.moveNew(list), 0);
  await mover.setHeader("X-Bulk");
  assert.equal(await mover.moveNew(list), 1);
});

test("moves old mail on request, from neither sent mail nor the spam folder", async () => {
  const messages = {
    Inbox: Array.from({length: 249}, (_, i) => ({id: i + 1, headers: marked})),
    New: [{id: 250, headers: marked}],
    Sent: [{id: 1001, headers: marked}],
    Spam: [{id: 1002, headers: marked}],
  };
  const {api, mover} = makeMover(messages);
  await turnOn(mover);
  assert.equal(await mover.moveOld(), 250);
  const moved = api.calls.flatMap(([, ids]) => ids);
  assert.equal(Math.max(...moved), 250);
  assert.deepEqual(
    api.calls.map(([, ids]) => ids.length),
    [100, 100, 50]
  );
});

test("searches old mail once at a time", async () => {
  const {mover} = makeMover({Inbox: [{id: 1, headers: marked}]});
  await turnOn(mover);
  const counts = await Promise.all([mover.moveOld(), mover.moveOld()]);
  assert.deepEqual(counts.sort(), [0, 1]);
  assert.equal(await mover.moveOld(), 1);
});

test("goes on after a message and a folder that can't be read", async () => {
  const {api, mover, lines} = makeMover({
    Inbox: [{id: 1, isUnreadable: true, headers: marked}, {id: 2, headers: marked}],
  });
  await turnOn(mover);
  assert.equal(await mover.moveOld(), 1);
  assert.deepEqual(api.calls, [["move", [2], SPAM_ID]]);
  assert.ok(lines.some((line) => /can't be searched: the folder's summary/.test(line)));
  assert.ok(lines.some((line) => /can't be read: gone/.test(line)));
});

test("moves nothing if the spam folder is gone, and says so", async () => {
  const list = {id: null, messages: [{id: 1, headers: marked}]};
  const {api, mover, lines} = makeMover({Inbox: list.messages});
  await mover.set({move: true, folder: "0".repeat(32)});
  assert.equal(await mover.moveNew(list), 0);
  assert.deepEqual(api.calls, []);
  assert.match(lines[0], /not there/);
});
