// Reads the note of the scene "Orders", and writes another one.
import { Content } from 'tesselslb';

const content = await Content.open({
  window: 'Orders',
  address: 'https://orders.example:8443/desk/',
});
const note = await content.waitUntilThere({ text3: 'note' }, { timeout: 10_000 });
console.log(`the note was "${await note.attribute('value')}"`);
await note.setValue('Delivered');
await note.release();
