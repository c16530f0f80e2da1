// Reads and changes the sign-in form with the npm package, and prints the results. The programs in
// other languages print the same. Arguments: TITLE ADDRESS
import { Content, TesselError } from 'tesselslb';

const [window, address] = process.argv.slice(2);
const print = console.log;

/** @param {string | null} text */
const textOf = (text) => (text === null ? 'none' : `"${text}"`);

/** @param {{ id: string } | null} element */
const idOf = (element) => element?.id ?? 'none';

/** @param {import('tesselslb').Rectangle} r */
const rectangleOf = (r) => `[${r.left} ${r.top} ${r.right} ${r.bottom}]`;

/** @param {{ id: string, release(): Promise<void> } | null} element */
async function idOnce(element) {
  await element?.release();
  return idOf(element);
}

/** @param {Promise<unknown>} action */
async function expectError(action) {
  const e = await action.catch((error) => error);
  if (!(e instanceof TesselError)) return print(`no TesselError: ${e}`);
  print(`error ${e.code} ${e.name}: ${e.meaning}; ${e.cure} (${e.function}, "${e.element}", ${e.address})`);
}

const content = await Content.open({ window, address });
for (const element of await content.find()) {
  print(`${element.id} ${rectangleOf(element.found)} ${textOf(await element.attribute('type'))}`);
  await element.release();
}

const user = await content.waitUntilThere({ text3: 'user' }, { timeout: 0 });
const list = await content.waitUntilThere({ text2: 'ListBox' }, { timeout: 0 });
for (const item of await list.items() ?? []) print(`item ${item}`);
for (const { element, number } of await list.ancestors()) {
  print(`ancestor ${await idOnce(element)} ${number}`);
}
for (const link of await list.selector()) print(`selector ${await idOnce(link)}`);
const parent = await list.parent() ?? undefined;
const own = await list.identify(), relative = await list.identify(parent);
print(`identity ${own.text1}|${own.text2}|${own.text3} ${own.number} ${relative.number}`);
print(`parent ${await idOnce(parent ?? null)}, rectangle ${rectangleOf(await list.rectangle())}`);

await user.setValue('Zoë 𝄞');
print(`value ${textOf(await user.attribute('value'))}`);
await list.select('Łódź');
print(`selected ${textOf(await list.attribute('selected'))}`);
const box = await content.at(320, 344);
await box?.check();
await box?.waitUntilAttribute('checked', 'true', { timeout: 5000 });
await box?.click();
print(`${idOf(box)} ${textOf(await box?.attribute('checked') ?? null)}`);
await list.setFocus();
print(`focus ${await idOnce(await content.focused())}`);

print(`at ${idOf(await content.at(-1, -1))}, attribute ${textOf(await user.attribute('nope'))}, ` +
  `items ${await user.items() ?? 'none'}`);
await expectError(user.select('x'));
await expectError(content.waitUntilThere({ text3: 'nobody' }, { timeout: 0 }));
await expectError(content.waitUntilGone({ text3: 'user' }, { timeout: 0 }));
await Promise.all([user.release(), list.release(), box?.release(), content.close()]);
