// Saves a picture of a page of `mapexport view`:
//   node screenshot-page.mjs PACKAGES PAGE.html OUT.png [WIDTH HEIGHT SCHEME HASH KEYS...]
// HASH is the part of the address that chooses something ("" for none); KEYS go to the view.
import { openPage, settle, startBrowser } from '../tests/page/browser.mjs';

const [packages, file, out, width = '1280', height = '800', scheme = 'light', hash = '', ...keys] =
  process.argv.slice(2);
const browser = await startBrowser(packages);
const { page, trouble } = await openPage(browser, file, {
  width: Number(width),
  height: Number(height),
  scheme,
  hash,
});
await page.focus('#view');
for (const key of keys) {
  await page.keyboard.press(key);
  await settle(page);
}
await page.evaluate(() => document.activeElement.blur()); // the view's frame is not wanted
await settle(page);
await page.screenshot({ path: out, fullPage: Number(width) <= 760 });
await browser.close();
for (const line of trouble) console.error(line);
process.exitCode = trouble.length > 0 ? 1 : 0;
