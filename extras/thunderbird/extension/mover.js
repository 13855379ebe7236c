// Moves messages that carry the filter's mark into the spam folder.
import {messagesOf} from "./addresses.js";
import {walk} from "./folders.js";

export const DEFAULT_HEADER = "X-Postmarker-Spam";

const MOVE_AT_A_TIME = 100;
// What lies here is not new mail that somebody sent.
const NOT_SEARCHED = ["sent", "drafts", "templates", "trash", "junk", "outbox"];

// True for a name that a header field can have.
export const isHeaderName = (text) => /^[!-9;-~]{1,70}$/.test(text);

// Does a message with these headers (lower-case names, lists of values) carry the mark? Filters
// also write the field into good mail, and say "no" there.
export function carriesMark(headers, name) {
  const values = headers[name.toLowerCase()] || [];
  return values.some((value) => !/^\s*no\b/i.test(value));
}

export class Mover {
  constructor({api, directory, summaries, log}) {
    this._api = api;
    this._directory = directory;
    this._summaries = summaries;
    this._log = log;
    this._isSearching = false;
  }

  async settings() {
    const defaults = {move: false, folder: "", header: DEFAULT_HEADER};
    return this._api.storage.local.get(defaults);
  }

  // Turns moving on or off. An empty id leaves the folder as it is.
  async set({move, folder}) {
    await this._api.storage.local.set(folder === "" ? {move} : {move, folder});
  }

  async setHeader(header) {
    if (!isHeaderName(header)) {
      throw new Error("this is no name of a header");
    }
    await this._api.storage.local.set({header});
  }

  // Looks at mail that has just come: a list as Thunderbird's events have it. Resolves to how many
  // messages were moved.
  async moveNew(list) {
    const job = await this._job();
    return job ? this._moveFrom(this._pagesOf(list), job) : 0;
  }

  // Looks at all mail that is there, once at a time.
  async moveOld() {
    if (this._isSearching) {
      return 0;
    }
    this._isSearching = true;
    try {
      const job = await this._job();
      return job ? await this._moveFrom(this._oldMessages(job.target), job) : 0;
    } finally {
      this._isSearching = false;
    }
  }

  // Where to and by which mark; null if nothing is to be moved.
  async _job() {
    const {move, folder, header} = await this.settings();
    if (!move || folder === "") {
      return null;
    }
    const target = await this._directory.find(folder);
    if (!target) {
      this._log("the spam folder is not there: nothing is moved");
      return null;
    }
    return {target, header};
  }

  async *_pagesOf(list) {
    let page = list;
    for (;;) {
      yield* page.messages;
      if (!page.id) {
        return;
      }
      page = await this._api.messages.continueList(page.id);
    }
  }

  async *_oldMessages(target) {
    for (const account of await this._directory.accounts()) {
      for (const {folder} of walk(account)) {
        const uses = folder.specialUse || [];
        if (folder.isRoot || folder.id === target.id || uses.some((u) => NOT_SEARCHED.includes(u))) {
          continue;
        }
        try {
          yield* messagesOf({api: this._api, summaries: this._summaries}, folder);
        } catch (error) {
          this._log(`a folder can't be searched: ${error.message}`);
        }
      }
    }
  }

  async _moveFrom(messages, {target, header}) {
    const marked = [];
    for await (const message of messages) {
      if (message.folder && message.folder.id === target.id) {
        continue;
      }
      try {
        const full = await this._api.messages.getFull(message.id);
        if (carriesMark(full.headers || {}, header)) {
          marked.push(message.id);
        }
      } catch (error) {
        this._log(`a message can't be read: ${error.message}`);
      }
    }
    // Not before: a list that is being read must not change.
    for (let i = 0; i < marked.length; i += MOVE_AT_A_TIME) {
      await this._api.messages.move(marked.slice(i, i + MOVE_AT_A_TIME), target.id);
    }
    return marked.length;
  }
}
