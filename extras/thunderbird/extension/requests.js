// Reads what the native program sends. It is a program of this computer, but nothing it says is
// taken on trust: a message that is not exactly a request is none.

export const MAX_NAMES = 100;
export const MAX_TEXT = 1024;

const isObject = (value) => typeof value === "object" && value !== null && !Array.isArray(value);
const isText = (value) => typeof value === "string" && value.length <= MAX_TEXT;
const isFilledText = (value) => isText(value) && value.length > 0;
const isId = (value) => Number.isSafeInteger(value) && value > 0;

// The store's name and those of the levels below it, the new folder's last.
const isPath = (value) =>
  Array.isArray(value) &&
  value.length >= 2 &&
  value.length <= MAX_NAMES &&
  value.every(isFilledText);

// What each command has besides its name and the id.
const ARGUMENTS = new Map([
  ["GiveAllFolders", {}],
  ["GiveContacts", {}],
  ["SentItemsEntries", {}],
  ["GiveAddressesFromSentItems", {}],
  ["AddNewFolder", {path: isPath, store: isFilledText}],
  ["SetMoveMails", {move: (value) => typeof value === "boolean", folder: isText}],
  ["HideThunderbirdWindow", {}],
  ["ExitThunderbird", {}],
  ["Next", {}],
  ["Stop", {}],
]);

// The request that `message` is, with its own fields alone; null if it is none.
export function readRequest(message) {
  if (!isObject(message) || !isId(message.id) || !ARGUMENTS.has(message.command)) {
    return null;
  }
  const request = {id: message.id, command: message.command};
  for (const [name, isValid] of Object.entries(ARGUMENTS.get(message.command))) {
    if (!isValid(message[name])) {
      return null;
    }
    request[name] = message[name];
  }
  return request;
}
