import { deepEqual, equal, ok } from 'node:assert/strict';
import { test } from 'node:test';

import { usualSettings } from '../src/engine/types';
import { Session, reasonOf } from '../src/session/Session';
import { FakeEngine, file, Frames, settled } from './fakeEngine';

new Frames();

const big5 = { ...usualSettings, language: 'big5' };

/// A session whose checks do not run by themselves.
function start(): { session: Session; engine: FakeEngine } {
    const engine = new FakeEngine();
    return { session: new Session(engine.asEngine()), engine };
}

const states = (session: Session): string[] => session.files.value.map(({ name, state }) => `${name} ${state}`);

test('files are listed at once, and opened one behind the other', async () => {
    const { session, engine } = start();
    const first = session.add([file('a.srt'), file('letter.srt')]);
    const second = session.add([file('b.srt')]);
    equal(session.busy.value, true);
    await Promise.all([first, second]);
    deepEqual(engine.calls, ['open a.srt', 'open letter.srt', 'open b.srt']);
    deepEqual(states(session), ['a.srt opened', 'letter.srt refused', 'b.srt opened']);
    equal(session.current.value?.name, 'a.srt');
    equal(session.busy.value, false);
});

test('how far a file is, is told while it is opened and no longer', async () => {
    const { session } = start();
    const seen = new Set<number | undefined>();
    session.files.follow(([item]) => seen.add(item?.progress?.done));
    await session.add([file('a.srt')]);
    ok(seen.has(0.5));
    equal(session.files.value[0]!.progress, null);
});

test('a file that shows is looked at rather than one that does not', async () => {
    const { session } = start();
    await session.add([file('letter.srt'), file('a.srt'), file('b.srt')]);
    equal(session.current.value?.name, 'a.srt');
});

test('a file that was removed is closed, and its neighbour is looked at', async () => {
    const { session, engine } = start();
    await session.add([file('a.srt'), file('b.srt'), file('c.srt')]);
    await session.remove(session.files.value[0]!);
    equal(session.current.value?.name, 'b.srt');
    session.current.value = session.files.value[1]!;
    await session.remove(session.files.value[1]!);
    equal(session.current.value?.name, 'b.srt');
    await session.remove(session.files.value[0]!);
    equal(session.current.value, null);
    deepEqual(engine.calls.slice(3), ['close a.srt', 'close c.srt', 'close b.srt']);
});

test('one that is removed while it is opened leaves nothing behind', async () => {
    const { session, engine } = start();
    let open = (): void => undefined;
    engine.gate = new Promise((wake) => (open = wake));
    const opening = session.add([file('a.srt')]);
    while (engine.calls.length === 0) await settled();
    deepEqual(states(session), ['a.srt opening']);
    await session.remove(session.files.value[0]!);
    open();
    await opening;
    deepEqual(engine.calls, ['open a.srt', 'close a.srt']);
    deepEqual(states(session), []);
});

test('a question that breaks the worker marks its file, and asks nothing more of it', async () => {
    const { session, engine } = start();
    await session.add([file('bad.srt'), file('a.srt')]);
    const [bad, good] = session.files.value;
    equal(await session.ask(bad!, (library, id) => library.at(id, 0, 0)), null);
    deepEqual(states(session), ['bad.srt broken', 'a.srt opened']);
    equal(reasonOf(bad!), 'bad.srt: trap');
    equal(await session.ask(bad!, (library, id) => library.at(id, 0, 0)), null);
    equal(engine.calls.filter((call) => call.startsWith('at')).length, 1);
    ok(await session.ask(good!, (library, id) => library.at(id, 0, 0)));
});

test('other settings reach every file, also those that broke the library or were refused', async () => {
    const { session, engine } = start();
    await session.add([file('sick.srt'), file('bad.srt'), file('letter.srt')]);
    await session.ask(session.files.value[1]!, (library, id) => library.at(id, 0, 0));
    deepEqual(states(session), ['sick.srt broken', 'bad.srt broken', 'letter.srt refused']);
    await session.apply(big5);
    const again = engine.calls.filter((call) => call.startsWith('reopen'));
    deepEqual(again, ['reopen sick.srt big5', 'reopen bad.srt big5', 'reopen letter.srt big5']);
    deepEqual(states(session), ['sick.srt opened', 'bad.srt opened', 'letter.srt refused']);
    equal(session.files.value[0]!.reason, '');
    equal(session.settings.value.language, 'big5');
    equal(session.busy.value, false);
});

test('a file that nobody can open is listed with its reason', async () => {
    const { session, engine } = start();
    session.addUnreadable('lost.srt', 'is damaged');
    deepEqual(states(session), ['lost.srt refused']);
    equal(session.news.value, 'lost.srt: is damaged');
    await session.apply(big5);
    await session.remove(session.files.value[0]!);
    deepEqual(engine.calls, []);
});

test('a search says how far it is, and its answer comes back', async () => {
    const { session } = start();
    await session.add([file('a.srt')]);
    const [item] = session.files.value;
    const stages = new Set<string | undefined>();
    session.files.follow(() => stages.add(item!.progress?.stage));
    deepEqual(await session.search(item!, 'words'), Uint32Array.of(1));
    ok(stages.has('searching'));
    equal(item!.progress, null);
});

test('every file is checked in the end, the one that is looked at first', async () => {
    const { session, engine } = start();
    await session.add([file('a.srt'), file('b.srt'), file('letter.srt')]);
    session.current.value = session.files.value[1]!;
    session.addUnreadable('lost.srt', 'is damaged');
    for (const end = Date.now() + 10_000; session.files.value.filter(({ report }) => report).length < 3; ) {
        ok(Date.now() < end, 'checked in time');
        await new Promise((wake) => setTimeout(wake, 20));
    }
    const checks = engine.calls.filter((call) => call.startsWith('findings'));
    deepEqual(checks, ['findings b.srt', 'findings a.srt', 'findings letter.srt']);
});
