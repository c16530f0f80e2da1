// Kills the broker while it holds 200 elements. Arguments: TITLE ADDRESS MODULE PROCESS
import assert from 'node:assert/strict';
import { setTimeout } from 'node:timers/promises';
import { Content } from 'tesselslb';

const [window, address, module, broker] = process.argv.slice(2);
const content = await Content.open({ window, address, module });
const elements = await content.find();
assert.equal(elements.length, 200);
const kill = () => process.kill(Number(broker));
while (await setTimeout(10).then(kill).catch(() => false));
// The first release fails with -9 and so finds out that the broker is lost. The other releases succeed
// without a call.
const results = await Promise.allSettled(elements.map((element) => element.release()));
const failures = results.flatMap((result) => (result.status === 'rejected' ? result.reason.code : []));
assert.deepEqual(failures, [-9]);
