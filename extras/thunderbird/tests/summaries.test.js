import assert from "node:assert/strict";
import {test} from "node:test";

import {Summaries} from "../extension/summaries.js";
import {FakeApi, account, folder, noSleep} from "./fakeApi.js";

function makeSummaries(folders, more = {}) {
  const messages = Object.fromEntries(folders.map(({name}) => [name, [{}, {}]]));
  const api = new FakeApi({accounts: [account("account1", "A", folders)], messages, ...more});
  const lines = [];
  const summaries = new Summaries({api, log: (line) => lines.push(line), sleep: noSleep});
  const count = (name) => summaries.count({id: `account1://${name}`});
  return {api, count, lines};
}

test("counts a folder that has a summary, without showing it", async () => {
  const {api, count, lines} = makeSummaries([folder("Sent")]);
  assert.equal(await count("Sent"), 2);
  assert.deepEqual(api.openTabs, [1]);
  assert.deepEqual(lines, []);
});

test("shows a folder without a summary in a tab of its own, and closes that tab alone", async () => {
  const {api, count, lines} = makeSummaries([folder("Sent", [], {isNew: true})]);
  api.openWindow(1);
  const counting = count("Sent");
  await new Promise((resolve) => setTimeout(resolve, 0));
  assert.equal(await counting, 2);
  assert.deepEqual(api.openTabs, [1]);
  assert.equal(lines.length, 1);
  assert.equal(await count("Sent"), 2);
  assert.equal(lines.length, 1, "it was shown again");
});

test("waits until the summary has stopped growing", async () => {
  const {api, count} = makeSummaries([folder("Sent", [], {isNew: true})]);
  api.openWindow(1);
  const counts = [null, 10, 20, 30, 30, 40];
  api.folders.getFolderInfo = async () => {
    const next = counts.shift();
    if (next === null) {
      throw new Error("An unexpected error occurred");
    }
    return {totalMessageCount: next};
  };
  assert.equal(await count("Sent"), 30);
});

test("shows one folder at a time", async () => {
  const names = ["A", "B", "C"];
  const {api, count} = makeSummaries(names.map((name) => folder(name, [], {isNew: true})));
  api.openWindow(1);
  let most = 0;
  const create = api.mailTabs.create;
  api.mailTabs.create = async (properties) => {
    await create(properties).catch(() => undefined);
    most = Math.max(most, api.openTabs.length);
  };
  assert.deepEqual(await Promise.all(names.map(count)), [2, 2, 2]);
  assert.equal(most, 2);
  assert.deepEqual(api.openTabs, [1]);
});

test("gives up on a folder whose summary never comes, and closes the tab", async () => {
  const {api, count} = makeSummaries([folder("Sent", [], {isDamaged: true}), folder("Other")]);
  api.openWindow(1);
  await assert.rejects(count("Sent"), /does not come/);
  assert.deepEqual(api.openTabs, [1]);
  assert.equal(await count("Other"), 2);
});

test("opens nothing without a window that shows folders", async () => {
  const {api, count} = makeSummaries([folder("Sent", [], {isNew: true})]);
  api.openWindow(1, "messageCompose");
  await assert.rejects(count("Sent"), /no window/);
  assert.deepEqual(api.openTabs, [1]);
});
