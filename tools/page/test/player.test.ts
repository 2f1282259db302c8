import { deepEqual, equal } from 'node:assert/strict';
import { test } from 'node:test';

import { Player } from '../src/session/Player';
import { Session } from '../src/session/Session';
import { FakeEngine, file, Frames, settled } from './fakeEngine';

const frames = new Frames();

async function start(name = 'a.srt'): Promise<{ session: Session; player: Player; engine: FakeEngine }> {
    const engine = new FakeEngine();
    const session = new Session(engine.asEngine());
    const player = new Player(session);
    await session.add([file(name)]);
    await settled();
    return { session, player, engine };
}

test('a film begins at its first entry and ends with its last', async () => {
    const { player } = await start();
    equal(player.time.value, 1000);
    equal(player.length.value, 6000);
    equal(player.moment.value?.shown, 0);
});

test('the play time stays within the film', async () => {
    const { player } = await start();
    const times = [-5, 1e12, 2500.6].map((ms) => {
        player.seek(ms);
        return player.time.value;
    });
    deepEqual(times, [0, 6000, 2501]);
    player.seek(3000);
    player.move(-5000);
    equal(player.time.value, 0);
});

test('playing goes on with the clock at its speed, and halts at the end', async () => {
    const { player } = await start();
    player.seek(0);
    player.play();
    frames.pass(100);
    equal(player.time.value, 100);
    player.speed.value = 8;
    frames.pass(100);
    equal(player.time.value, 900);
    frames.pass(100_000);
    equal(player.time.value, 6000);
    equal(player.isPlaying.value, false);
    player.toggle(); // again, from the start
    frames.pass(10);
    equal(player.time.value, 80);
    player.toggle();
    frames.pass(1000);
    equal(player.time.value, 80);
});

test('of the questions that come while one is asked, the last is asked', async () => {
    const { player, engine } = await start();
    let open = (): void => undefined;
    engine.gate = new Promise((wake) => (open = wake));
    const before = engine.calls.length;
    for (const ms of [1100, 1200, 1300, 1400]) player.seek(ms);
    open();
    await settled();
    deepEqual(engine.calls.slice(before), ['at 0 1100', 'at 0 1400']);
    equal(player.moment.value?.time, 1400);
});

test('another file pauses, and brings its own time', async () => {
    const { session, player } = await start();
    await session.add([file('b.srt')]);
    player.seek(5500);
    player.play();
    session.current.value = session.files.value[1]!;
    await settled();
    equal(player.isPlaying.value, false);
    equal(player.time.value, 1000);
    session.current.value = null;
    equal(player.length.value, 0);
    player.play();
    equal(player.isPlaying.value, false);
});

test('a film that is chosen while it waits begins once it is open', async () => {
    const { session, player, engine } = await start();
    let open = (): void => undefined;
    engine.gate = new Promise((wake) => (open = wake));
    const opening = session.add([file('b.srt')]);
    while (engine.calls.at(-1) !== 'open b.srt') await settled();
    session.current.value = session.files.value[1]!;
    equal(player.length.value, 0);
    open();
    await opening;
    await settled();
    equal(player.length.value, 6000);
    equal(player.time.value, 1000);
    equal(player.moment.value?.shown, 0);
});

test('a file that breaks the library while it plays is asked no more', async () => {
    const { session, player, engine } = await start('bad.srt');
    equal(session.files.value[0]!.state, 'broken');
    equal(player.moment.value, null);
    const before = engine.calls.length;
    player.seek(2000);
    await settled();
    deepEqual(engine.calls.slice(before), []);
});
