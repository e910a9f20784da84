// The bill of materials, as the maker of its format checks it.
import assert from 'node:assert/strict';
import { createHash } from 'node:crypto';
import { readFileSync, readdirSync } from 'node:fs';
import { dirname, join } from 'node:path';
import test from 'node:test';
import { Validation } from '@cyclonedx/cyclonedx-library';
import { packaged as bill, server } from './support.mjs';

test('the bill is valid, and names the packages beside it and the SQLite in the server', async () => {
  const text = readFileSync(bill, 'utf8');
  assert.equal(await new Validation.JsonStrictValidator('1.6').validate(text), null);
  const { components } = JSON.parse(text);

  const packages = readdirSync(dirname(bill)).filter((name) => /\.(deb|gz|mcpb)$/.test(name));
  const checksum = (name) =>
    createHash('sha256').update(readFileSync(join(dirname(bill), name))).digest('hex');
  assert.deepEqual(
    Object.fromEntries(components.filter(({ type }) => type === 'file')
      .map(({ name, hashes: [{ content }] }) => [name, content])),
    Object.fromEntries(packages.map((name) => [name, checksum(name)])));

  const sqlite = components.find(({ name }) => name.startsWith('libsqlite3'));
  if (process.platform === 'linux') assert(readFileSync(server).includes(sqlite.version.split('-')[0]));
});
