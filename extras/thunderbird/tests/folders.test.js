import assert from "node:assert/strict";
import {test} from "node:test";

import {FolderDirectory, shortId} from "../extension/folders.js";
import {FakeApi, account, collect, folder, noSleep} from "./fakeApi.js";

const directoryOf = (api, sleep = noSleep) => new FolderDirectory({api, sleep});

const local = () =>
  account("account1", "Local Folders", [
    folder("Inbox", [folder("Büro", [folder("Проекты")]), folder("案件")]),
    folder("Trash"),
  ]);

test("lists each folder with its path, parents first", async () => {
  const api = new FakeApi({accounts: [local()]});
  const items = await collect(directoryOf(api).list());
  assert.deepEqual(
    items.map(({path}) => path.join("/")),
    [
      "Local Folders",
      "Local Folders/Inbox",
      "Local Folders/Inbox/Büro",
      "Local Folders/Inbox/Büro/Проекты",
      "Local Folders/Inbox/案件",
      "Local Folders/Trash",
    ]
  );
  assert.deepEqual([...new Set(items.map(({store}) => store))], ["account1"]);
});

test("names folders by short ids that differ and don't change", async () => {
  const api = new FakeApi({accounts: [local()]});
  const items = await collect(directoryOf(api).list());
  const ids = items.map(({id}) => id);
  assert.equal(new Set(ids).size, ids.length);
  for (const id of ids) {
    assert.match(id, /^[0-9a-f]{32}$/);
  }
  // The digest that other tools give for this text.
  assert.equal(await shortId("abc"), "ba7816bf8f01cfea414140de5dae2223");
});

test("leaves out accounts without mail of one's own, and folders that are searches", async () => {
  const news = account("account2", "News", [folder("Group")], {type: "nntp"});
  const feeds = account("account3", "Feeds", [folder("Feed")], {type: "rss"});
  const own = account("account1", "Own", [
    folder("Search", [folder("Below")], {isVirtual: true}),
    folder("Unified", [], {isUnified: true}),
    folder("Tag", [], {isTag: true}),
    folder("Kept"),
  ]);
  const items = await collect(directoryOf(new FakeApi({accounts: [news, feeds, own]})).list());
  assert.deepEqual(
    items.map(({path}) => path.join("/")),
    ["Own", "Own/Kept"]
  );
});

test("puts the default account first, or all if there is none", async () => {
  const accounts = [account("account1", "A", []), account("account2", "B", [])];
  const withDefault = new FakeApi({accounts, preferred: {id: "account2"}});
  const firsts = (items) => items.map(({first}) => first);
  assert.deepEqual(firsts(await collect(directoryOf(withDefault).list())), [false, true]);
  const without = new FakeApi({accounts});
  assert.deepEqual(firsts(await collect(directoryOf(without).list())), [true, true]);
});

test("waits until sub-folders are there, once", async () => {
  let time = 0;
  const late = () => [
    account("account1", "A", [folder("Inbox", time >= 1500 ? [folder("Below")] : [])]),
  ];
  const directory = directoryOf(new FakeApi({accounts: late}), async (milliseconds) => {
    time += milliseconds;
  });
  const items = await collect(directory.list());
  assert.deepEqual(items[items.length - 1].path, ["A", "Inbox", "Below"]);
  const waited = time;
  await collect(directory.list());
  assert.equal(time, waited);
});

test("waits for an account that shows no folder yet", async () => {
  let time = 0;
  const late = () => [
    account("account1", "A", [folder("Inbox")]),
    account("account2", "B", time >= 5000 ? [folder("Inbox")] : []),
  ];
  const directory = directoryOf(new FakeApi({accounts: late}), async (milliseconds) => {
    time += milliseconds;
  });
  assert.equal((await collect(directory.list())).length, 4);
});

test("stops waiting for folders that never settle", async () => {
  let looks = 0;
  const restless = () => [account("account1", "A", [folder(`Folder ${++looks}`)])];
  const items = await collect(directoryOf(new FakeApi({accounts: restless})).list());
  assert.equal(items.length, 2);
  assert.ok(looks < 30, `${looks} looks`);
});

test("walks a very deep tree", async () => {
  let deep = folder("x");
  for (let i = 0; i < 200; ++i) {
    deep = folder("x", [deep]);
  }
  const items = await collect(directoryOf(new FakeApi({accounts: [account("a", "A", [deep])]})).list());
  assert.equal(items.length, 202);
});

test("creates a folder below the one that the path names", async () => {
  const accounts = [account("account0", "Local Folders", []), local()];
  const directory = directoryOf(new FakeApi({accounts}));
  const path = ["Local Folders", "Inbox", "Büro", "Spam ✓"];
  const [created] = await collect(directory.create({path, store: "account1"}));
  assert.deepEqual(created.path, path);
  assert.equal(created.store, "account1");
  assert.equal((await directory.find(created.id)).name, "Spam ✓");
});

test("creates a folder at the top of a store", async () => {
  const directory = directoryOf(new FakeApi({accounts: [local()]}));
  const path = ["Local Folders", "Spam"];
  const [created] = await collect(directory.create({path, store: "account1"}));
  const items = await collect(directory.list());
  assert.ok(items.some(({id}) => id === created.id));
});

test("creates nothing without the folder above, in another store, or twice", async () => {
  const directory = directoryOf(new FakeApi({accounts: [local()]}));
  const create = (path, store) => collect(directory.create({path, store}));
  await assert.rejects(create(["Local Folders", "Nowhere", "Spam"], "account1"), /not there/);
  await assert.rejects(create(["Local Folders", "Spam"], "account9"), /not there/);
  await assert.rejects(create(["Local Folders", "Trash"], "account1"), /already/);
  assert.equal((await collect(directory.list())).length, 6);
});

test("finds no folder for an id that none has", async () => {
  assert.equal(await directoryOf(new FakeApi({accounts: [local()]})).find("00"), null);
});
