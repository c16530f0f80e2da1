import { call } from './library.mjs';

// Runs tasks one after another, in the order in which run() received them.
export class Queue {
  #last = Promise.resolve();

  run(task) {
    const result = this.#runAfter(this.#last, task);
    const ignore = () => {};
    this.#last = result.then(ignore, ignore);  // has no value, so the queue keeps no result alive
    return result;
  }

  // Uses `await` instead of then(), so that the stack of an error shows the callers.
  async #runAfter(last, task) {
    await last;
    return await task();
  }
}

const forgotten = new FinalizationRegistry((free) => free().catch(() => {}));

// A handle of the C interface, with the queue of its content.
export class Handle {
  constructor(queue, value) {
    this.queue = queue;
    this.value = value;
  }

  // Calls the function `name` of the C interface, with this handle as first argument. Resolves to the
  // last argument, which receives the result.
  run(name, ...args) {
    return this.queue.run(() => call(name, this.value, ...args));
  }

  // Calls the function `name` after the garbage collector has freed `owner`. The FinalizationRegistry
  // keeps this handle alive until then. So the handle must not refer to `owner`, or `owner` would never
  // be freed.
  freeWhenForgotten(owner, name) {
    forgotten.register(owner, () => this.run(name), this);
  }

  // Frees the handle now, by the function `name`.
  free(name) {
    forgotten.unregister(this);
    return this.run(name);
  }
}
