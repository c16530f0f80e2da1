export class TesselError extends Error {
  // Takes the members of a `tessel_error`.
  constructor({ code, name, meaning, cure, function: failed, element, address }) {
    const target = element ? ` of element ${JSON.stringify(element)}` : '';
    const place = address ? ` Address: ${address}` : '';
    super(`${failed}${target} failed with ${code} (${name}): ${meaning}. To do: ${cure}.${place}`);
    Object.assign(this, { code, name, meaning, cure, function: failed, element, address });
  }
}
