// A temporary inbox, and a client of the official SDK that treats any stray output as an error.
import { execFileSync } from 'node:child_process';
import { mkdtempSync, realpathSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { Client } from '@modelcontextprotocol/sdk/client/index.js';
import { StdioClientTransport } from '@modelcontextprotocol/sdk/client/stdio.js';

const { TROVI_SERVER, TROVI_RECORDER, TROVI_VERSION, TROVI_PACKAGE } = process.env;
export { TROVI_SERVER as server, TROVI_VERSION as version, TROVI_PACKAGE as packaged };

/// The path of an npm program by its name.
export const installed = (name) =>
  realpathSync(fileURLToPath(new URL(`node_modules/.bin/${name}`, import.meta.url)));

/// A folder that is removed after the test.
export function folder(test) {
  const path = mkdtempSync(join(tmpdir(), 'trovi-clients-'));
  test.after(() => rmSync(path, { recursive: true }));
  return path;
}

/// A home folder with the notes in its inbox, and their ids in the same order.
export function inbox(test, notes = []) {
  const home = folder(test);
  const ids = notes.map((note) =>
    execFileSync(TROVI_RECORDER, ['--user', 'file', note], {
      env: { HOME: home },
      encoding: 'utf8',
    }).split('\n', 1)[0]);
  return { home, ids };
}

/// A client whose server the SDK starts as `start` says, with `home` as home folder. A reply that
/// its schemas reject, or a line on standard error, ends the run.
export async function connect(test, home, start = { command: TROVI_SERVER }) {
  const client = new Client({ name: 'Teste', version: '1' });
  const transport = new StdioClientTransport({ ...start, env: { HOME: home }, stderr: 'pipe' });
  transport.stderr.on('data', (line) => client.onerror(new Error(`on standard error: ${line}`)));
  client.onerror = (error) => { throw error; }; // outside every promise: it ends the run
  test.after(() => transport.close());
  await client.connect(transport);
  return client;
}

/// The result of a tool; throws if the tool reports an error.
export async function call(client, name, args = {}) {
  const { content, isError } = await client.callTool({ name, arguments: args });
  if (isError) throw new Error(content[0].text);
  return JSON.parse(content[0].text);
}
