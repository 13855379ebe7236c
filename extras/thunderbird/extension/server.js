// Answers requests, several at a time, in batches. After a batch the native program asks for the
// next one or stops, so that a slow reader makes this side wait and not remember.
import {readRequest} from "./requests.js";

export const MAX_RUNNING = 16;
export const MAX_BATCH_ITEMS = 200;
// UTF-16 units of JSON. With every unit escaped, a batch and one item still fit into the 1 MiB that
// the native program reads.
export const MAX_BATCH_UNITS = 64 * 1024;
export const MAX_ITEM_UNITS = 64 * 1024;
// A batch goes out after this time, even if it is small: whoever waits sees that something happens.
export const BATCH_MS = 500;

// Half a character of a pair can't be sent: no UTF-8 has it.
function isWellFormed(item) {
  let isSound = true;
  JSON.stringify(item, (_, value) => {
    isSound = isSound && !(typeof value === "string" && /[\uD800-\uDFFF]/u.test(value));
    return value;
  });
  return isSound;
}

export class Server {
  // `operations`: a function for each command, from its request to an async iterator of items.
  // `post` sends a message; `log` takes a line of text; `now` returns milliseconds.
  constructor({operations, post, log, now = Date.now}) {
    this._operations = operations;
    this._post = post;
    this._log = log;
    this._now = now;
    this._running = new Map();
  }

  // Handles one message of the native program. Resolves when it is answered; never rejects.
  async receive(message) {
    const request = readRequest(message);
    if (!request) {
      this._log("a message that is no request is ignored");
      return;
    }
    if (request.command === "Stop") {
      await this._end(request.id);
    } else if (request.command === "Next") {
      await this._continue(request.id);
    } else {
      await this._start(request);
    }
  }

  // Ends everything: nobody waits any more.
  async stopAll() {
    await Promise.all([...this._running.keys()].map((id) => this._end(id)));
  }

  async _start(request) {
    if (this._running.has(request.id)) {
      this._log(`request ${request.id} runs already; the second one is ignored`);
      return;
    }
    if (this._running.size >= MAX_RUNNING) {
      this._post({id: request.id, error: "too many requests at a time"});
      return;
    }
    const items = this._operations[request.command](request);
    this._running.set(request.id, {items, isBusy: false});
    await this._continue(request.id);
  }

  async _continue(id) {
    const running = this._running.get(id);
    if (!running || running.isBusy) {
      this._log(`request ${id} has no batch to wait for`);
      return;
    }
    running.isBusy = true;
    let answer;
    try {
      answer = {id, ...(await this._fillBatch(running.items))};
    } catch (error) {
      answer = {id, error: String(error.message || error).slice(0, 1000)};
    }
    running.isBusy = false;
    // Whoever stopped the request in the meantime expects nothing more.
    if (this._running.get(id) !== running) {
      return;
    }
    if (answer.error !== undefined || answer.done) {
      this._running.delete(id);
    }
    this._post(answer);
  }

  async _fillBatch(iterator) {
    const start = this._now();
    const items = [];
    let units = 0;
    while (
      items.length < MAX_BATCH_ITEMS &&
      units < MAX_BATCH_UNITS &&
      this._now() - start < BATCH_MS
    ) {
      const {value, done} = await iterator.next();
      if (done) {
        return {items, done: true};
      }
      const size = JSON.stringify(value).length;
      if (size <= MAX_ITEM_UNITS && isWellFormed(value)) {
        units += size;
        items.push(value);
      } else {
        this._log(`an item of ${size} characters is left out`);
      }
    }
    return {items, done: false};
  }

  async _end(id) {
    const running = this._running.get(id);
    if (!running) {
      return;
    }
    this._running.delete(id);
    try {
      await running.items.return();
    } catch (error) {
      this._log(`request ${id} did not end cleanly: ${error.message}`);
    }
  }
}
