export { Content } from './content.mjs';
export { Element } from './element.mjs';
export { TesselError } from './error.mjs';
