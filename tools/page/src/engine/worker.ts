// The page's worker: it loads the library and does what it is asked.
import { engineTexts } from '../texts';
import { Library, type Loaded } from './library';
import type { Reply, Request, Requests, Start } from './protocol';
import { Steps } from './steps';
import type { DeviceSettings, FileIn } from './types';

declare const self: {
    onmessage: ((event: MessageEvent) => void) | null;
    postMessage(message: Reply, transfer: Transferable[]): void;
};

const mostBytes = 512 * 1024 * 1024;
/** So much of a file is read at a time. */
const portion = 2 * 1024 * 1024;
/** How many stages a request goes through; the others have none. */
const stages: Partial<Record<string, number>> = { open: 3, search: 1, check: 5, fix: 13 };

let library: Promise<Library>;
let steps = new Steps(0, () => undefined);

function tell(reply: Reply, transfer: Transferable[] = []): void {
    self.postMessage(reply, transfer);
}

async function bytesOf(data: Blob, told: (bytes: number) => void): Promise<Uint8Array> {
    const bytes = new Uint8Array(data.size);
    for (let at = 0; at < bytes.length; at += portion) {
        bytes.set(new Uint8Array(await data.slice(at, at + portion).arrayBuffer()), at);
        told(Math.min(at + portion, bytes.length));
    }
    return bytes;
}

/** A file that is gone, or a folder, is told as such; the worker goes on. */
async function read(files: FileIn[]): Promise<Loaded[]> {
    const whole = files.reduce((sum, { data }) => sum + data.size, 1);
    const loaded: Loaded[] = [];
    let before = 0;
    steps.tell('reading', 0);
    for (const { name, data } of files) {
        if (data.size > mostBytes) throw new Error(engineTexts.tooLarge(name));
        try {
            const bytes = await bytesOf(data, (size) => steps.tell('reading', (before + size) / whole));
            loaded.push({ name, bytes });
        } catch (error) {
            throw new Error(engineTexts.cannotBeRead(name, error instanceof Error ? error.message : String(error)));
        }
        before += data.size;
    }
    return loaded;
}

async function open(id: number, files: FileIn[], settings: DeviceSettings): Promise<unknown> {
    return (await library).open(id, await read(files), settings);
}

async function run(files: FileIn[], args: string[]): Promise<unknown> {
    return (await library).run(await read(files), args);
}

async function answerTo({ name, args }: Request): Promise<unknown> {
    const [command] = name === 'run' ? (args as Requests['run'])[1] : [name];
    steps = new Steps(stages[command ?? ''] ?? 0, (stage, done) => tell({ kind: 'progress', stage, done }));
    if (name === 'open') return open(...(args as Requests['open']));
    if (name === 'run') return run(...(args as Requests['run']));
    const call = (await library)[name] as (...words: unknown[]) => unknown;
    return call.apply(await library, args);
}

/** Arrays of an answer change hands without a copy. */
function buffersOf(answer: unknown): Transferable[] {
    if (ArrayBuffer.isView(answer)) return [answer.buffer as ArrayBuffer];
    if (typeof answer !== 'object' || answer === null || Array.isArray(answer)) return [];
    const views = Object.values(answer).filter((value): value is ArrayBufferView => ArrayBuffer.isView(value));
    return [...new Set(views.map((view) => view.buffer as ArrayBuffer))];
}

async function serve(request: Request): Promise<void> {
    try {
        const answer = await answerTo(request);
        tell({ kind: 'answer', answer }, buffersOf(answer));
    } catch (error) {
        // What the library says is an Error; traps, endless recursion and lack of memory are kinds of their own.
        const isSaid = error instanceof Error && error.constructor === Error;
        const message = error instanceof Error ? error.message : String(error);
        tell({ kind: isSaid ? 'failed' : 'broken', message });
    }
}

self.onmessage = ({ data }: MessageEvent<Start | Request>) => {
    if ('wasm' in data) library = Library.start(data.wasm, (stage, done) => steps.tell(stage, done));
    else void serve(data);
};
