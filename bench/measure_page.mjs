// Processor time that Chromium needs to open the page of a model: the page's process, the process
// that draws by software what a graphics card would, and the other processes of the browser:
//   node bench/measure_page.mjs MAPEXPORT PACKAGES MODEL [RUNS]
// PACKAGES is build/release/page-test.
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readdirSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

import { openPage, startBrowser } from '../tests/page/browser.mjs';

const [mapexport, packages, model, runs = '5'] = process.argv.slice(2);
const kTicks = Number(execFileSync('getconf', ['CLK_TCK'], { encoding: 'utf8' }));

/** Seconds of each of this process's descendants so far: by their ids, with their kinds. */
function usedSeconds() {
  const all = new Map();
  for (const id of readdirSync('/proc').filter((name) => /^\d+$/.test(name))) {
    try {
      const stat = readFileSync(`/proc/${id}/stat`, 'utf8');
      const fields = stat.slice(stat.lastIndexOf(')') + 2).split(' ');
      const seconds = (Number(fields[11]) + Number(fields[12])) / kTicks;
      const kind = /--type=([a-z-]+)/.exec(readFileSync(`/proc/${id}/cmdline`, 'utf8'))?.[1];
      all.set(Number(id), { parent: Number(fields[1]), seconds, kind });
    } catch {
      continue; // it has just ended
    }
  }
  const isOurs = (id) => all.has(id) && (id === process.pid || isOurs(all.get(id).parent));
  return new Map([...all].filter(([id]) => id !== process.pid && isOurs(id)));
}

/** What opening the page took: seconds of the page's process, of drawing, and of the others. */
async function open(browser, file) {
  const before = usedSeconds();
  const { page, trouble } = await openPage(browser, file);
  const used = [...usedSeconds()].map(([id, { seconds, kind }]) => ({
    kind,
    seconds: seconds - (before.get(id)?.seconds ?? 0),
  }));
  if (trouble.length > 0) throw new Error(trouble.join('\n'));
  await page.close();
  const sum = (list) => list.reduce((total, { seconds }) => total + seconds, 0);
  const ofPage = Math.max(...used.filter(({ kind }) => kind === 'renderer').map((p) => p.seconds));
  const drawing = sum(used.filter(({ kind }) => kind === 'gpu-process'));
  return [ofPage, drawing, sum(used) - ofPage - drawing];
}

const folder = mkdtempSync(join(tmpdir(), 'mapexport-page-'));
try {
  const page = join(folder, 'page.html');
  execFileSync(mapexport, ['view', model, '-o', page]);
  const all = [];
  for (let run = 0; run < Number(runs); ++run) {
    const browser = await startBrowser(packages);
    await (await browser.newPage()).goto('about:blank'); // its processes have started
    all.push(await open(browser, page));
    await browser.close();
  }
  for (const [i, name] of ['page', 'drawing', 'others'].entries()) {
    const seconds = all.map((run) => run[i]).sort((a, b) => a - b);
    const list = seconds.map((each) => each.toFixed(2)).join(', ');
    console.log(`${name}: ${seconds[seconds.length >> 1].toFixed(2)} s (median of ${list})`);
  }
} finally {
  rmSync(folder, { recursive: true });
}
