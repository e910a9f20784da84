// The bill of materials, as the maker of its format checks it. Scripts/gather checks the packages' sums.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import test from 'node:test';
import { Validation } from '@cyclonedx/cyclonedx-library';
import { packaged as bill, server } from './support.mjs';

test('the bill is valid, and names the SQLite that is in the server', async () => {
  const text = readFileSync(bill, 'utf8');
  assert.equal(await new Validation.JsonStrictValidator('1.6').validate(text), null);
  if (process.platform !== 'linux') return; // macOS has an SQLite of its own
  const { version } = JSON.parse(text).components.find(({ name }) => name.startsWith('libsqlite3'));
  assert(readFileSync(server).includes(version.split('-')[0]));
});
