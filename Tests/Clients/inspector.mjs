// The inspector's command line, the part of it that runs on the Node of Debian 12.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { dirname } from 'node:path';
import test from 'node:test';
import { inbox, installed, server } from './support.mjs';

const program = installed('mcp-inspector-cli');

test('the inspector lists the tools and calls one', (t) => {
  const { home, ids: [id] } = inbox(t, ['Comprar pão e café.']);
  const inspect = (...request) => JSON.parse(execFileSync(
    process.execPath, [program, '--cli', server, '--method', ...request],
    {
      cwd: dirname(program), // it looks for its own version beside the current folder
      env: { ...process.env, HOME: home },
      stdio: ['ignore', 'pipe', 'ignore'], // it announces its successor on standard error
    },
  ));
  assert.deepEqual(inspect('tools/list').tools.map(({ name }) => name), [
    'inbox_list', 'recado_get', 'recado_claim', 'recado_resolve', 'search', 'destinos_list']);
  const reply = inspect(
    'tools/call', '--tool-name', 'inbox_list', '--tool-arg', 'status=todos', 'limite=5');
  assert.equal(reply.isError, false);
  assert.equal(JSON.parse(reply.content[0].text).recados[0].id, id);
});
