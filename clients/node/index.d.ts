/// <reference lib="esnext.disposable" />
// Finds, reads and drives the elements of Silverlight content in the windows of other programs.
// This file is the manual. README.md shows how to begin.
//
// How it works: Silverlight content runs inside a window. A program that is called the broker answers
// requests about the content. Each function of Content and Element sends a request to the broker and
// waits for the answer, unless its comment says that it sends nothing. If no broker runs yet, the
// function starts a broker, or injects one into the process of the window. A request takes at most
// 54 s with a broker that runs, 70 s if it starts a broker, and 320 s if it searches for a broker and
// injects one.
//
// Promises: each function returns a promise and runs on another thread, so it never blocks the event
// loop. Functions of one content and its elements run one after another, in the order in which the
// program called them. A wait counts as one function: what you call after waitUntilThere() runs only
// after this wait has ended. Functions of different contents run
// at the same time, as long as Node.js has a free thread (see UV_THREADPOOL_SIZE in README.md).
//
// Failures: "not found" is not a failure. The promise then resolves to null or to an empty array. An
// argument of a wrong type, out of range, with an unknown member or scheme, or with U+0000 rejects the
// promise with a TypeError. If the DLLs cannot be loaded, Content.open rejects its promise with an
// Error that is no TesselError (see the comment of Content.open). All other failures are a TesselError. For example, an empty
// name or address, or a window that does not exist, has the code -5.
//
// Elements: the broker keeps an object for each element that it has sent to your program, until your
// program releases the element. So release each element. If your program forgets an element, it is
// released after the garbage collector has found it. That can be late. At the end of the program,
// forgotten elements are not released.
//
// Lost broker: the codes -6, -7 and -9 mean that the broker has ended or hangs, or that no broker could
// be started. After one of them the content counts as lost. While the content is lost, releasing an
// element sends nothing, because each further request could take a minute. All other functions still
// send their requests. When the broker answers one of them, the content is no longer lost. A broker
// that was started again does not know the old elements: find them again.

/** A rectangle in the coordinates of the broker. All points use these coordinates too. */
export interface Rectangle {
  left: number;
  top: number;
  right: number;
  bottom: number;
}

/**
 * Names the kind of broker. 'tailored' means a broker for one site alone: for one scheme and host.
 * Each of the others means the broker for all addresses that begin with this scheme.
 */
export type Scheme = 'http' | 'https' | 'file' | 'tailored';

/** Says which content to open, and how to find its broker. */
export interface Place {
  /** The exact title of a top-level window (a string), or a window handle (a number or a bigint). */
  window: string | bigint | number;
  /**
   * The address of the content. Only its beginning is used to find the broker: the scheme, host and
   * port. Of a file address, everything before the sixth slash is used. For file:///C:/a/b/c.html this
   * is file:///C:/a/b. Write this beginning exactly as SceneBroker prints it when it starts.
   */
  address: string;
  /**
   * The kind of broker. If it is missing, the functions of the content search for the broker. The
   * search tries the tailored broker first, and then the broker for the scheme of the address. If
   * neither broker shows the content, the search injects a broker into the process of the window.
   */
  scheme?: Scheme;
  /**
   * The folder of the TesselSLB_x64.dll to use. The same folder must contain SLBroker.xap (needed to
   * start a broker) and slinject.exe (needed to inject a broker). The default is the folder that an
   * earlier Content.open used. If there was none, the default is the folder `bin` of this package. A
   * process can use only one folder.
   */
  module?: string;
}

/**
 * Three texts and two options that select elements. The broker defines their meaning. The defaults
 * are empty texts, 0 and false. SceneBroker defines the members so:
 * - The texts are the name, the type and the id of an element. An empty text matches everything.
 * - `option1` is the number of levels to search. 1 means only the roots of a content, or only the
 *   children of an element. 0 means all levels.
 * - If `option2` is true, a text matches every element whose text contains it. If `option2` is false,
 *   the two texts must be equal.
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
  /** A number that the broker sends with the ancestor. The broker defines its meaning. */
  number: number;
}

/** The times of a wait, in milliseconds. */
export interface Times {
  /** How long to wait at most. If it is 0, the condition is checked once. */
  timeout: number;
  /** The time between two checks. Default: 250. */
  interval?: number;
}

/** The content of one window at one address. */
export class Content implements AsyncDisposable {
  private constructor();

  /**
   * Opens the content of a window. Sends nothing.
   *
   * Rejects with a TesselError with the code -5 if the address is empty, if the window does not exist,
   * or if no window or more than one window has the title. Only top-level windows with exactly this
   * title count.
   *
   * Rejects with an Error that is no TesselError if the library cannot be loaded: the system is not
   * Windows for x64, a DLL is missing, or an earlier Content.open used a different folder `module`. The
   * message of the Error says what to do.
   */
  static open(place: Place): Promise<Content>;

  /** The handle of the window. */
  readonly window: bigint;
  /** The address that was passed to Content.open. */
  readonly address: string;

  /**
   * The element at a point, or null if there is none. The broker defines the meaning of `option`
   * (default: 0).
   */
  at(x: number, y: number, option?: number): Promise<Element | null>;

