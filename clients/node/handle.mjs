import { call } from './library.mjs';

// Runs tasks one after another, in the order of the calls of run().
export class Queue {
  #last = Promise.resolve();

  run(task) {
    const result = this.#runAfter(this.#last, task);
    const ignore = () => {};
    this.#last = result.then(ignore, ignore);  // does not keep the result alive
    return result;
  }

  // Awaits, so that the stack of an error shows the callers.
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

  // Calls a function about this handle. Resolves to the last argument.
  run(name, ...args) {
    return this.queue.run(() => call(name, this.value, ...args));
  }

  // Calls the function once the owner has been forgotten. The registry keeps this handle alive, so the
  // handle must not refer to the owner.
  freeWhenForgotten(owner, name) {
    forgotten.register(owner, () => this.run(name), this);
  }

  // Frees the handle by a function.
  free(name) {
    forgotten.unregister(this);
    return this.run(name);
  }
}
