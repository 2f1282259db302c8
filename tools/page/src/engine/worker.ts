// The page's worker: it loads the library and does what it is asked.
import { Library, type Loaded } from './library';
import type { Reply, Request, Requests, Start } from './protocol';
import type { DeviceSettings, FileIn } from './types';

declare const self: {
    onmessage: ((event: MessageEvent) => void) | null;
    postMessage(message: Reply, transfer: Transferable[]): void;
};

const mostBytes = 512 * 1024 * 1024;

let library: Promise<Library>;

function tell(reply: Reply, transfer: Transferable[] = []): void {
    self.postMessage(reply, transfer);
}

/** A file that is gone, or a folder, is told as such; the worker goes on. */
async function bytesOf({ name, data }: FileIn): Promise<Uint8Array> {
    if (data.size > mostBytes) throw new Error(`${name}: is too large for a subtitle file`);
    try {
        return new Uint8Array(await data.arrayBuffer());
    } catch (error) {
        throw new Error(`${name}: cannot be read: ${error instanceof Error ? error.message : String(error)}`);
    }
}

async function read(files: FileIn[]): Promise<Loaded[]> {
    tell({ kind: 'progress', stage: 'reading' });
    const loaded: Loaded[] = [];
    for (const file of files) loaded.push({ name: file.name, bytes: await bytesOf(file) });
    return loaded;
}

async function open(id: number, files: FileIn[], settings: DeviceSettings): Promise<unknown> {
    const loaded = await read(files);
    tell({ kind: 'progress', stage: 'opening' });
    return (await library).open(id, loaded, settings);
}

async function run(files: FileIn[], args: string[]): Promise<unknown> {
    const loaded = await read(files);
    tell({ kind: 'progress', stage: args[0] === 'fix' ? 'mending' : 'checking' });
    return (await library).run(loaded, args);
}

async function answerTo({ name, args }: Request): Promise<unknown> {
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
    if ('wasm' in data) library = Library.start(data.wasm);
    else void serve(data);
};