  /**
   * The element that has the focus, or null if there is none. This function always searches for the
   * broker, and tries the tailored broker first. Therefore it rejects with -5 if the content was opened
   * with a scheme other than 'tailored'.
   */
  focused(): Promise<Element | null>;

  /** All matching elements. */
  find(search?: Search): Promise<Element[]>;

  /**
   * The first matching element, or null if there is none. Requests all matching elements, and then
   * releases all except the first one, by one request each. So findFirst is fast only if few elements
   * match.
   */
  findFirst(search?: Search): Promise<Element | null>;

  // The next two functions wait for a condition. They check the condition at once, and again after
  // each interval, until it is met. Only the first check may start or inject a broker. Later checks use
  // the broker that the first check found. If that broker has ended, they send nothing, and the wait
  // rejects with -7. If a check fails, the wait rejects with the failure of this check. After the
  // time-out the wait rejects with -103, and the error says what was seen last. The time-out does not
  // interrupt a check. So if the broker hangs, the wait can take longer than the time-out.

  /** Waits until at least one element matches, and resolves to the first matching element. */
  waitUntilThere(search: Search, times: Times): Promise<Element>;

  /** Waits until no element matches. */
  waitUntilGone(search: Search, times: Times): Promise<void>;

  /** Frees the content. Sends nothing. Its elements stay usable. */
  close(): Promise<void>;

  /**
   * Closes the content, and ignores failures. Old versions of Node.js have no Symbol.asyncDispose. There
   * this function is missing.
   */
  [Symbol.asyncDispose](): Promise<void>;
}

/** One element of a content. It may outlive its Content. */
export class Element implements AsyncDisposable {
  private constructor();

  readonly id: string;
  /**
   * If find(), findFirst() or waitUntilThere() found the element: the rectangle that the element had
   * then. Otherwise an empty rectangle.
   */
  readonly found: Rectangle;
  /** The handle of the window. */
  readonly window: bigint;
  /** The id of the window's process. */
  readonly process: number;
  /** The scheme of the broker that knows the element. */
  readonly scheme: Scheme;

  /** The parent, or null if the element has none. */
  parent(): Promise<Element | null>;

  /** The ancestors. The broker defines their order. SceneBroker lists them from the parent to the root. */
  ancestors(): Promise<Ancestor[]>;

  /**
   * A list of elements that the broker chooses for this element. The list is called the default
   * selector. The broker defines its meaning and its order. SceneBroker lists the elements from the
   * root down to this element.
   */
  selector(): Promise<Element[]>;

  /** All matching elements below this element. */
  find(search?: Search): Promise<Element[]>;

  /** What identifies the element, alone or relative to an ancestor from the same content. */
  identify(ancestor?: Element): Promise<Identity>;

  /** The rectangle that the element has now. */
  rectangle(): Promise<Rectangle>;

  /**
   * An attribute or a state as text. SceneBroker has the states "value", "checked" ("true" or "false")
   * and "selected". Resolves to null if the broker answers with any positive status. Usually the element then
   * has no such attribute, or the element no longer exists. Rejects with -5 if `name` is empty.
   */
  attribute(name: string): Promise<string | null>;

  /**
   * The texts of the items, if the element is a list. Resolves to null if the broker answers with any
   * positive status. Usually the element then is not a list, or it no longer exists.
   */
  items(): Promise<string[] | null>;

  // The next five functions act on the element. When their promise resolves, the broker has accepted
  // the command, but the content may change later. To wait for the change, use waitUntilAttribute().

  click(): Promise<void>;
  setValue(text: string): Promise<void>;
  setFocus(): Promise<void>;
  /** Checks the element, or unchecks it if `on` is false. Default: true. */
  check(on?: boolean): Promise<void>;
  /** Selects the item with this text. */
  select(item: string): Promise<void>;

  /** Waits until the attribute is exactly `text`. The comment above waitUntilThere() says how. */
  waitUntilAttribute(name: string, text: string, times: Times): Promise<void>;

  /**
   * Releases the element by one request. Sends nothing while the content is lost. Afterwards all
   * functions of this Element reject with -102, even if release() itself has rejected.
   */
  release(): Promise<void>;

  /** Gives the element up without a request. The broker keeps the object until the broker ends. */
  abandon(): Promise<void>;

  /**
   * Releases the element, and ignores failures. Old versions of Node.js have no Symbol.asyncDispose.
   * There this function is missing.
   */
  [Symbol.asyncDispose](): Promise<void>;
}

/** A failure. `message` holds all members below as one text for people. */
export class TesselError extends Error {
  private constructor();

  /**
   * The codes from -3 to -13 come from the module, TesselSLB_x64.dll. The most important ones:
   * - -5: an argument is invalid.
   * - -6: the broker sent no answer.
   * - -7: the broker cannot be reached.
   * - -9: no broker could be started.
   *
   * The codes of this library:
   * - -101: out of memory.
   * - -102: the element was already released, or the content was already closed.
   * - -103: the time-out of a wait has passed.
   *
   * A positive code is the broker's own status.
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
