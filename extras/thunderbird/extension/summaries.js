// Folders whose summary is not there: of a new profile, or after somebody deleted it. Thunderbird
// lists no message of such a folder, and makes the summary once the folder is shown.

const LOOK_MS = 250;
// The other side gives up after 20 seconds.
const LOOKS = 60;

export class Summaries {
  constructor({api, sleep, log}) {
    Object.assign(this, {_api: api, _sleep: sleep, _log: log, _turn: Promise.resolve()});
  }

  // Resolves to the number of messages in the folder, which can be listed then. Rejects if it can't
  // be had; a folder at the top of an account has none.
  async count(folder) {
    try {
      return await this._ask(folder);
    } catch (error) {
      this._log(`a folder is shown for a moment, as its summary is missing: ${error.message}`);
      return this._takeTurn(() => this._show(folder));
    }
  }

  async _ask(folder) {
    return (await this._api.folders.getFolderInfo(folder.id)).totalMessageCount;
  }

  // One folder is shown at a time.
  _takeTurn(action) {
    const result = this._turn.then(action);
    this._turn = result.catch(() => undefined);
    return result;
  }

  // In a tab of its own, so that the person's stays as it is.
  async _show(folder) {
    const windows = await this._api.windows.getAll({windowTypes: ["normal"]});
    if (windows.length === 0) {
      throw new Error("no window shows the folder");
    }
    const before = new Set(await this._mailTabs());
    // It reports an error as there is nothing to show yet; the tab is there all the same.
    this._api.mailTabs.create({displayedFolder: folder.id}).catch(() => undefined);
    try {
      return await this._wait(folder);
    } finally {
      const tabs = await this._mailTabs();
      await this._api.tabs.remove(tabs.filter((id) => !before.has(id)));
    }
  }

  async _mailTabs() {
    return (await this._api.tabs.query({type: "mail"})).map(({id}) => id);
  }

  // Until there is a summary that doesn't grow any more.
  async _wait(folder) {
    let last = null;
    for (let look = 0; look < LOOKS; ++look) {
      await this._sleep(LOOK_MS);
      const count = await this._ask(folder).catch(() => null);
      if (count !== null && count === last) {
        return count;
      }
      last = count;
    }
    throw new Error("the folder's summary does not come");
  }
}
