// The page's side of the workers: a file that breaks one costs no other file anything.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { createEngine } from '../src/engine/client';
import type { Reply, Request, Requests } from '../src/engine/protocol';
import { EngineBroken, usualSettings, type FileIn, type Progress, type RunResult } from '../src/engine/types';

const nothing = (): void => undefined;

/** Answers with its own number and what it has open; files with "bad" in their names break it, "gone" cannot be read. */
class FakeWorker {
    static made: FakeWorker[] = [];
    readonly number = FakeWorker.made.push(this);
    readonly held = new Map<number, string>();
    readonly asked: string[] = [];
    isEnded = false;
    onmessage: ((event: { data: Reply }) => void) | null = null;
    onerror: ((event: { message: string; preventDefault(): void }) => void) | null = null;

    postMessage(message: Request | { wasm: unknown }): void {
        if ('wasm' in message) return;
        this.asked.push(message.name);
        queueMicrotask(() => this.serve(message));
    }

    terminate(): void {
        this.isEnded = true;
    }

    private serve({ name, args }: Request): void {
        this.reply({ kind: 'progress', stage: 'reading', done: 0.5 });
        if (name === 'run') return this.reply({ kind: 'answer', answer: this.mended(args as Requests['run']) });
        const [id, files] = args as [number, FileIn[]];
        if (name === 'open' && files[0]!.name === 'gone.srt') return this.reply({ kind: 'failed', message: 'is gone' });
        if (name === 'open') this.held.set(id, files[0]!.name);
        const film = this.held.get(id);
        if (name !== 'open' && film === undefined) return this.reply({ kind: 'failed', message: 'not open' });
        if (film === 'bad-open.srt' || (film === 'bad-text.srt' && name === 'texts'))
            return this.reply({ kind: 'broken', message: 'trap' });
        if (film === 'bad-end.srt' && name === 'texts')
            return this.onerror?.({ message: 'ended', preventDefault: nothing });
        this.reply({ kind: 'answer', answer: name === 'open' ? { count: 1 } : [`${this.number}: ${film}`] });
    }

    private mended([files]: Requests['run']): RunResult {
        const name = files[0]!.name.replace('.', '.fixed.');
        return { status: 0, output: new Uint8Array(), errors: '', files: [{ name, bytes: Uint8Array.of(1) }] };
    }

    private reply(data: Reply): void {
        if (!this.isEnded) this.onmessage?.({ data });
    }
}

function engine(): ReturnType<typeof createEngine> {
    FakeWorker.made = [];
    return createEngine({
        wasm: () => Promise.resolve({} as WebAssembly.Module),
        startWorker: () => new FakeWorker() as unknown as Worker,
    });
}

function file(name: string, bytes: number[] = []): FileIn {
    return { name, data: new Blob([new Uint8Array(bytes)]) };
}

test('only the request that broke the worker fails; other files are opened again', async () => {
    for (const bad of ['bad-text.srt', 'bad-end.srt']) {
        const page = engine();
        const [good, broken] = await page.open([file('good.srt'), file(bad)], usualSettings, nothing);
        const [before, failing, after] = await Promise.allSettled([
            page.texts(good!.id, 0, 1),
            page.texts(broken!.id, 0, 1),
            page.texts(good!.id, 0, 1),
        ]);
        assert.deepEqual(before, { status: 'fulfilled', value: ['1: good.srt'] });
        assert.ok(failing.status === 'rejected' && failing.reason instanceof EngineBroken);
        assert.deepEqual(after, { status: 'fulfilled', value: ['2: good.srt'] });
        assert.deepEqual(FakeWorker.made.map(({ isEnded }) => isEnded), [true, false]);
    }
});

test('a file that breaks the worker when it is opened says so, and is not tried again', async () => {
    const page = engine();
    const [good, broken] = await page.open([file('good.srt'), file('bad-open.srt')], usualSettings, nothing);
    assert.equal(broken!.kind, 'broken');
    await assert.rejects(page.texts(broken!.id, 0, 1), EngineBroken);
    assert.deepEqual(await page.texts(good!.id, 0, 1), ['2: good.srt']);
    assert.deepEqual(FakeWorker.made[1]!.asked, ['open', 'texts']);
    assert.equal((await page.reopen(broken!.id, usualSettings)).kind, 'broken');
});

test('halves of pairs find each other, also later', async () => {
    const page = engine();
    const stream = [0, 0, 1, 0xba];
    const pair = [file('Film.SUB', stream), file('film.idx')];
    const together = await page.open(pair, usualSettings, nothing);
    assert.deepEqual(together.map(({ name }) => name), ['film.idx']);
    const [index] = await page.open([file('late.idx')], usualSettings, nothing);
    const [whole, ...more] = await page.open([file('late.sub', stream)], usualSettings, nothing);
    assert.equal(whole!.id, index!.id);
    assert.deepEqual(more, []);
    const texts = await page.open([file('other.sub', [0x7b])], usualSettings, nothing);
    assert.equal(texts.length, 1);
});

test('a file that was closed is gone', async () => {
    const page = engine();
    const [film] = await page.open([file('good.srt')], usualSettings, nothing);
    await page.close(film!.id);
    await assert.rejects(page.texts(film!.id, 0, 1));
});

test('a file that cannot be read is refused, and breaks nothing', async () => {
    const page = engine();
    const [good, gone] = await page.open([file('good.srt'), file('gone.srt')], usualSettings, nothing);
    assert.deepEqual([gone!.kind, gone!.kind === 'opened' ? '' : gone!.reason], ['refused', 'is gone']);
    await assert.rejects(page.texts(gone!.id, 0, 1), /is gone/);
    assert.deepEqual(await page.texts(good!.id, 0, 1), ['1: good.srt']);
});

test('a mended index brings its pictures under the name that it looks for', async () => {
    const page = engine();
    const options = { keepFormat: false, utf16: false, samiClass: '' };
    const pair = [file('film.idx'), file('film.sub', [0, 0, 1, 0xba, 5])];
    const [film] = await page.open(pair, usualSettings, nothing);
    const { name, pictures } = await page.mend(film!.id, options);
    assert.deepEqual([name, pictures?.name, pictures?.data.size], ['film.fixed.idx', 'film.fixed.sub', 5]);
    const [text] = await page.open([file('good.srt')], usualSettings, nothing);
    assert.equal((await page.mend(text!.id, options)).pictures, null);
});

test('how far each call is, is told under the name of its file', async () => {
    const page = engine();
    const told: Progress[] = [];
    const tell = (step: Progress): void => void told.push(step);
    const [film] = await page.open([file('good.srt')], usualSettings, tell);
    await page.search(film!.id, 'words', tell);
    await page.mend(film!.id, { keepFormat: true, utf16: false, samiClass: '' }, tell);
    assert.deepEqual(told, Array(3).fill({ name: 'good.srt', stage: 'reading', done: 0.5 }));
});
