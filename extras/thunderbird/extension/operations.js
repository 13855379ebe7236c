// The commands of the native program, each a function from a request to an iterator of items.
import {contacts, countSent, sentRecipients} from "./addresses.js";
import {closeAll, hideAll} from "./windows.js";

// An iterator without items, which does something when it is asked for the first one.
// eslint-disable-next-line require-yield
async function* doing(action) {
  await action();
}

export function makeOperations({api, directory, mover, summaries, sleep, log}) {
  const context = {api, directory, summaries, log};
  return {
    GiveAllFolders: () => directory.list(),
    GiveContacts: () => contacts(api),
    SentItemsEntries: () => countSent(context),
    GiveAddressesFromSentItems: () => sentRecipients(context),
    AddNewFolder: (request) => directory.create(request),
    SetMoveMails: (request) => doing(() => mover.set(request)),
    HideThunderbirdWindow: () => doing(() => hideAll({api, sleep})),
    ExitThunderbird: () => doing(() => closeAll({api})),
  };
}
