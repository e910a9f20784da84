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

const { TROVI_SERVER, TROVI_RECORDER, TROVI_VERSION: version, TROVI_BUNDLE } = process.env;
const run = (...words) => execFileSync(words[0], words.slice(1), { encoding: 'utf8' });

/// Plays a session with the server that `command` starts. Returns the tools that it lists.
async function session(test, home, command) {
  const client = new Client({ name: 'Teste', version: '1' });
  const transport = new StdioClientTransport({ command, env: { HOME: home }, stderr: 'pipe' });
  client.onerror = (error) => { throw error; }; // outside every promise: it ends the run
  transport.stderr.on('data', (line) => client.onerror(new Error(`on standard error: ${line}`)));
  test.after(() => transport.close());
  await client.connect(transport);
  const call = async (name, args = {}) => {
    const { content, isError } = await client.callTool({ name, arguments: args });
    assert(!isError, content[0].text);
    return JSON.parse(content[0].text);
  };

  assert.deepEqual(client.getServerVersion(), { name: 'trovi', title: 'Trovi', version });
  assert.match(client.getInstructions(), /^O Trovi é a caixa de recados/);
  await client.ping();
  const { recados: [{ id, destino }] } = await call('inbox_list');
  const { destinos } = await call('destinos_list');
  assert.deepEqual(destinos.find(({ nome }) => nome === 'Corvane'), destino);
  const claimed = await call('recado_claim', { id });
  assert.equal(claimed.pego_por, 'Teste');
  const resultado = 'Abri a issue 42: https://exemplo.com/issues/42';
  const resolved = await call('recado_resolve', { id, resultado });
  assert.deepEqual(resolved, { ...claimed, status: 'resolvido', resultado });
  assert.deepEqual(await call('recado_get', { id }), resolved);
  assert.deepEqual(await call('search', { consulta: 'issue 42' }), { total: 1, recados: [resolved] });
  return (await client.listTools()).tools;
}

/// A folder that is removed after the test, with one message in the inbox of `home`.
function prepared(test) {
  const folder = mkdtempSync(join(tmpdir(), 'trovi-clients-'));
  test.after(() => rmSync(folder, { recursive: true }));
  run('env', `HOME=${folder}`, TROVI_RECORDER, '--user', 'file', 'Manda pra Corvane: o botão some.');
  return folder;
}

test('a whole session', async (t) => {
  assert.equal((await session(t, prepared(t), TROVI_SERVER)).length, 6);
});

test('the bundle is valid, and what it says of the server the server says too', {
  skip: !TROVI_BUNDLE && 'there is no bundle',
}, async (t) => {
  const folder = prepared(t);
  const unpacked = join(folder, 'bundle');
  const mcpb = (...words) => run(process.execPath, realpathSync('node_modules/.bin/mcpb'), ...words);
  mcpb('unpack', TROVI_BUNDLE, unpacked);
  mcpb('validate', join(unpacked, 'manifest.json'));

  const read = (name) => JSON.parse(readFileSync(join(unpacked, name)));
  const manifest = read('manifest.json');
  assert.equal(manifest.version, version);
  assert.deepEqual(manifest.compatibility.platforms, [process.platform]);
  const english = read(manifest.localization.resources.replace('${locale}', 'en-US'));
  assert.deepEqual(english.tools.map(({ name }) => name), manifest.tools.map(({ name }) => name));
  const { command } = manifest.server.mcp_config;
  const tools = await session(t, folder, command.replace('${__dirname}', unpacked));
  assert.deepEqual(manifest.tools, tools.map(({ name, description }) => ({ name, description })));
});
