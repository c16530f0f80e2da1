/// <reference lib="esnext.disposable" />
// Finds, reads and drives the elements of Silverlight content in the windows of other programs.
// This file is the manual. README.md shows how to begin.
//
// How it works: content runs inside a window, and a program that is called the broker answers for it.
// Each function of Content and Element sends a request to the broker and waits for the answer, unless
// its comment says that it sends nothing. If no broker runs yet, the function starts or injects one,
// which can take minutes. A function takes at most 54 s with a broker that runs, 70 s if it starts a
// broker, and 320 s if it searches and injects a broker.
//
// Promises: each function runs on another thread, so it never blocks the event loop. Functions of one
// content and its elements run one after another, in the order in which the program called them. This
// includes waits: a function that you call after a wait runs after it. Different contents do not wait
// for each other.
//
// Failures: "not found" is not a failure. The promise then resolves to null or to an empty array. An
// invalid argument rejects the promise with a TypeError. All other failures reject it with a
// TesselError, except for the failures that Content.open lists.
//
// Elements: the broker keeps an object for each element that it hands out, until the program
// releases the element. So release each element. Elements that the program forgets are released after
// the garbage collector has found them. That can be late, and at the end of the program it does not
// happen.
//
// Lost broker: after the codes -6, -7 and -9 the content counts as lost, because each further request
// to a broker that has ended or hangs can take a minute. While the content is lost, releasing elements
// sends nothing. Other functions still send their requests, and the next answer of the broker ends
// this state. A broker that was started again does not know the old elements: find them again.

/** A rectangle in the broker's coordinates, like all points. */
export interface Rectangle {
  left: number;
  top: number;
  right: number;
  bottom: number;
}

/** Selects the broker. "tailored" is a broker for one site alone: one scheme and host. */
export type Scheme = 'http' | 'https' | 'file' | 'tailored';

/** Names the content of a window. */
export interface Place {
  /** The exact title of a top-level window, or a window handle. */
  window: string | bigint | number;
  /** The address of the content. */
  address: string;
  /**
   * Without a scheme, the functions of the content search for the broker. The search tries the
   * tailored broker first, and then the broker for the scheme of the address. If neither shows the
   * content, a broker is injected into the process of the window.
   */
  scheme?: Scheme;
  /**
   * The folder of the TesselSLB_x64.dll to use. SLBroker.xap, which starting a broker needs, and
   * slinject.exe, which injecting one needs, belong in the same folder. The default is
   * the folder that an earlier Content.open used, else the folder bin of this package. A process can
   * use only one folder.
   */
  module?: string;
}

/**
 * Three texts and two options that select elements. The broker defines their meaning. For
 * SceneBroker the texts are name, type and id, and an empty text, the default, matches everything.
 * option1 is the number of levels to search. 1 means only the roots of a content, or only the children
 * of an element. 0, the default, means all levels. With option2 a text matches if it is a part of the
 * text of the element.
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
  /** The time between two checks. Default: 250. */
  interval?: number;
}

/** The content of one window at one address. */
export class Content implements AsyncDisposable {
  private constructor();

  /**
   * Opens the content of a window. Sends nothing. Rejects with the code -5 if the window does not
   * exist, or if not exactly one top-level window has exactly this title. Rejects with an Error
   * that is no TesselError if the library cannot be loaded: on another system than Windows for x64,
   * if a DLL is missing, or if an earlier open used a different folder of the module. Its message says
   * what to do.
   */
  static open(place: Place): Promise<Content>;

  readonly window: bigint;
  readonly address: string;

  /** The element at a point, or null. The broker defines the meaning of `option`. Default: 0. */
  at(x: number, y: number, option?: number): Promise<Element | null>;

  /**
   * The element that has the focus, or null. This function always searches, beginning with the
   * tailored broker. So it works only without a scheme or with "tailored" (-5 otherwise).
   */
  focused(): Promise<Element | null>;

  /** All matching elements. */
  find(search?: Search): Promise<Element[]>;

  /**
   * The first matching element, or null. Asks for all matching elements too, and releases the others by
   * one request each. So a narrow search is faster.
   */
  findFirst(search?: Search): Promise<Element | null>;

  // The two functions check a condition at once, and again after each interval, until it is met. Only
  // the first check may start or inject a broker. Later checks use the scheme that was found, and
  // reject with -7 without a request if that broker has ended. If a check fails, the wait ends with its
  // failure. After the time-out the functions reject with -103, and the error says what was seen last.
  // A check that has begun is not interrupted.

  /** Waits until an element matches, and resolves to the first one. */
  waitUntilThere(search: Search, times: Times): Promise<Element>;

  /** Waits until no element matches. */
  waitUntilGone(search: Search, times: Times): Promise<void>;

  /** Frees the content. Sends nothing. Its elements stay usable. */
  close(): Promise<void>;

  /** Closes the content, and ignores failures. Missing in versions of Node.js without the symbol. */
  [Symbol.asyncDispose](): Promise<void>;
}

/** One element of a content. It may outlive its Content. */
export class Element implements AsyncDisposable {
  private constructor();

  readonly id: string;
  /** The rectangle of the element at the time when a search by texts found it, else an empty one. */
  readonly found: Rectangle;
  readonly window: bigint;
  /** The id of the window's process. */
  readonly process: number;
  /** The scheme of the broker that knows the element. */
  readonly scheme: Scheme;

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
   * An attribute or a state. SceneBroker has the states "value", "checked" ("true" or "false") and
   * "selected". Null if the broker answers with any positive status: the element has no such
   * attribute, or it no longer exists.
   */
  attribute(name: string): Promise<string | null>;

  /**
   * The texts of the items of a list. Null if the broker answers with any positive status: the
   * element is not a list, or it no longer exists.
   */
  items(): Promise<string[] | null>;

  // The next functions act on the element. Success means that the broker has accepted the command.

  click(): Promise<void>;
  setValue(text: string): Promise<void>;
  setFocus(): Promise<void>;
  /** Default: true. */
  check(on?: boolean): Promise<void>;
  select(item: string): Promise<void>;

  /** Waits, as the functions of Content do, until the attribute has this text. */
  waitUntilAttribute(name: string, text: string, times: Times): Promise<void>;

  /**
   * Releases the element by one request. Sends nothing while the content is lost. Afterwards the
   * element names nothing, even if this function rejects, and its functions reject with -102.
   */
  release(): Promise<void>;

  /** Gives the element up and sends nothing. The broker keeps its object until it ends. */
  abandon(): Promise<void>;

  /** Releases the element, and ignores failures. Missing in versions of Node.js without the symbol. */
  [Symbol.asyncDispose](): Promise<void>;
}

/** A failure. The message holds all fields as one text for people. */
export class TesselError extends Error {
  private constructor();

  /**
   * -3 to -13 are codes of the module: -5 invalid argument, -6 the broker sent no answer, -7 the
   * broker cannot be reached, -9 no broker could be started. Codes of this
   * library: -101 out of memory, -102 the element was already released or the content already closed,
   * -103 time-out. A positive code is the broker's own status.
   */
  readonly code: number;
  /** The name of the code, for example "SL_CANNOT_READ". */
  readonly name: string;
  /** What went wrong. */
  readonly meaning: string;
  /** What to do. */
  readonly cure: string;
  /** An internal name of the function that failed, for a log. */
  readonly function: string;
  /** The id of the element. Empty if it is not known. */
  readonly element: string;
  /** The address of the content. Empty if it is not known. */
  readonly address: string;
}
