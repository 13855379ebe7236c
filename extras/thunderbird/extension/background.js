// Ties the modules to Thunderbird. Everything that decides something is in them.
import {Connection} from "./connection.js";
import {FolderDirectory} from "./folders.js";
import {Mover} from "./mover.js";
import {makeOperations} from "./operations.js";
import {Server} from "./server.js";
import {Summaries} from "./summaries.js";

const NATIVE_PROGRAM = "postmarker_thunderbird";

const api = messenger;
const log = (text) => console.log(`Postmarker: ${text}`);
const sleep = (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds));
const directory = new FolderDirectory({api, sleep});
const summaries = new Summaries({api, sleep, log});
const mover = new Mover({api, directory, summaries, log});
const operations = makeOperations({api, directory, mover, summaries, sleep, log});

function serve(port) {
  const server = new Server({operations, log, post: (message) => port.postMessage(message)});
  port.onMessage.addListener((message) => server.receive(message));
  return () => server.stopAll();
}

api.messages.onNewMailReceived.addListener((folder, list) =>
  mover.moveNew(list).catch((error) => log(`new mail was not moved: ${error.message}`))
);

// The options page asks here, so that there is one mover.
const ANSWERS = {
  settings: () => mover.settings(),
  setHeader: ({header}) => mover.setHeader(String(header)),
  moveOld: () => mover.moveOld(),
};
api.runtime.onMessage.addListener((message) =>
  Object.prototype.hasOwnProperty.call(ANSWERS, message.ask)
    ? ANSWERS[message.ask](message)
    : undefined
);

const connect = () => api.runtime.connectNative(NATIVE_PROGRAM);
new Connection({connect, serve, sleep, log}).run();
