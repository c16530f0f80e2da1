/// <reference lib="esnext.disposable" />
// Finds, reads and drives the elements of Silverlight content in the windows of other programs.
// This file is the manual. README.md shows how to begin.
//
// How it works: content runs inside a window, and a broker answers for it. A function that "calls"
// sends a request to the broker and waits for the answer. A broker that does not run yet is started
// or injected, which can take minutes. A call to a running broker ends after at most 54 s, a call
// that starts a broker after 70 s, a search that injects a broker after 320 s.
//
// Promises: a call runs on another thread, so it never blocks the event loop. Functions of one
// content and its elements run one after another, in the order in which the program called them. A
// wait counts as one of them: what you call after it runs after it. Different contents do not wait
// for each other.
//
// Failures: "not there" is not a failure: the promise resolves to null or to an empty array. An
// argument that cannot be right rejects it with a TypeError. All other failures reject it with a
// TesselError, except where Content.open says more.
//
// Elements: the broker keeps an object for each element that it hands out, until the program
// releases it. So release each element. Elements that the program forgets are released after the
// garbage collector has found them, which can be late or, at the end of the program, never.
//
// Lost broker: after the codes -6, -7 and -9 the content counts as lost, because each further call
// to a broker that has ended or hangs can take a minute. While it is lost, elements are released
// without a call. Other functions still call, and the next answer of the broker ends this state.

/** A rectangle in the broker's coordinates, as all points. */
export interface Rectangle {
  left: number;
  top: number;
  right: number;
  bottom: number;
}

/** Selects the broker. "tailored" is a broker that was built for this one address. */
export type Scheme = 'http' | 'https' | 'file' | 'tailored';

/** Names the content of a window. */
export interface Place {
  /** The exact title of a top-level window, or a window handle. */
  window: string | bigint | number;
  /** The address of the content. */
  address: string;
  /**
   * Without a scheme, functions of the content search for the broker: first for the tailored one,
   * then for the one of the address's scheme. If neither shows the content, a broker is injected
   * into the window's process.
   */
  scheme?: Scheme;
  /**
   * The folder of the TesselSLB_x64.dll to use. SLBroker.xap, which starting a broker needs, and
   * slinject.exe, which injecting one needs, belong in the same folder. Without this option: the
   * folder of an earlier open, or the folder bin of this package. A process can use only one folder.
   */
  module?: string;
}

/**
 * Three texts and two options that select elements. The broker defines their meaning. For
 * SceneBroker the texts are name, type and id, and an empty text, the default, matches everything.
 * option1 is the number of levels to search, and 0, the default, means all. With option2 a text
 * needs to be only a part.
 */
export interface Search {
  text1?: string;
  text2?: string;
  text3?: string;
  option1?: number;
  option2?: boolean;
}

/** Three texts and a number that identify an element. The broker defines their meaning. */
export interface Identity {
  text1: string;
  text2: string;
  text3: string;
  number: number;
}

export interface Ancestor {
  element: Element;
  /** The broker defines its meaning. */
  number: number;
}

/** How long to wait, in milliseconds. */
export interface Times {
  timeout: number;
  /** The time between two looks. Default: 250. */
  interval?: number;
}

/** The content of one window at one address. */
export class Content implements AsyncDisposable {
  private constructor();

  /**
   * Opens the content of a window. Makes no call. Rejects with the code -5 if the window does not
   * exist, or if not exactly one top-level window has exactly this title. Rejects with an Error
   * that is no TesselError if the library cannot be loaded: on another system than Windows for x64,
   * if a DLL is missing, or for a second folder of the module. Its message says what to do.
   */
  static open(place: Place): Promise<Content>;

  readonly window: bigint;
  readonly address: string;

  // Each of these calls once, or once for each broker that a search asks.

  /** The element at a point, or null. `option` (default: 0) is passed on to the broker. */
  at(x: number, y: number, option?: number): Promise<Element | null>;

