import assert from "node:assert/strict";
import {readFile} from "node:fs/promises";
import {test} from "node:test";

import {Connection} from "../extension/connection.js";
import {FolderDirectory} from "../extension/folders.js";
import {Mover} from "../extension/mover.js";
import {makeOperations} from "../extension/operations.js";
import {Server} from "../extension/server.js";
import {Summaries} from "../extension/summaries.js";
import {FakeApi, account, folder, noSleep} from "./fakeApi.js";

function makeServer() {
  const accounts = [account("account1", "A", [folder("Inbox", [], {specialUse: ["sent"]})])];
  const api = new FakeApi({accounts, messages: {Inbox: [{recipients: ["a@example.com"]}]}});
  const log = () => undefined;
  const directory = new FolderDirectory({api, sleep: noSleep});
  const summaries = new Summaries({api, log, sleep: noSleep});
  const mover = new Mover({api, directory, summaries, log});
  const posted = [];
  const operations = makeOperations({api, directory, mover, summaries, sleep: noSleep, log});
  const server = new Server({operations, log, post: (message) => posted.push(message)});
  return {api, mover, posted, server};
}

test("answers every command of the native program", async () => {
  const {api, mover, posted, server} = makeServer();
  api.openWindow(7);
  const requests = [
    {command: "GiveAllFolders"},
    {command: "GiveContacts"},
    {command: "SentItemsEntries"},
    {command: "GiveAddressesFromSentItems"},
    {command: "AddNewFolder", path: ["A", "Spam"], store: "account1"},
    {command: "SetMoveMails", move: true, folder: "f"},
    {command: "HideThunderbirdWindow"},
    {command: "ExitThunderbird"},
  ];
  for (const [i, request] of requests.entries()) {
    await server.receive({id: i + 1, ...request});
  }
  assert.deepEqual(
    posted.map(({done, items, error}) => (done ? items.length : error)),
    [2, 0, 1, 1, 1, 0, 0, 0]
  );
  assert.deepEqual(posted[2].items, [1]);
  assert.deepEqual(await mover.settings().then(({move, folder: id}) => [move, id]), [true, "f"]);
  assert.deepEqual(api.calls, [["update", 7, {state: "minimized"}], ["remove", 7]]);
});

test("hides a window that comes late, and gives up on one that never comes", async () => {
  const api = new FakeApi({});
  let waits = 0;
  const operations = (sleep) => makeOperations({api, directory: null, mover: null, sleep, log: null});
  await operations(async () => {
    if (++waits === 3) {
      api.openWindow(1);
    }
  }).HideThunderbirdWindow().next();
  assert.equal(waits, 3);
  assert.equal(api.calls.length, 1);
  const empty = new FakeApi({});
  const never = makeOperations({api: empty, directory: null, mover: null, sleep: noSleep, log: null});
  assert.deepEqual(await never.HideThunderbirdWindow().next(), {value: undefined, done: true});
});

class FakePort {
  constructor() {
    this.onDisconnect = {addListener: (listener) => (this.disconnect = listener)};
  }
}

test("starts a native program that never works a few times, and then no more", async () => {
  let starts = 0;
  let ends = 0;
  const pauses = [];
  const connection = new Connection({
    connect: () => {
      ++starts;
      const port = new FakePort();
      port.error = new Error("no such program");
      setTimeout(() => port.disconnect(), 0);
      return port;
    },
    serve: () => () => ++ends,
    sleep: async (milliseconds) => pauses.push(milliseconds),
    log: () => undefined,
    now: () => 0,
  });
  await connection.run();
  assert.equal(starts, 6);
  assert.equal(ends, 6);
  assert.deepEqual(pauses, [1000, 2000, 4000, 8000, 16000, 32000]);
});

test("starts a native program again that has worked", async () => {
  let time = 0;
  let starts = 0;
  const connection = new Connection({
    connect: () => {
      time += ++starts <= 10 ? 60000 : 1;
      const port = new FakePort();
      setTimeout(() => port.disconnect(), 0);
      return port;
    },
    serve: () => () => undefined,
    sleep: noSleep,
    log: () => undefined,
    now: () => time,
  });
  // The time of a run passes between the look at the clock before it and the one after it.
  await connection.run();
  assert.equal(starts, 16);
});

test("asks for no permission but those that are used", async () => {
  const text = await readFile(new URL("../extension/manifest.json", import.meta.url), "utf8");
  const manifest = JSON.parse(text);
  assert.deepEqual(manifest.permissions, [
    "accountsFolders",
    "accountsRead",
    "addressBooks",
    "messagesMove",
    "messagesRead",
    "nativeMessaging",
    "storage",
  ]);
  assert.equal(manifest.browser_specific_settings.gecko.id, "{0E810812-F4BB-4309-942A-755587587A5E}");
});
