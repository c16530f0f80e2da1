// Tests what report.mjs does not show. Needs the option --expose-gc, to run the garbage collector.
// Arguments: TITLE ADDRESS FILE. FILE is the file to which the broker writes its output.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { setTimeout } from 'node:timers/promises';
import { Content, TesselError } from 'tesselslb';

const [window, address, output] = process.argv.slice(2);
const open = { window, address };
const badHandle = { code: -102, message: /failed with -102 \(TESSEL_BAD_HANDLE\): .+\. To do: ./ };

await assert.rejects(Content.open({ ...open, module: 'C:\\none' }), /no C:\\none\\TesselSLB_x64\.dll; /);
const content = await Content.open(open), other = await Content.open(open);
await assert.rejects(Content.open({ ...open, module: 'C:\\none' }), /use one folder/);
const user = await content.waitUntilThere({ text3: 'user' }, { timeout: 0 });
const same = await other.waitUntilThere({ text3: 'user' }, { timeout: 0 });

// Calls of one content run in the order in which they were made.
const order = Array.from({ length: 40 }, (_, i) => String(i));
const values = order.map((value) => [user.setValue(value), user.attribute('value')][1]);
assert.deepEqual(await Promise.all(values), order);

// Calls of two contents run in parallel. `user` (of `content`) waits for a value that `same` (the same
// element, but of `other`) sets.
const met = user.waitUntilAttribute('value', 'go', { timeout: 30000, interval: 10 });
await same.setValue('go');
await met;

const anyContent = /** @type {any} */ (content);
/** @type {[string, () => Promise<unknown>][]} */
const wrongArguments = [
  ['window', () => Content.open({ window: 1.5, address })],
  ['scheme', () => anyContent.constructor.open({ ...open, scheme: 'ftp' })],
  ['place has the unknown member "title"', () => anyContent.constructor.open({ title: window })],
  ['x', () => anyContent.at('1', 2)],
  ['y', () => content.at(1, 2 ** 31)],
  ['text3', () => anyContent.find({ text3: 7 })],
  ['option2', () => anyContent.find({ option2: 1 })],
  ['search', () => anyContent.find('user')],
  ['timeout', () => anyContent.waitUntilGone({}, {})],
  ['interval', () => content.waitUntilGone({}, { timeout: 0, interval: -1 })],
  ['text must be a string without U', () => user.setValue('a\0b')],
  ['ancestor', () => user.identify(same)],
];
for (const [message, action] of wrongArguments) {
  await assert.rejects(action, { name: 'TypeError', message: new RegExp(`^${message}`) });
}

await same[Symbol.asyncDispose]();
await same[Symbol.asyncDispose]();
await assert.rejects(same.click(), badHandle);
await assert.rejects(same.release(), TesselError);

// If the program drops an element, the package releases the element after a garbage collection. This
// includes an element that was the result of the last call.
const releases = () => readFileSync(output, 'utf8').split('served: [3,').length - 1;
const before = releases();
await (async () => void await content.at(320, 344))();
while (releases() === before) {
  global.gc?.();
  await setTimeout(20);
}

await content.close();
await assert.rejects(content.find(), badHandle);
assert.equal(await user.attribute('value'), 'go');
await user.release();
