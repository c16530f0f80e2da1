// Loads the two DLLs through the package koffi, and calls the functions of TesselSLB_c.dll. The names
// of the functions are those of tesselslb.h without "tessel_" at the beginning.
import { existsSync } from 'node:fs';
import { win32 as path } from 'node:path';
import { fileURLToPath } from 'node:url';

import { TesselError } from './error.mjs';

// koffi runs each call on a separate stack of 128 KiB by default. This is 1 MiB, as for a thread of
// Windows.
const STACK_SIZE = 1 << 20;

let loaded = null;
let moduleFolder = null;  // the folder of the loaded TesselSLB_x64.dll; null before it is loaded

// Loads the DLLs, unless an earlier call has loaded them. `module` is the folder of TesselSLB_x64.dll.
// If it is undefined, uses the folder of the earlier call, or else the folder `bin` of this package.
export async function load(module) {
  if (process.platform !== 'win32' || process.arch !== 'x64') {
    const actual = `${process.platform} ${process.arch}`;
    throw new Error(`tesselslb cannot run on ${actual}; use Node.js for x64 on Windows`);
  }
  const { default: koffi } = await import('koffi');
  const bin = fileURLToPath(new URL('bin', import.meta.url));
  const folder = path.resolve(module ?? moduleFolder ?? bin);
  if (moduleFolder !== null && folder.toLowerCase() !== moduleFolder.toLowerCase()) {
    throw new Error(
      `cannot use the module in ${folder}, because this process uses the one in ${moduleFolder}; ` +
        'use one folder in the whole process');
  }
  loaded ??= loadFrom(koffi, folder, bin);
}

function loadFrom(koffi, folder, bin) {
  growStack(koffi);
  // Loads the module first. TesselSLB_c.dll, which is loaded next, uses the module that is already in
  // the process.
  loadDll(koffi, path.join(folder, 'TesselSLB_x64.dll'), 'name its folder with the option "module"');
  moduleFolder = folder;
  const library = loadDll(
    koffi, path.join(bin, 'TesselSLB_c.dll'),
    'install tesselslb again, or use a module of its version');
  const freeError = library.func('tessel_error_free', 'void', ['void *']);
  const types = declareTypes(koffi, library);
  const functions = {};
  for (const [name, parameters] of Object.entries(declareFunctions(koffi, types))) {
    const all = [...parameters, koffi.out(koffi.pointer('void *'))];
    functions[name] = library.func(`tessel_${name}`, 'int32_t', all);
  }
  const takeError = (pointer) => {
    const error = new TesselError(koffi.decode(pointer, types.error));
    freeError(pointer);
    return error;
  };
  // koffi refuses a call when too many calls, also of other packages, run or wait for a thread.
  const mostCalls = Math.ceil(koffi.config().max_async_calls * 0.75);
  return { functions, takeError, mostCalls };
}

function growStack(koffi) {
  if (koffi.config().async_stack_size >= STACK_SIZE) return;
  try {
    koffi.config({ async_stack_size: STACK_SIZE });
  } catch {
    // Another package has already called a function through koffi. After that, koffi refuses to change
    // the stack size, so the calls use the present size.
  }
}

function loadDll(koffi, file, cure) {
  if (!existsSync(file)) throw new Error(`there is no ${file}; ${cure}`);
  try {
    return koffi.load(file);
  } catch (error) {
    throw new Error(`cannot load ${file}: ${error.message}; ${cure}`, { cause: error });
  }
}

// The types have no names, because all packages in the process that use koffi share one set of names.
function declareTypes(koffi, library) {
  const freeText = library.func('tessel_text_free', 'void', ['void *']);
  const text = koffi.disposable('str16', freeText);
  const rectangle = koffi.struct({
    left: 'int32_t', top: 'int32_t', right: 'int32_t', bottom: 'int32_t',
  });
  return {
    text,
    rectangle,
    error: koffi.struct({
      code: 'int32_t', name: 'str16', meaning: 'str16', cure: 'str16', function: 'str16',
      element: 'str16', address: 'str16',
    }),
    search: koffi.struct({
      text1: 'str16', text2: 'str16', text3: 'str16', option1: 'int32_t', option2: 'int32_t',
    }),
    identity: koffi.struct({ text1: text, text2: text, text3: text, number: 'int32_t' }),
    place: koffi.struct({
      window: 'uintptr_t', process: 'uint32_t', scheme: 'int32_t', found: rectangle,
    }),
  };
}

// Returns the types of the parameters of each function, without the last parameter, `error`.
function declareFunctions(koffi, types) {
  const out = (type) => koffi.out(koffi.pointer(type));
  const [handle, number, text] = ['uint64_t', 'int32_t', 'str16'];
  const newHandle = out(handle);
  const search = koffi.pointer(types.search);
  return {
    content_open: ['uintptr_t', text, number, newHandle],
    content_open_title: [text, text, number, newHandle],
    content_close: [handle],
    content_window: [handle, out('uintptr_t')],
    content_at: [handle, number, number, number, newHandle],
    content_focused: [handle, newHandle],
    content_find: [handle, search, newHandle],
    content_find_first: [handle, search, newHandle],
    element_id: [handle, out(types.text)],
    element_place: [handle, out(types.place)],
    element_parent: [handle, newHandle],
    element_ancestors: [handle, newHandle],
    element_selector: [handle, newHandle],
    element_find: [handle, search, newHandle],
    element_identify: [handle, handle, out(types.identity)],
    element_rectangle: [handle, out(types.rectangle)],
    element_attribute: [handle, text, out(types.text)],
    element_items: [handle, newHandle],
    element_click: [handle],
    element_set_value: [handle, text],
    element_set_focus: [handle],
    element_check: [handle, number],
    element_select: [handle, text],
    element_release: [handle],
    element_abandon: [handle],
    list_size: [handle, out('size_t')],
    list_take: [handle, 'size_t', newHandle],
    list_number: [handle, 'size_t', out(number)],
    list_text: [handle, 'size_t', out(types.text)],
    list_free: [handle],
    wait_until_there: [handle, search, 'uint32_t', 'uint32_t', newHandle],
    wait_until_gone: [handle, search, 'uint32_t', 'uint32_t'],
    wait_until_attribute: [handle, text, text, 'uint32_t', 'uint32_t'],
  };
}

// The number of calls that were passed to koffi and have not ended. Further calls wait in `waiting`.
let running = 0;
const waiting = [];

// Calls a function on another thread. Resolves to the last argument. If the function has a result, the
// last argument is an array or an object that receives this result.
export async function call(name, ...args) {
  if (running < loaded.mostCalls) running += 1;
  else await new Promise((resolve) => waiting.push(resolve));
  const error = [null];
  try {
    const code = await startCall(name, [...args, error]);
    if (code !== 0) throw loaded.takeError(error[0]);  // thrown here, so that the error's stack shows the callers
    return args.at(-1);
  } finally {
    const next = waiting.shift();
    if (next) next();
    else running -= 1;
  }
}

function startCall(name, args) {
  return new Promise((resolve, reject) => {
    const settle = (failure, code) => (failure ? reject(failure) : resolve(code));
    loaded.functions[name].async(...args, settle);
  });
}

// Calls a function on the current thread, and returns the last argument. Use it only for functions
// that send nothing to the broker, because it blocks the event loop.
export function callNow(name, ...args) {
  const error = [null];
  if (loaded.functions[name](...args, error) !== 0) throw loaded.takeError(error[0]);
  return args.at(-1);
}
