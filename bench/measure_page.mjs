// Processor time that Chromium needs to open the page of a model, all its processes together:
//   node bench/measure_page.mjs MAPEXPORT PACKAGES MODEL [RUNS]
// PACKAGES is build/release/page-test. The pictures are drawn by software, as in the tests.
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readdirSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

import { openPage, startBrowser } from '../tests/page/browser.mjs';

const [mapexport, packages, model, runs = '5'] = process.argv.slice(2);
const kTicks = Number(execFileSync('getconf', ['CLK_TCK'], { encoding: 'utf8' }));

/** Seconds of this process's descendants so far, with those of their children that have ended. */
function usedSeconds() {
  const all = new Map();
  for (const id of readdirSync('/proc').filter((name) => /^\d+$/.test(name))) {
    try {
      const stat = readFileSync(`/proc/${id}/stat`, 'utf8');
      const fields = stat.slice(stat.lastIndexOf(')') + 2).split(' ');
      const ticks = fields.slice(11, 15).reduce((sum, field) => sum + Number(field), 0);
      all.set(Number(id), { parent: Number(fields[1]), ticks });
    } catch {
      continue; // it has just ended
    }
  }
  const isOurs = (id) => id === process.pid || (all.has(id) && isOurs(all.get(id).parent));
  let sum = 0;
  for (const [id, { parent, ticks }] of all) if (isOurs(parent)) sum += ticks;
  return sum / kTicks;
}

const folder = mkdtempSync(join(tmpdir(), 'mapexport-page-'));
try {
  const page = join(folder, 'page.html');
  execFileSync(mapexport, ['view', model, '-o', page]);
  const seconds = [];
  for (let run = 0; run < Number(runs); ++run) {
    const browser = await startBrowser(packages);
    await (await browser.newPage()).goto('about:blank'); // its processes have started
    const before = usedSeconds();
    const { page: shown, trouble } = await openPage(browser, page);
    seconds.push(usedSeconds() - before);
    if (trouble.length > 0) throw new Error(trouble.join('\n'));
    await shown.close();
    await browser.close();
  }
  seconds.sort((a, b) => a - b);
  console.log(`${seconds[seconds.length >> 1].toFixed(2)} s (median of ${seconds.map((each) => each.toFixed(2)).join(', ')})`);
} finally {
  rmSync(folder, { recursive: true });
}
