// Starts the system's Chromium without a window and without the network, for a page in a file; with
// BROWSER=firefox in the environment Firefox ESR, whose WebGL needs a display.
import { createHash } from 'node:crypto';
import { createRequire } from 'node:module';
import { join, resolve } from 'node:path';
import { pathToFileURL } from 'node:url';

/** What Playwright puts into a page before a picture. The page refuses it; Firefox says so. */
const kDriversStyle = createHash('sha256').update('body {}').digest('base64');

const isFirefox = process.env.BROWSER === 'firefox';

/** `packages` is the folder whose node_modules hold playwright-core. */
export async function startBrowser(packages) {
  const playwright = createRequire(join(resolve(packages), 'package.json'))('playwright-core');
  const { chromium, firefox } = playwright;
  if (isFirefox) {
    return firefox.launch({
      channel: 'moz-firefox', // driven by WebDriver BiDi
      executablePath: process.env.FIREFOX ?? '/usr/bin/firefox-esr',
      headless: false,
      firefoxUserPrefs: { 'webgl.force-enabled': true },
    });
  }
  return chromium.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    args: [
      '--no-sandbox',
      '--disable-quic',
      '--no-first-run',
      '--disable-background-networking',
      '--disable-component-update',
      '--disable-sync',
      '--use-angle=swiftshader',
      '--enable-unsafe-swiftshader',
    ],
  });
}

/**
 * Opens the page at `file`. `trouble` collects all errors, refusals and warnings of the page's
 * console, and every request but the one for the page itself.
 */
export async function openPage(
  browser,
  file,
  { width = 1280, height = 800, scheme = 'light', hash = '' } = {},
) {
  const page = await browser.newPage({ viewport: { width, height }, colorScheme: scheme });
  const url = pathToFileURL(resolve(file)).href;
  const trouble = [];
  page.on('pageerror', ({ message }) => {
    if (!message.includes(kDriversStyle)) trouble.push(`error: ${message}`);
  });
  page.on('console', (message) => {
    // The software renderer tells that reading pixels is slow; it is not the page's doing.
    const isNoise = message.text().includes('GPU stall due to ReadPixels');
    if (['error', 'warning'].includes(message.type()) && !isNoise) trouble.push(message.text());
  });
  page.on('request', (request) => {
    const asked = request.url();
    if (!asked.startsWith(url) && !asked.startsWith('data:')) trouble.push(`request: ${asked}`);
  });
  await page.goto(url + hash);
  await settle(page);
  return { page, trouble };
}

/** Waits until what was asked for is drawn, and as sharp as it gets. */
export async function settle(page) {
  await nextPictures(page);
  await page.waitForSelector('#view:not([aria-busy])');
  await nextPictures(page);
}

async function nextPictures(page) {
  await page.evaluate(
    () =>
      new Promise((done) => {
        requestAnimationFrame(() => requestAnimationFrame(() => setTimeout(done)));
      }),
  );
}
