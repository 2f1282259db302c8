/// An engine that answers at once, or when it is told to; and the few things of a window that the session needs.

import type { Engine, FileIn, Moment, OpenResult, Opened, Progress } from '../src/engine/types';
import { EngineBroken } from '../src/engine/types';

/// Frames come when a test says so, and know no other time than its own.
export class Frames {
    private waiting: ((now: number) => void)[] = [];
    now = 0;

    constructor() {
        Object.assign(globalThis, {
            window: globalThis,
            requestAnimationFrame: (act: (now: number) => void) => this.waiting.push(act),
        });
        Object.defineProperty(globalThis.performance, 'now', { value: () => this.now, configurable: true });
    }

    pass(ms: number): void {
        this.now += ms;
        const due = this.waiting;
        this.waiting = [];
        for (const act of due) act(this.now);
    }
}

/// What was promised so far is kept.
export const settled = (): Promise<void> => new Promise((wake) => setImmediate(wake));

export const file = (name: string): FileIn => ({ name, data: new Blob([name]) });

export function film(id: number, name: string, starts: number[], length = 1000): Opened {
    return {
        kind: 'opened',
        id,
        name,
        size: 1,
        formatName: 'SubRip',
        count: starts.length,
        starts: Uint32Array.from(starts),
        ends: Uint32Array.from(starts, (start) => start + length),
        tracks: [{ language: '', languageName: '', first: 0, end: starts.length }],
    } as unknown as Opened;
}

/// By name: "bad" breaks the worker when it is asked about, "sick" when it is opened unless the language is Big5,
/// "letter" is refused. Every call is noted.
export class FakeEngine {
    readonly calls: string[] = [];
    private readonly names = new Map<number, string>();
    private lastId = 0;
    /// Where it is set, answers to `open` and `at` wait for it.
    gate: Promise<void> | null = null;

    private result(id: number, language: string): OpenResult {
        const name = this.names.get(id)!;
        const not = { id, name, size: 1 };
        if (name.startsWith('letter')) return { ...not, kind: 'refused', reason: 'is no subtitle file' };
        if (name.startsWith('sick') && language !== 'big5') return { ...not, kind: 'broken', reason: 'trap' };
        return film(id, name, [1000, 5000]);
    }

    async open(files: FileIn[], settings: { language: string }, told: (step: Progress) => void): Promise<OpenResult[]> {
        const { name } = files[0]!;
        this.calls.push(`open ${name}`);
        told({ name, stage: 'reading', done: 0.5 });
        await this.gate;
        this.lastId += 1;
        this.names.set(this.lastId, name);
        return [this.result(this.lastId, settings.language)];
    }

    async reopen(id: number, { language }: { language: string }): Promise<OpenResult> {
        this.calls.push(`reopen ${this.names.get(id)} ${language}`);
        return this.result(id, language);
    }

    async close(id: number): Promise<void> {
        this.calls.push(`close ${this.names.get(id)}`);
    }

    async at(id: number, track: number, time: number): Promise<Moment> {
        this.calls.push(`at ${track} ${time}`);
        await this.gate;
        if (this.names.get(id)!.startsWith('bad')) throw new EngineBroken('trap');
        return { time, begun: 0, shown: time >= 1000 ? 0 : -1, why: '', lines: [] };
    }

    async search(id: number, words: string, told: (step: Progress) => void): Promise<Uint32Array> {
        told({ name: '', stage: 'searching', done: 0.25 });
        this.calls.push(`search ${words}`);
        return Uint32Array.of(1);
    }

    async findings(id: number): Promise<unknown> {
        this.calls.push(`findings ${this.names.get(id)}`);
        return { file: this.names.get(id), status: 0, meant: 2, right: 2, findings: [] };
    }

    asEngine(): Engine {
        return this as unknown as Engine;
    }
}
