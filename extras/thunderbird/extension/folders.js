// The folders of all mail accounts, and the ids by which the other side knows them.

// For a second or so after the start, on a busy machine for longer, accounts show no folders, or the
// top ones alone.
const SETTLE_PAUSE_MS = 500;
const SETTLE_LOOKS = 24;
const SETTLE_MIN_LOOKS = 4;

// Kinds of accounts without folders for mail of one's own.
const WITHOUT_MAIL = new Set(["nntp", "rss", "im"]);

// 32 hexadecimal digits. Thunderbird's own ids have names in any script in them, and the other side
// keeps ids in a code page, in little room.
export async function shortId(id) {
  const digest = await crypto.subtle.digest("SHA-256", new TextEncoder().encode(id));
  const bytes = [...new Uint8Array(digest, 0, 16)];
  return bytes.map((byte) => byte.toString(16).padStart(2, "0")).join("");
}

const isReal = (folder) => !folder.isVirtual && !folder.isUnified && !folder.isTag;

// Each folder of an account with the names that lead to it, a parent before its children.
export function* walk(account) {
  const open = [{folder: account.rootFolder, names: [account.name]}];
  while (open.length > 0) {
    const {folder, names} = open.pop();
    yield {folder, names};
    const children = (folder.subFolders || []).filter(isReal);
    for (const child of children.reverse()) {
      open.push({folder: child, names: [...names, child.name]});
    }
  }
}

const sameNames = (a, b) => a.length === b.length && a.every((name, i) => name === b[i]);

export class FolderDirectory {
  // `api` is Thunderbird's; `sleep(milliseconds)` resolves later.
  constructor({api, sleep}) {
    this._api = api;
    this._sleep = sleep;
    this._settling = null;
  }

  // The accounts that hold mail, with all their folders.
  async accounts() {
    if (!this._settling) {
      this._settling = this._settle();
    }
    await this._settling;
    return this._look();
  }

  // One item for each folder. Those of the default account come first in trees.
  async *list() {
    const preferred = await this._api.accounts.getDefault(false);
    for (const account of await this.accounts()) {
      const first = !preferred || preferred.id === account.id;
      for (const {folder, names} of walk(account)) {
        yield {path: names, id: await shortId(folder.id), store: account.id, first};
      }
    }
  }

  // Thunderbird's folder with this short id; null if there is none any more.
  async find(id) {
    for (const account of await this.accounts()) {
      for (const {folder} of walk(account)) {
        if ((await shortId(folder.id)) === id) {
          return folder;
        }
      }
    }
    return null;
  }

  // Creates the folder that is the last of `path`, in the account `store`, and yields its item. Its
  // parent must be there.
  async *create({path, store}) {
    const name = path[path.length - 1];
    const parent = await this._findByNames(path.slice(0, -1), store);
    if (!parent) {
      throw new Error("the folder above the new one is not there");
    }
    const created = await this._api.folders.create(parent.id, name);
    yield {path, id: await shortId(created.id), store};
  }

  async _findByNames(names, store) {
    const account = (await this.accounts()).find(({id}) => id === store);
    if (!account) {
      return null;
    }
    for (const entry of walk(account)) {
      if (sameNames(entry.names, names)) {
        return entry.folder;
      }
    }
    return null;
  }

  async _look() {
    const accounts = await this._api.accounts.list(true);
    return accounts.filter(({type, rootFolder}) => rootFolder && !WITHOUT_MAIL.has(type));
  }

  // Looks until two looks in a row see the same folders, some in each account, and at least for as
  // long as a start takes.
  async _settle() {
    let before = null;
    for (let looks = 1; looks <= SETTLE_LOOKS; ++looks) {
      const accounts = await this._look();
      const isFilled = accounts.every(({rootFolder}) => (rootFolder.subFolders || []).length > 0);
      const ids = accounts.flatMap((account) => [...walk(account)].map(({folder}) => folder.id));
      const now = JSON.stringify(ids);
      if (looks >= SETTLE_MIN_LOOKS && isFilled && now === before) {
        return;
      }
      before = now;
      await this._sleep(SETTLE_PAUSE_MS);
    }
  }
}
