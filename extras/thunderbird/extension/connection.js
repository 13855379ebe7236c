// Keeps the native program running.

// A program that ended sooner than this did not work.
const GOOD_RUN_MS = 60000;
const FIRST_PAUSE_MS = 1000;
const MAX_TRIES = 6;

// Starts the native program by `connect()`, which returns a port, and has each one served by
// `serve(port)`, which returns a function that ends the service. When the program ends it is started
// again, after pauses that grow; one that never works is left alone after MAX_TRIES starts.
export class Connection {
  constructor({connect, serve, sleep, log, now = Date.now}) {
    Object.assign(this, {_connect: connect, _serve: serve, _sleep: sleep, _log: log, _now: now});
  }

  async run() {
    let pause = FIRST_PAUSE_MS;
    for (let tries = 1; tries <= MAX_TRIES; ++tries) {
      const start = this._now();
      const reason = await this._runOnce();
      this._log(`the native program has ended: ${reason}`);
      if (this._now() - start >= GOOD_RUN_MS) {
        tries = 0;
        pause = FIRST_PAUSE_MS;
      }
      await this._sleep(pause);
      pause *= 2;
    }
    this._log("the native program doesn't run, and is not started again");
  }

  // Resolves to why the program ended.
  _runOnce() {
    return new Promise((resolve) => {
      const port = this._connect();
      const end = this._serve(port);
      port.onDisconnect.addListener(() => {
        end();
        resolve(port.error ? port.error.message : "without an error");
      });
    });
  }
}