  /**
   * The element that has the focus, or null. This always searches. So a content with a scheme other
   * than "tailored" is refused with -5.
   */
  focused(): Promise<Element | null>;

  /** All matching elements. */
  find(search?: Search): Promise<Element[]>;

  /** The first matching element, or null. Releases the others. */
  findFirst(search?: Search): Promise<Element | null>;

  // These look at once, and again after each interval, until the condition is met. Only the first
  // look may start or inject a broker. Later ones use the scheme that was found, and reject with -7
  // without a call if that broker has ended. Each failure of a look ends the wait. After the
  // time-out they reject with -103, and the error says what was seen last. A look that has begun is
  // not cut short, so the wait can take longer by one look.

  /** Waits until an element matches, and resolves to the first one. */
  waitUntilThere(search: Search, times: Times): Promise<Element>;

  /** Waits until no element matches. */
  waitUntilGone(search: Search, times: Times): Promise<void>;

  /** Frees the content. Makes no call. Its elements stay usable. */
  close(): Promise<void>;

  /** Closes the content, and ignores failures. Missing in versions of Node.js without the symbol. */
  [Symbol.asyncDispose](): Promise<void>;
}

/** One element of a content. It may outlive its Content. */
export class Element implements AsyncDisposable {
  private constructor();

  readonly id: string;
  /** The rectangle of the element if find() returned it, else an empty one. */
  readonly found: Rectangle;
  readonly window: bigint;
  /** The id of the window's process. */
  readonly process: number;
  /** The scheme of the broker that knows the element. */
  readonly scheme: Scheme;

  // Each of these calls once.

  parent(): Promise<Element | null>;

  ancestors(): Promise<Ancestor[]>;

  /** The elements of the default selector. */
  selector(): Promise<Element[]>;

  /** All matching elements below this one. */
  find(search?: Search): Promise<Element[]>;

  /** What identifies the element, alone or relative to an ancestor from the same content. */
  identify(ancestor?: Element): Promise<Identity>;

  rectangle(): Promise<Rectangle>;

  /**
   * An attribute or a state. Null if the broker answers with any positive status: the element has
   * no such attribute, or it is gone.
   */
  attribute(name: string): Promise<string | null>;

  /**
   * The texts of the items of a list. Null if the broker answers with any positive status: the
   * element is no list, or it is gone.
   */
  items(): Promise<string[] | null>;

  // Success means that the broker has accepted the command.

  click(): Promise<void>;
  setValue(text: string): Promise<void>;
  setFocus(): Promise<void>;
  /** Default: true. */
  check(on?: boolean): Promise<void>;
  select(item: string): Promise<void>;

  /** Waits, as the functions of Content do, until the attribute has this text. */
  waitUntilAttribute(name: string, text: string, times: Times): Promise<void>;

  /**
   * Releases the element by one call, or without a call while the content is lost. The element
   * names nothing afterwards, also if this rejects: its functions then reject with -102.
   */
  release(): Promise<void>;

  /** Lets go of the element without a call. The broker keeps its object until it ends. */
  abandon(): Promise<void>;

  /** Releases the element, and ignores failures. Missing in versions of Node.js without the symbol. */
  [Symbol.asyncDispose](): Promise<void>;
}

/** A failure. The message holds all of it, as a text for people. */
export class TesselError extends Error {
  private constructor();

  /**
   * -3 to -13 are codes of the module: -5 invalid argument, -6 the broker sent no answer, -7 the
   * broker cannot be reached, -9 no broker could be started. -101 to -103 are codes of this library:
   * out of memory, the element was released or the content closed before, time-out. A positive code
   * is the broker's own status.
   */
  readonly code: number;
  /** The name of the code, for example "SL_CANNOT_READ". */
  readonly name: string;
  /** What went wrong. */
  readonly meaning: string;
  /** What to do. */
  readonly cure: string;
  /** The function of the module that failed. */
  readonly function: string;
  /** The element's id. Empty if the call was not about one element. */
  readonly element: string;
  /** The address of the content. Empty if it is not known. */
  readonly address: string;
}
