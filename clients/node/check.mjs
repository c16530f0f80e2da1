// Checks the arguments that programs pass. Without these checks koffi, the package that calls the DLL,
// would use a number as a pointer.
import { inspect } from 'node:util';

export const SCHEMES = [undefined, 'http', 'https', 'file', 'tailored'];

const INT32 = [-(2 ** 31), 2 ** 31 - 1];
const UINT32 = [0, 2 ** 32 - 1];

function wrong(name, expected, value) {
  return new TypeError(`${name} must be ${expected}, but is ${inspect(value)}`);
}

export function text(name, value) {
  if (typeof value !== 'string') throw wrong(name, 'a string', value);
  if (value.includes('\0')) throw wrong(name, 'a string without U+0000', value);
  return value;
}

export function integer(name, value, [least, most] = INT32) {
  if (Number.isInteger(value) && value >= least && value <= most) return value;
  throw wrong(name, `a whole number from ${least} to ${most}`, value);
}

export function truth(name, value) {
  if (typeof value !== 'boolean') throw wrong(name, 'true or false', value);
  return value ? 1 : 0;
}

function members(name, value, known) {
  if (typeof value !== 'object' || value === null) throw wrong(name, 'an object', value);
  const unknown = Object.keys(value).find((key) => !known.includes(key));
  if (unknown === undefined) return value;
  throw new TypeError(`${name} has the unknown member "${unknown}"; it can have ${known.join(', ')}`);
}

export function search(value) {
  const known = ['text1', 'text2', 'text3', 'option1', 'option2'];
  const { text1 = '', text2 = '', text3 = '', option1 = 0, option2 = false } =
    members('search', value, known);
  return {
    text1: text('text1', text1), text2: text('text2', text2), text3: text('text3', text3),
    option1: integer('option1', option1), option2: truth('option2', option2),
  };
}

// Returns an array of the time-out and the interval, in milliseconds.
export function times(value) {
  const { timeout, interval = 250 } = members('times', value, ['timeout', 'interval']);
  return [integer('timeout', timeout, UINT32), integer('interval', interval, UINT32)];
}

function windowOf(value) {
  if (typeof value === 'string') return text('window', value);
  const handle = Number.isSafeInteger(value) ? BigInt(value) : value;
  if (typeof handle === 'bigint' && handle === BigInt.asUintN(64, handle)) return handle;
  throw wrong('window', 'a title or a window handle', value);
}

function schemeOf(value) {
  const number = SCHEMES.indexOf(value);
  if (number >= 0) return number;
  throw wrong('scheme', `one of ${SCHEMES.slice(1).join(', ')}`, value);
}

export function place(value) {
  const known = ['window', 'address', 'scheme', 'module'];
  const { window, address, scheme, module } = members('place', value, known);
  return {
    window: windowOf(window),
    address: text('address', address),
    scheme: schemeOf(scheme),
    module: module === undefined ? module : text('module', module),
  };
}
