// The workflows, as the forge's own parser reads them.
import assert from 'node:assert/strict';
import { readFileSync, readdirSync } from 'node:fs';
import { register } from 'node:module';
import test from 'node:test';
import { parse } from 'yaml';

// The parser imports JSON as a bundler does: without saying so.
register(`data:text/javascript,${encodeURIComponent(`
  export const load = (url, context, next) => next(url,
    url.endsWith('.json') ? { ...context, importAttributes: { type: 'json' } } : context);`)}`);
const { validate } = await import('@actions/languageservice');
const { TextDocument } = await import('vscode-languageserver-textdocument');

const folder = new URL('../../.github/workflows/', import.meta.url);
for (const name of readdirSync(folder)) {
  test(`${name} is valid, pins what it uses, and gives a shell nobody's text`, async () => {
    const text = readFileSync(new URL(name, folder), 'utf8');
    const found = await validate(TextDocument.create(`file:///${name}`, 'yaml', 1, text));
    assert.deepEqual(found.map(({ range, message }) => `${range.start.line + 1}: ${message}`), []);
    for (const { steps } of Object.values(parse(text).jobs)) {
      for (const { uses, run } of steps) {
        if (uses) assert.match(uses, /@[0-9a-f]{40}$/);
        assert.doesNotMatch(`${run}`, /\$\{\{/);
      }
    }
  });
}
