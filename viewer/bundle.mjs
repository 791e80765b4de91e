// Bundles the page of `mapexport view` into one HTML document and writes it as C++ too:
//   node bundle.mjs FOLDER OUT
// FOLDER holds node_modules; OUT gets page.html and ViewerPage.cpp.
import { createHash } from 'node:crypto';
import { readFileSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { basename, dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';

const [packages, out] = process.argv.slice(2).map((path) => resolve(path));
const top = dirname(dirname(fileURLToPath(import.meta.url)));
const source = join(top, 'viewer', 'src');
const esbuild = createRequire(join(packages, 'package.json'))('esbuild');

// The folders of the packages that the bundles contain code of.
const bundled = new Set();

function bundle(entry) {
  const result = esbuild.buildSync({
    entryPoints: [join(source, entry)],
    nodePaths: [join(packages, 'node_modules')],
    bundle: true,
    minify: true,
    write: false,
    format: 'iife',
    target: 'es2022',
    charset: 'ascii',
    legalComments: 'inline',
    metafile: true,
  });
  for (const output of Object.values(result.metafile.outputs)) {
    for (const [path, { bytesInOutput }] of Object.entries(output.inputs)) {
      const [, folder] = path.match(/^(.*node_modules\/(?:@[^/]+\/)?[^/]+)\//) ?? [];
      if (folder && bytesInOutput > 0) bundled.add(resolve(folder));
    }
  }
  return result.outputFiles[0].text.trim();
}

// Nothing but these two texts may act in the page, whatever a model holds.
const allow = (text) => `'sha256-${createHash('sha256').update(text).digest('base64')}'`;
const script = bundle('main.js');
const style = bundle('page.css');
// The default does not reach to base-uri and form-action.
const policyOf = (...scripts) =>
  `default-src 'none'; base-uri 'none'; form-action 'none'; img-src data:; ` +
  `script-src ${scripts.map(allow).join(' ')}; style-src ${allow(style)}`;
const policy = policyOf(script);

// The copy that `export --watch --view` serves may also ask its server for the next one.
const reload = bundle('reload.js');
const servedPolicy = `${policyOf(script, reload)}; connect-src 'self'`;

// The licences of what is bundled, as docs/notices.md has them, too.
const stated = readFileSync(join(top, 'docs', 'notices.md'), 'utf8');
const notices = [...bundled].map((folder) => {
  const licence = readFileSync(join(folder, 'LICENSE'), 'utf8').trim();
  if (!stated.includes(licence)) throw new Error(`docs/notices.md lacks ${folder}/LICENSE`);
  return `${basename(folder)}\n\n${licence}`;
});
const notice = `<!--\nThis page contains:\n\n${notices.join('\n\n')}\n-->`;
if (/--(?!>$)/.test(notice.slice('<!--'.length))) throw new Error('a licence would end its comment');

const pieces = { '@POLICY@': policy, '@STYLE@': style, '@SCRIPT@': script };
const page = readFileSync(join(source, 'page.html'), 'utf8')
  .replace(/@(POLICY|STYLE|SCRIPT)@/g, (mark) => pieces[mark])
  .replace('<style>', () => `${notice}\n<style>`);
if (page.split('@MODEL@').length !== 2) throw new Error('@MODEL@ must be in the page once');
if (/<script\b/.test(script + reload) || /<\/(script|style)/i.test(script + reload + style)) {
  throw new Error('the bundle would end its own element');
}

/**
 * A C++ literal of a piece of text; octal escapes have three digits, so that the next character
 * can't continue them.
 */
function literal(piece) {
  const escaped = Array.from(piece, (byte) => {
    if (byte === 0x22 || byte === 0x5c) return `\\${String.fromCharCode(byte)}`;
    if (byte === 0x3f) return '\\?'; // no trigraphs
    if (byte >= 0x20 && byte < 0x7f) return String.fromCharCode(byte);
    return `\\${byte.toString(8).padStart(3, '0')}`;
  });
  return `"${escaped.join('')}"`;
}

function constant(name, text) {
  const bytes = Buffer.from(text, 'utf8');
  const lines = [];
  for (let at = 0; at < bytes.length; at += 4096)
    lines.push(literal(bytes.subarray(at, at + 4096)));
  return `const std::string_view mapexport::${name}(\n${lines.join('\n')},\n${bytes.length});\n`;
}

writeFileSync(join(out, 'page.html'), page);
writeFileSync(
  join(out, 'ViewerPage.cpp'),
  `// The page of viewer/, bundled.
#include "view/ViewerPage.h"

${constant('kViewerPage', page)}
${constant('kViewerPolicy', policy)}
${constant('kServedPolicy', servedPolicy)}
${constant('kReloadScript', reload)}`,
);
