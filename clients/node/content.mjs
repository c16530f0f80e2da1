import * as check from './check.mjs';
import { elementFrom, elementsFrom } from './element.mjs';
import { Handle, Queue } from './handle.mjs';
import { call, callNow, load } from './library.mjs';

// index.d.ts describes the members.
export class Content {
  #handle;

  constructor(handle, address) {
    this.#handle = handle;
    handle.freeWhenForgotten(this, 'content_close');
    this.window = BigInt(callNow('content_window', handle.value, [null])[0]);
    this.address = address;
  }

  static async open(place) {
    const { window, address, scheme, module } = check.place(place);
    await load(module);
    const name = typeof window === 'string' ? 'content_open_title' : 'content_open';
    const [value] = await call(name, window, address, scheme, [null]);
    return new Content(new Handle(new Queue(), value), address);
  }

  async at(x, y, option = 0) {
    const numbers = [check.integer('x', x), check.integer('y', y), check.integer('option', option)];
    return await elementFrom(this.#handle, 'content_at', ...numbers);
  }

  async focused() {
    return await elementFrom(this.#handle, 'content_focused');
  }

  async find(search = {}) {
    return await elementsFrom(this.#handle, 'content_find', check.search(search));
  }

  async findFirst(search = {}) {
    return await elementFrom(this.#handle, 'content_find_first', check.search(search));
  }

  async waitUntilThere(search, times) {
    const args = [check.search(search), ...check.times(times)];
    return await elementFrom(this.#handle, 'wait_until_there', ...args);
  }

  async waitUntilGone(search, times) {
    await this.#handle.run('wait_until_gone', check.search(search), ...check.times(times));
  }

  async close() {
    await this.#handle.free('content_close');
  }
}

if (Symbol.asyncDispose) {
  Content.prototype[Symbol.asyncDispose] = async function () {
    await this.close().catch(() => {});
  };
}
