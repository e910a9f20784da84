// The official SDK's client works the inbox. It holds every reply against its schemas by itself.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import test from 'node:test';
import {
  ListPromptsResultSchema,
  ListResourcesResultSchema,
} from '@modelcontextprotocol/sdk/types.js';
import { call, connect, folder, inbox, server, version } from './support.mjs';

test('a whole session, from the greeting to the result that is found again', async (t) => {
  const { home, ids: [bread, button] } = inbox(t, [
    'Comprar pão e café.',
    'Manda pra Corvane: o botão de salvar some.',
  ]);
  const client = await connect(t, home);
  assert.deepEqual(client.getServerVersion(), { name: 'trovi', title: 'Trovi', version });
  assert.match(client.getInstructions(), /^O Trovi é a caixa de recados/);
  await client.ping();
  const { tools } = await client.listTools();
  assert.equal(tools.length, 6);
  const none = { method: 'resources/list' };
  assert.deepEqual(await client.request(none, ListResourcesResultSchema), { resources: [] });
  none.method = 'prompts/list';
  assert.deepEqual(await client.request(none, ListPromptsResultSchema), { prompts: [] });
  none.method = 'prompts/get';
  await assert.rejects(client.request(none, ListPromptsResultSchema), { code: -32601 });

  const listed = await call(client, 'inbox_list');
  assert.deepEqual(listed.recados.map(({ id }) => id), [button, bread]);
  const { destinos } = await call(client, 'destinos_list');
  assert.deepEqual(destinos.find(({ nome }) => nome === 'Corvane'), listed.recados[0].destino);

  const claimed = await call(client, 'recado_claim', { id: button });
  assert.equal(claimed.pego_por, 'Teste');
  const resultado = 'Abri a issue 42: https://exemplo.com/issues/42';
  const resolved = await call(client, 'recado_resolve', { id: button, resultado });
  assert.deepEqual(resolved, { ...claimed, status: 'resolvido', resultado });
  assert.deepEqual(await call(client, 'recado_get', { id: button }), resolved);
  const found = await call(client, 'search', { consulta: 'issue 42' });
  assert.deepEqual(found, { total: 1, recados: [resolved] });
  assert.equal((await call(client, 'inbox_list')).total, 1);
});

test('each of 1,000 concurrent calls gets its own answer', async (t) => {
  const { home, ids: [id] } = inbox(t, ['Comprar pão e café.']);
  const client = await connect(t, home);
  await Promise.all(Array.from({ length: 1000 }, async (_, n) => {
    if (n % 2) return assert.equal((await call(client, 'recado_get', { id })).id, id);
    return assert.rejects(call(client, 'recado_get', { id: `${n}` }),
      { message: `Recado ${n} não encontrado.` });
  }));
});

test('two clients work one inbox at once and lose nothing', async (t) => {
  const { home, ids } = inbox(t, Array.from({ length: 40 }, (_, n) => `Recado ${n}`));
  const names = ['Um', 'Outro'];
  const clients = await Promise.all(
    names.map((name) => connect(t, home, { command: server }, name)));
  await Promise.all(ids.map(async (id, n) => {
    const client = clients[n % 2];
    assert.equal((await call(client, 'recado_claim', { id })).pego_por, names[n % 2]);
    await call(client, 'recado_resolve', { id, resultado: `feito ${n}` });
  }));
  for (const client of clients) {
    const { recados } = await call(client, 'inbox_list', { status: 'resolvido', limite: 100 });
    const done = (recado) => [recado.id, recado.pego_por, recado.resultado];
    assert.deepEqual(recados.map(done).sort(),
      ids.map((id, n) => [id, names[n % 2], `feito ${n}`]).sort());
  }
});

test('the process is gone within a second of the end of its input, with status 0', async (t) => {
  const { home } = inbox(t);
  const status = join(folder(t), 'status');
  const client = await connect(t, home,
    { command: 'sh', args: ['-c', '"$0"; echo $? >"$1"', server, status] });
  await Promise.all([call(client, 'destinos_list'), client.ping()]);
  const start = performance.now();
  await client.close();
  assert.ok(performance.now() - start < 1000);
  assert.equal(readFileSync(status, 'utf8'), '0\n');
});
