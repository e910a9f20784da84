// The official SDK's client works through an inbox, on the server of this build and on the one in the bundle,
// which the official tool for its format checks. The client validates every reply against its schemas.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readFileSync, realpathSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import test from 'node:test';
import { Client } from '@modelcontextprotocol/sdk/client/index.js';
import { StdioClientTransport } from '@modelcontextprotocol/sdk/client/stdio.js';

const { TROVI_SERVER, TROVI_COMMAND, TROVI_VERSION: version, TROVI_BUNDLE } = process.env;
const run = (...words) => execFileSync(words[0], words.slice(1), { encoding: 'utf8' });

test('the client works through an inbox, and the server is as its bundle says', async (t) => {
  const folder = mkdtempSync(join(tmpdir(), 'trovi-clients-'));
  t.after(() => rmSync(folder, { recursive: true }));
  run('env', `HOME=${folder}`, TROVI_COMMAND, 'note', 'Manda pra Corvane: o botão some.');
  const bundle = join(folder, 'bundle');
  const mcpb = (...words) => run(process.execPath, realpathSync('node_modules/.bin/mcpb'), ...words);
  const read = (name) => JSON.parse(readFileSync(join(bundle, name)));
  if (TROVI_BUNDLE) mcpb('unpack', TROVI_BUNDLE, bundle);
  const manifest = TROVI_BUNDLE ? read('manifest.json') : null;
  const inBundle = manifest?.server.mcp_config.command.replace('${__dirname}', bundle);

  const client = new Client({ name: 'Teste', version: '1' });
  const command = inBundle ?? TROVI_SERVER;
  const transport = new StdioClientTransport({ command, env: { HOME: folder }, stderr: 'pipe' });
  client.onerror = (error) => { throw error; }; // outside every promise: it ends the run
  transport.stderr.on('data', (line) => client.onerror(new Error(`on standard error: ${line}`)));
  t.after(() => transport.close());
  await client.connect(transport);
  const call = async (name, args = {}) => {
    const { content, isError } = await client.callTool({ name, arguments: args });
    assert(!isError, content[0].text);
    return JSON.parse(content[0].text);
  };

  assert.deepEqual(client.getServerVersion(), { name: 'trovi', title: 'Trovi', version });
  await client.ping();
  const { recados: [{ id }] } = await call('inbox_list');
  const claimed = await call('recado_claim', { id });
  const resultado = 'Abri a issue 42: https://exemplo.com/issues/42';
  const resolved = await call('recado_resolve', { id, resultado });
  assert.deepEqual(resolved, { ...claimed, status: 'resolvido', resultado });
  assert.deepEqual(await call('search', { consulta: 'issue 42' }), { total: 1, recados: [resolved] });
  const { tools } = await client.listTools();
  assert.equal(tools.length, 6);
  if (!TROVI_BUNDLE) return;

  mcpb('validate', join(bundle, 'manifest.json'));
  assert.equal(manifest.version, version);
  assert.deepEqual(manifest.compatibility.platforms, [process.platform]);
  assert.deepEqual(manifest.tools, tools.map(({ name, description }) => ({ name, description })));
  const english = read(manifest.localization.resources.replace('${locale}', 'en-US'));
  assert.deepEqual(english.tools.map(({ name }) => name), manifest.tools.map(({ name }) => name));
});
