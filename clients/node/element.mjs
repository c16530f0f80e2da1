import * as check from './check.mjs';
import { Handle } from './handle.mjs';
import { call, callNow } from './library.mjs';

// index.d.ts describes the members.
export class Element {
  #handle;

  // Called only inside a task of the queue. No other task of this content runs at the same time, so
  // callNow does not have to wait until another thread has finished its call.
  constructor(handle) {
    this.#handle = handle;
    handle.freeWhenForgotten(this, 'element_release');
    const { found, window, process, scheme } = callNow('element_place', handle.value, {});
    [this.id] = callNow('element_id', handle.value, [null]);
    this.found = found;
    this.window = BigInt(window);
    this.process = process;
    this.scheme = check.SCHEMES[scheme];
  }

  async parent() {
    return await elementFrom(this.#handle, 'element_parent');
  }

  async ancestors() {
    return await entriesFrom(this.#handle, 'element_ancestors', (list, index) => ({
      element: take(this.#handle.queue, list, index),
      number: callNow('list_number', list, index, [null])[0],
    }));
  }

  async selector() {
    return await elementsFrom(this.#handle, 'element_selector');
  }

  async find(search = {}) {
    return await elementsFrom(this.#handle, 'element_find', check.search(search));
  }

  async identify(ancestor) {
    return await this.#handle.run('element_identify', this.#valueOf(ancestor), {});
  }

  async rectangle() {
    return await this.#handle.run('element_rectangle', {});
  }

  async attribute(name) {
    const [text] = await this.#handle.run('element_attribute', check.text('name', name), [null]);
    return text;
  }

  async items() {
    return await entriesFrom(this.#handle, 'element_items',
                       (list, index) => callNow('list_text', list, index, [null])[0]);
  }

  async click() {
    await this.#handle.run('element_click');
  }

  async setValue(text) {
    await this.#handle.run('element_set_value', check.text('text', text));
  }

  async setFocus() {
    await this.#handle.run('element_set_focus');
  }

  async check(on = true) {
    await this.#handle.run('element_check', check.truth('on', on));
  }

  async select(item) {
    await this.#handle.run('element_select', check.text('item', item));
  }

  async waitUntilAttribute(name, text, times) {
    const texts = [check.text('name', name), check.text('text', text)];
    await this.#handle.run('wait_until_attribute', ...texts, ...check.times(times));
  }

  async release() {
    await this.#handle.free('element_release');
  }

  async abandon() {
    await this.#handle.free('element_abandon');
  }

  // Returns the ancestor's handle, or 0 if there is no ancestor. Refuses an element of another content,
  // because the queue of this content does not order the calls for that element.
  #valueOf(ancestor) {
    if (ancestor === undefined) return 0;
    if (ancestor instanceof Element && ancestor.#handle.queue === this.#handle.queue) {
      return ancestor.#handle.value;
    }
    throw new TypeError('ancestor must be an element of the same content');
  }
}

if (Symbol.asyncDispose) {
  Element.prototype[Symbol.asyncDispose] = async function () {
    await this.release().catch(() => {});
  };
}

// Each of the next functions calls a function of the C interface with the handle as first argument.
// elementFrom is for functions that return one element. elementsFrom is for functions that return a
// list of elements, and entriesFrom is for functions that return a list of any kind.

export function elementFrom(handle, name, ...args) {
  return handle.queue.run(async () => {
    const [value] = await call(name, handle.value, ...args, [null]);
    return value ? new Element(new Handle(handle.queue, value)) : null;
  });
}

export async function elementsFrom(handle, name, ...args) {
  return await entriesFrom(handle, name, (list, index) => take(handle.queue, list, index), ...args);
}

// Calls the C function `name`, which returns a list, and then `read` for each index of the list.
// Resolves to the array of what `read` returned, or to null if the C function returned no list.
function entriesFrom(handle, name, read, ...args) {
  return handle.queue.run(async () => {
    const [list] = await call(name, handle.value, ...args, [null]);
    if (!list) return null;
    try {
      const [length] = callNow('list_size', list, [null]);
      return Array.from({ length }, (_, index) => read(list, index));
    } finally {
      await call('list_free', list);
    }
  });
}

function take(queue, list, index) {
  return new Element(new Handle(queue, callNow('list_take', list, index, [null])[0]));
}
