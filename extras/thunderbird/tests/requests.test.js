import assert from "node:assert/strict";
import {test} from "node:test";

import {MAX_NAMES, MAX_TEXT, readRequest} from "../extension/requests.js";

test("reads a request without arguments", () => {
  assert.deepEqual(readRequest({id: 1, command: "GiveContacts"}), {
    id: 1,
    command: "GiveContacts",
  });
});

test("keeps the fields of the command alone", () => {
  const message = {id: 2, command: "SetMoveMails", move: true, folder: "ab", extra: {deep: []}};
  assert.deepEqual(readRequest(message), {id: 2, command: "SetMoveMails", move: true, folder: "ab"});
});

test("refuses what is no request", () => {
  const path = ["Local Folders", "New"];
  const add = {id: 1, command: "AddNewFolder", path, store: "account1"};
  assert.notEqual(readRequest(add), null);
  const wrong = [
    null,
    7,
    "GiveContacts",
    [],
    {},
    {id: 1},
    {command: "GiveContacts"},
    {id: "1", command: "GiveContacts"},
    {id: 0, command: "GiveContacts"},
    {id: -1, command: "GiveContacts"},
    {id: 1.5, command: "GiveContacts"},
    {id: 2 ** 53, command: "GiveContacts"},
    {id: 1, command: "givecontacts"},
    {id: 1, command: "constructor"},
    {id: 1, command: ["GiveContacts"]},
    {...add, path: "Local Folders"},
    {...add, path: ["Local Folders"]},
    {...add, path: ["Local Folders", ""]},
    {...add, path: ["Local Folders", 5]},
    {...add, path: ["a".repeat(MAX_TEXT + 1), "b"]},
    {...add, path: Array(MAX_NAMES + 1).fill("a")},
    {...add, store: ""},
    {...add, store: {}},
    {id: 1, command: "SetMoveMails", move: 1, folder: ""},
    {id: 1, command: "SetMoveMails", move: true},
  ];
  for (const message of wrong) {
    assert.equal(readRequest(message), null, JSON.stringify(message));
  }
});

test("takes texts and paths up to their limits", () => {
  const path = Array(MAX_NAMES).fill("a".repeat(MAX_TEXT));
  const message = {id: 1, command: "AddNewFolder", path, store: "s"};
  assert.deepEqual(readRequest(message), message);
});
