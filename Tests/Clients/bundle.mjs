// The bundle, as the official tool for its format checks it and an assistant starts it.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import test from 'node:test';
import { call, connect, folder, inbox, installed, packaged as bundle, version } from './support.mjs';

const mcpb = (...words) => execFileSync(process.execPath, [installed('mcpb'), ...words]);

test('the bundle is valid, and what it says of the server the server says too', async (t) => {
  const unpacked = join(folder(t), 'bundle');
  mcpb('unpack', bundle, unpacked);
  mcpb('validate', join(unpacked, 'manifest.json'));

  const manifest = JSON.parse(readFileSync(join(unpacked, 'manifest.json')));
  assert.equal(manifest.version, version);
  assert.deepEqual(manifest.compatibility.platforms, [process.platform]);
  const { localization: { resources } } = manifest;
  const english = JSON.parse(readFileSync(join(unpacked, resources.replace('${locale}', 'en-US'))));
  assert.deepEqual(english.tools.map(({ name }) => name), manifest.tools.map(({ name }) => name));
  const icon = readFileSync(join(unpacked, manifest.icon));
  assert.deepEqual([icon.readUInt32BE(16), icon.readUInt32BE(20)], [512, 512]);

  const { command, args } = manifest.server.mcp_config;
  const start = { command: command.replace('${__dirname}', unpacked), args };
  assert.equal(start.command, join(unpacked, manifest.server.entry_point));
  const { home, ids: [id] } = inbox(t, ['Comprar pão e café.']);
  const client = await connect(t, home, start);
  assert.equal(client.getServerVersion().version, version);
  const { tools } = await client.listTools();
  assert.deepEqual(manifest.tools, tools.map(({ name, description }) => ({ name, description })));
  assert.equal((await call(client, 'inbox_list')).recados[0].id, id);
});
