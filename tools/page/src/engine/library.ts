import createLibrary, { type Module } from 'vxsubtitle-module';
import { guessEncoding } from './guess';
import { fileName } from './names';
import type {
    DeviceSettings,
    EntryDetail,
    Log,
    Moment,
    Opened,
    Picture,
    RunResult,
    SourceFacts,
    SourceLine,
    Stage,
    Vocabulary,
} from './types';

/** A file whose bytes are at hand. */
export interface Loaded {
    name: string;
    bytes: Uint8Array;
}

/** What the library says of a file, or why it refuses it. */
export type Facts = Omit<Opened, 'kind' | 'id' | 'name' | 'size' | 'pictureBytes'> | { refused: string };

const mostEntryBytes = 65536;
const runFolder = '/run';

type Json = Record<string, unknown>;
interface ArrayPlace {
    array: 'u8' | 'u16' | 'u32';
    at: number;
    count: number;
}

function isPlace(value: unknown): value is ArrayPlace {
    return typeof value === 'object' && value !== null && 'array' in value;
}

/** The library and the inspector's code in this thread. A call that breaks them throws `WebAssembly.RuntimeError`. */
export class Library {
    private readonly names = new Map<number, string[]>();

    private constructor(private readonly module: Module) {
        module.FS.mkdir('/films');
        module.FS.mkdir(runFolder);
    }

    /** `tellStage` is called while a call goes on; `done` is the part of the stage that is done, from 0 to 1. */
    static async start(
        wasm: WebAssembly.Module,
        tellStage: (stage: Stage, done: number) => void = () => undefined,
    ): Promise<Library> {
        const module = new Promise<Module>((resolve, reject) => {
            createLibrary({
                instantiateWasm: (imports, done) => {
                    WebAssembly.instantiate(wasm, imports).then(done, reject);
                    return {};
                },
                guessEncoding,
                tellStage: tellStage as (stage: string, done: number) => void,
                print: () => undefined,
                printErr: () => undefined,
            }).then(resolve, reject);
        });
        return new Library(await module);
    }

    vocabulary(): Vocabulary {
        return this.call('vocabulary', {}) as Vocabulary;
    }

    /** The first of the files is the one to open; another is the other half of its pair. */
    open(id: number, files: Loaded[], settings: DeviceSettings): Facts {
        this.close(id);
        const folder = this.folderOf(id);
        this.fill(folder, files);
        this.names.set(id, files.map((file) => fileName(file.name)));
        const { framesPerSecond } = settings;
        return this.call('open', {
            ...settings,
            id,
            folder,
            name: fileName(files[0]!.name),
            framesPerSecond: framesPerSecond === null ? '' : String(framesPerSecond),
        }) as Facts;
    }

    close(id: number): void {
        if (!this.names.has(id)) return;
        this.call('close', { id });
        this.empty(this.folderOf(id));
        this.names.delete(id);
    }

    texts(id: number, from: number, count: number): string[] {
        return this.call('texts', { id, from, count }) as string[];
    }

    entry(id: number, index: number): EntryDetail {
        const answer = this.call('entry', { id, index }) as EntryDetail;
        const [film, pictures] = this.names.get(id)!;
        const { node } = this.module.FS.lookupPath(`${this.folderOf(id)}/${pictures ?? film!}`);
        const end = Math.min(node.usedBytes, answer.offset + Math.min(answer.length, mostEntryBytes));
        const bytes = node.contents?.slice(answer.offset, Math.max(answer.offset, end)) ?? new Uint8Array();
        return { ...answer, bytes };
    }

    search(id: number, words: string): Uint32Array {
        return this.call('search', { id, words }) as Uint32Array;
    }

    at(id: number, track: number, time: number): Moment {
        return this.call('at', { id, track, time: Math.min(0xffffffff, Math.max(0, Math.floor(time))) }) as Moment;
    }

    picture(id: number, index: number): Picture {
        const answer = this.call('picture', { id, index }) as Omit<Picture, 'rgba'> & { rgba: Uint8Array };
        return { ...answer, rgba: new Uint8ClampedArray(answer.rgba.buffer as ArrayBuffer) };
    }

    log(id: number): Log {
        return this.call('log', { id }) as Log;
    }

    sourceFacts(id: number): SourceFacts {
        return this.call('sourceFacts', { id }) as SourceFacts;
    }

    source(id: number, line: number, count: number): SourceLine[] {
        return this.call('source', { id, line, count }) as SourceLine[];
    }

    lineAt(id: number, offset: number): number {
        return this.call('lineAt', { id, offset }) as number;
    }

    /** The command line, in a folder that holds the files and nothing else. */
    run(files: Loaded[], args: string[]): RunResult {
        const { FS } = this.module;
        this.empty(runFolder);
        this.fill(runFolder, files);
        FS.chdir(runFolder);
        const status = this.call('run', { args }) as number;
        const given = new Set(files.map((file) => fileName(file.name)));
        const written = FS.readdir(runFolder)
            .filter((name) => !given.has(name) && FS.isFile(this.modeOf(name)))
            .map((name) => ({ name, bytes: FS.readFile(`${runFolder}/${name}`) }));
        const errors = new TextDecoder().decode(FS.readFile('/errors'));
        const result = { status, output: FS.readFile('/out'), errors, files: written };
        this.empty(runFolder);
        return result;
    }

    private modeOf(name: string): number {
        const isEntry = name !== '.' && name !== '..';
        return isEntry ? this.module.FS.stat(`${runFolder}/${name}`).mode : 0;
    }

    private folderOf(id: number): string {
        return `/films/${id}`;
    }

    private fill(folder: string, files: Loaded[]): void {
        const { FS } = this.module;
        if (folder !== runFolder) FS.mkdir(folder);
        for (const { name, bytes } of files) FS.writeFile(`${folder}/${fileName(name)}`, bytes, { canOwn: true });
    }

    /** Folders of films go, too. */
    private empty(folder: string): void {
        const { FS } = this.module;
        for (const name of FS.readdir(folder)) {
            if (name === '.' || name === '..') continue;
            const path = `${folder}/${name}`;
            if (FS.isFile(FS.stat(path).mode)) FS.unlink(path);
        }
        FS.chdir('/');
        if (folder !== runFolder) FS.rmdir(folder);
    }

    private call(name: string, request: Json): unknown {
        const { module } = this;
        const text = JSON.stringify({ do: name, ...request });
        const room = module.lengthBytesUTF8(text) + 1;
        const at = module._malloc(room);
        module.stringToUTF8(text, at, room);
        const answerAt = module._vx_call(at);
        module._free(at);
        const { answer, error } = JSON.parse(module.UTF8ToString(answerAt)) as { answer: unknown; error?: string };
        if (error !== undefined) throw new Error(error);
        return this.withArrays(answer);
    }

    /** Puts copies of the arrays into the places that stand for them. */
    private withArrays(answer: unknown): unknown {
        if (isPlace(answer)) return this.copyOf(answer);
        if (typeof answer !== 'object' || answer === null || Array.isArray(answer)) return answer;
        const fields = Object.entries(answer).map(([name, value]): [string, unknown] => [
            name,
            isPlace(value) ? this.copyOf(value) : value,
        ]);
        return Object.fromEntries(fields);
    }

    private copyOf({ array, at, count }: ArrayPlace): Uint8Array | Uint16Array | Uint32Array {
        const kind = { u8: Uint8Array, u16: Uint16Array, u32: Uint32Array }[array];
        return new kind(this.module.HEAPU8.slice(at, at + count * kind.BYTES_PER_ELEMENT).buffer as ArrayBuffer);
    }
}
