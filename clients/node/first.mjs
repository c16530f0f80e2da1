// Finds an element of the sign-in form, reads its value, and sets another value.
import { Content } from 'tesselslb';

const content = await Content.open({
  window: 'Café Größe – Sign in',
  address: 'http://shop.example/portal/login.html',
});
const user = await content.findFirst({ text3: 'user' });
if (user === null) throw new Error('no element has the id "user"');
console.log(`the value was "${await user.attribute('value')}"`);
await user.setValue('Ada');
await user.release();
