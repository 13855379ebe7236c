// Addresses of contacts, and of those to whom mail was sent.
import {walk} from "./folders.js";

// The values of a card's EMAIL lines, which may be folded and carry a group and parameters.
export function* cardAddresses(card) {
  for (const line of card.replace(/\r?\n[ \t]/g, "").split(/\r?\n/)) {
    const match = /^(?:[\w-]+\.)?EMAIL(?:;(?:[^":]|"[^"]*")*)?:(.*)$/i.exec(line);
    if (match) {
      yield match[1].replace(/\\(.)/g, "$1").trim();
    }
  }
}

function* contactAddresses({properties = {}}) {
  const texts = [properties.PrimaryEmail, properties.SecondEmail];
  yield* texts.filter((text) => typeof text === "string").map((text) => text.trim());
  if (typeof properties.vCard === "string") {
    yield* cardAddresses(properties.vCard);
  }
}

// The addresses of all address books, each one once.
export async function* contacts(api) {
  const seen = new Set();
  for (const book of await api.addressBooks.list(true)) {
    for (const contact of book.contacts || []) {
      for (const address of contactAddresses(contact)) {
        if (address !== "" && !seen.has(address)) {
          seen.add(address);
          yield address;
        }
      }
    }
  }
}

async function* sentFolders(directory) {
  for (const account of await directory.accounts()) {
    for (const {folder} of walk(account)) {
      if ((folder.specialUse || []).includes("sent")) {
        yield folder;
      }
    }
  }
}

// All messages of a folder, page by page. A reader that goes early lets Thunderbird forget the rest.
export async function* messagesOf({api, summaries}, folder) {
  if ((await summaries.count(folder)) === 0) {
    return;
  }
  let page = await api.messages.list(folder.id);
  try {
    for (;;) {
      yield* page.messages;
      if (!page.id) {
        return;
      }
      page = await api.messages.continueList(page.id);
    }
  } finally {
    if (page.id) {
      await api.messages.abortList(page.id);
    }
  }
}

// Yields the number of sent messages. A folder that can't be asked counts as empty.
export async function* countSent({directory, summaries, log}) {
  let count = 0;
  for await (const folder of sentFolders(directory)) {
    try {
      count += await summaries.count(folder);
    } catch (error) {
      log(`a folder of sent mail can't be counted: ${error.message}`);
    }
  }
  yield count;
}

// Yields an item for each sent message. A folder that can't be read is left out.
export async function* sentRecipients({api, directory, summaries, log}) {
  for await (const folder of sentFolders(directory)) {
    try {
      for await (const message of messagesOf({api, summaries}, folder)) {
        const {recipients = [], ccList = [], bccList = []} = message;
        yield {to: recipients, cc: ccList, bcc: bccList};
      }
    } catch (error) {
      log(`a folder of sent mail can't be read: ${error.message}`);
    }
  }
}
