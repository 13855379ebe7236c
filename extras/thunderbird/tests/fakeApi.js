// As much of Thunderbird's interface as the extension uses, over plain objects.
import {webcrypto} from "node:crypto";

// Older releases of Node keep it out of the global scope, where Thunderbird has it.
if (!globalThis.crypto) {
  globalThis.crypto = webcrypto;
}

export const noSleep = async () => undefined;

// A folder with sub-folders; its id begins with its parent's, as Thunderbird's do.
export function folder(name, subFolders = [], more = {}) {
  return {name, subFolders, specialUse: [], ...more};
}

function giveIds(parent, parentId) {
  parent.id = parentId;
  parent.subFolders.forEach((child) => giveIds(child, `${parentId}/${child.name}`));
}

export function account(id, name, subFolders, more = {}) {
  const rootFolder = {...folder("Root", subFolders), isRoot: true};
  giveIds(rootFolder, `${id}://`);
  return {id, name, type: "none", rootFolder, ...more};
}

function* allFolders(root) {
  yield root;
  for (const child of root.subFolders) {
    yield* allFolders(child);
  }
}

// `accounts` may be a function, for accounts that change between looks.
export class FakeApi {
  constructor({accounts = [], books = [], messages = {}, pageSize = 2, preferred = null}) {
    this.calls = [];
    this._accounts = typeof accounts === "function" ? accounts : () => accounts;
    this._messages = messages;
    this._pageSize = pageSize;
    this._lists = new Map();
    this._windows = [];
    const stored = {};
    this.accounts = {list: async () => this._accounts(), getDefault: async () => preferred};
    this.addressBooks = {list: async () => books};
    this.folders = {
      create: async (parentId, name) => this._create(parentId, name),
      getFolderInfo: async (id) => ({totalMessageCount: this._readable(id).length}),
    };
    this.messages = {
      list: async (id) => this._page(this._readable(id)),
      continueList: async (id) => this._continue(id),
      abortList: async (id) => this._lists.delete(id),
      getFull: async (id) => this._full(id),
      move: async (ids, to) => this.calls.push(["move", ids, to]),
    };
    this.windows = {
      getAll: async () => this._windows,
      update: async (id, properties) => this.calls.push(["update", id, properties]),
      remove: async (id) => this.calls.push(["remove", id]),
    };
    this.storage = {
      local: {
        get: async (defaults) => ({...defaults, ...stored}),
        set: async (values) => Object.assign(stored, values),
      },
    };
  }

  get openLists() {
    return this._lists.size;
  }

  openWindow(id) {
    this._windows.push({id});
  }

  _find(id) {
    for (const {rootFolder} of this._accounts()) {
      for (const each of allFolders(rootFolder)) {
        if (each.id === id) {
          return each;
        }
      }
    }
    throw new Error(`no folder ${id}`);
  }

  _create(parentId, name) {
    const parent = this._find(parentId);
    if (parent.subFolders.some((child) => child.name === name)) {
      throw new Error(`there is a folder ${name} already`);
    }
    const created = {...folder(name), id: `${parentId}/${name}`};
    parent.subFolders.push(created);
    return created;
  }

  _readable(id) {
    const found = this._messages[this._find(id).name] || [];
    if (found === "broken") {
      throw new Error("no summary");
    }
    return found;
  }

  _page(messages) {
    const rest = messages.slice(this._pageSize);
    if (rest.length === 0) {
      return {id: null, messages};
    }
    const id = `list-${this.calls.length}-${rest.length}`;
    this._lists.set(id, rest);
    return {id, messages: messages.slice(0, this._pageSize)};
  }

  _continue(id) {
    const rest = this._lists.get(id);
    if (!rest) {
      throw new Error("no such list");
    }
    this._lists.delete(id);
    return this._page(rest);
  }

  _full(id) {
    const all = Object.values(this._messages).filter(Array.isArray).flat();
    const found = all.find((message) => message.id === id);
    if (!found || found.isUnreadable) {
      throw new Error("gone");
    }
    return {headers: found.headers || {}};
  }
}

export async function collect(iterator) {
  const items = [];
  for await (const item of iterator) {
    items.push(item);
  }
  return items;
}
