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

const idBelow = (parentId, name) => `${parentId}${parentId.endsWith("://") ? "" : "/"}${name}`;

function giveIds(parent, parentId) {
  parent.id = parentId;
  parent.subFolders.forEach((child) => giveIds(child, idBelow(parentId, child.name)));
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
  constructor({
    accounts = [], books = [], messages = {}, pageSize = 2, preferred = null, summaryDelay = 3,
  }) {
    this.calls = [];
    this._accounts = typeof accounts === "function" ? accounts : () => accounts;
    this._messages = messages;
    this._pageSize = pageSize;
    this._lists = new Map();
    this._windows = [];
    this._tabs = [{id: 1, type: "mail"}];
    this._summaryDelay = summaryDelay;
    const stored = {};
    this.accounts = {list: async () => this._accounts(), getDefault: async () => preferred};
    this.addressBooks = {list: async () => books};
    this.folders = {
      create: async (parentId, name) => this._create(parentId, name),
      getFolderInfo: async (id) => ({totalMessageCount: this._countOf(this._find(id))}),
    };
    this.messages = {
      list: async (id) => this._page(this._listOf(this._find(id))),
      continueList: async (id) => this._continue(id),
      abortList: async (id) => this._lists.delete(id),
      getFull: async (id) => this._full(id),
      move: async (ids, to) => this.calls.push(["move", ids, to]),
    };
    this.windows = {
      getAll: async ({windowTypes = null} = {}) =>
        this._windows.filter(({type}) => !windowTypes || windowTypes.includes(type)),
      update: async (id, properties) => this.calls.push(["update", id, properties]),
      remove: async (id) => this.calls.push(["remove", id]),
    };
    this.mailTabs = {create: async ({displayedFolder}) => this._show(this._find(displayedFolder))};
    this.tabs = {
      query: async ({type}) => this._tabs.filter((tab) => tab.type === type),
      remove: async (ids) => {
        this._tabs = this._tabs.filter(({id}) => !ids.includes(id));
      },
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

  openWindow(id, type = "normal") {
    this._windows.push({id, type});
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
    const created = {...folder(name), id: idBelow(parentId, name)};
    parent.subFolders.push(created);
    return created;
  }

  get openTabs() {
    return this._tabs.map(({id}) => id);
  }

  // A folder with `isNew` has no summary until it was shown and so many looks have gone by; one with
  // `isDamaged` never gets one. Nothing can be asked of such a folder, and its list is empty.
  _hasSummary(found) {
    if (found.isNew && found.isShown && found.looks++ >= this._summaryDelay) {
      found.isNew = false;
    }
    return !found.isNew && !found.isDamaged;
  }

  _countOf(found) {
    if (found.isRoot || !this._hasSummary(found)) {
      throw new Error("An unexpected error occurred");
    }
    return this._listOf(found).length;
  }

  _listOf(found) {
    return this._hasSummary(found) ? this._messages[found.name] || [] : [];
  }

  _show(found) {
    this._tabs.push({id: this._tabs.length + 1, type: "mail"});
    Object.assign(found, {isShown: true, looks: 0});
    if (!this._hasSummary(found)) {
      throw new Error("An unexpected error occurred");
    }
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
