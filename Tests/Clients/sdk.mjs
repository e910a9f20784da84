// The official SDK's client works through an inbox. It validates every reply against its schemas.
import assert from 'node:assert/strict';
import test from 'node:test';
import { call, connect, inbox, version } from './support.mjs';

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
