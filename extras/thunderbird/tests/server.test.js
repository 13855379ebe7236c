import assert from "node:assert/strict";
import {test} from "node:test";

import {BATCH_MS, MAX_BATCH_ITEMS, MAX_BATCH_UNITS, MAX_ITEM_UNITS, MAX_RUNNING, Server}
  from "../extension/server.js";

async function* numbers(count) {
  for (let i = 0; i < count; ++i) {
    yield i;
  }
}

function makeServer(contacts, more = {}) {
  const posted = [];
  const lines = [];
  const server = new Server({
    operations: {GiveContacts: contacts},
    post: (message) => posted.push(message),
    log: (line) => lines.push(line),
    now: () => 0,
    ...more,
  });
  return {server, posted, lines};
}

const start = (id) => ({id, command: "GiveContacts"});
const next = (id) => ({id, command: "Next"});
const stop = (id) => ({id, command: "Stop"});

test("answers a short list in one batch", async () => {
  const {server, posted} = makeServer(() => numbers(3));
  await server.receive(start(5));
  assert.deepEqual(posted, [{id: 5, items: [0, 1, 2], done: true}]);
});

test("sends the next batch only when it is asked for", async () => {
  const {server, posted} = makeServer(() => numbers(MAX_BATCH_ITEMS + 1));
  await server.receive(start(1));
  assert.equal(posted.length, 1);
  assert.equal(posted[0].items.length, MAX_BATCH_ITEMS);
  assert.equal(posted[0].done, false);
  await server.receive(next(1));
  assert.deepEqual(posted[1], {id: 1, items: [MAX_BATCH_ITEMS], done: true});
  await server.receive(next(1));
  assert.equal(posted.length, 2, "a request that is done has no more batches");
});

test("ends a batch that has grown long", async () => {
  async function* texts() {
    yield* Array(10).fill("x".repeat(MAX_BATCH_UNITS / 2));
  }
  const {server, posted} = makeServer(texts);
  await server.receive(start(1));
  assert.equal(posted[0].items.length, 2);
});

test("leaves out an item that is too long, and says so", async () => {
  async function* texts() {
    yield "x".repeat(MAX_ITEM_UNITS);
    yield "short";
  }
  const {server, posted, lines} = makeServer(texts);
  await server.receive(start(1));
  assert.deepEqual(posted, [{id: 1, items: ["short"], done: true}]);
  assert.match(lines[0], /item of 65538 characters is left out/);
});

test("leaves out a text with half a character, and keeps whole ones", async () => {
  async function* texts() {
    yield* ["a\uD83D", {to: ["\uDE00"]}, "\uD83D\uDE00"];
  }
  const {server, posted, lines} = makeServer(texts);
  await server.receive(start(1));
  assert.deepEqual(posted, [{id: 1, items: ["\u{1F600}"], done: true}]);
  assert.equal(lines.length, 2);
});

test("keeps every batch below what the native program reads", async () => {
  async function* texts() {
    yield* Array(500).fill("\u0001".repeat(10000));
  }
  const {server, posted} = makeServer(texts);
  await server.receive(start(1));
  assert.ok(Buffer.byteLength(JSON.stringify(posted[0])) < 1024 * 1024);
});

test("sends a small batch when the time is up", async () => {
  let time = 0;
  async function* slow() {
    for (let i = 0; i < 4; ++i) {
      time += BATCH_MS / 2;
      yield i;
    }
  }
  const {server, posted} = makeServer(slow, {now: () => time});
  await server.receive(start(1));
  assert.deepEqual(posted, [{id: 1, items: [0, 1], done: false}]);
});

test("tells an error and forgets the request", async () => {
  async function* broken() {
    yield 1;
    throw new Error("no such folder");
  }
  const {server, posted} = makeServer(broken);
  await server.receive(start(1));
  assert.deepEqual(posted, [{id: 1, error: "no such folder"}]);
  await server.receive(next(1));
  assert.equal(posted.length, 1);
});

test("lets an operation clean up when it is stopped, and answers no more", async () => {
  let isClean = false;
  async function* list() {
    try {
      yield* numbers(1000);
    } finally {
      isClean = true;
    }
  }
  const {server, posted} = makeServer(list);
  await server.receive(start(1));
  await server.receive(stop(1));
  assert.ok(isClean, "the operation was not ended");
  await server.receive(next(1));
  assert.equal(posted.length, 1);
});

test("answers nothing if a batch is stopped while it is made", async () => {
  let release;
  const wait = new Promise((resolve) => (release = resolve));
  async function* slow() {
    await wait;
    yield 1;
  }
  const {server, posted} = makeServer(slow);
  const running = server.receive(start(1));
  const stopped = server.receive(stop(1));
  release();
  await Promise.all([running, stopped]);
  assert.deepEqual(posted, []);
});

test("serves several requests at a time, up to a limit", async () => {
  const {server, posted} = makeServer(() => numbers(1000));
  for (let id = 1; id <= MAX_RUNNING + 1; ++id) {
    await server.receive(start(id));
  }
  assert.equal(posted.filter(({items}) => items).length, MAX_RUNNING);
  assert.deepEqual(posted[MAX_RUNNING], {id: MAX_RUNNING + 1, error: "too many requests at a time"});
  await server.stopAll();
  await server.receive(start(99));
  assert.equal(posted[MAX_RUNNING + 1].items.length, MAX_BATCH_ITEMS);
});

test("ignores a second request with the id of a running one", async () => {
  const {server, posted, lines} = makeServer(() => numbers(1000));
  await server.receive(start(1));
  await server.receive(start(1));
  assert.equal(posted.length, 1);
  assert.match(lines[0], /runs already/);
});

test("ignores what is no request, and goes on", async () => {
  const {server, posted, lines} = makeServer(() => numbers(1));
  for (const message of [null, "x", {id: 1, command: "Format"}]) {
    await server.receive(message);
  }
  assert.equal(lines.length, 3);
  await server.receive(start(1));
  assert.equal(posted.length, 1);
});
