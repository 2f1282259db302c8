// What the tests compare with: the program, and samples of the project's own or, by SAMPLES, of another folder.
import { spawnSync } from 'node:child_process';
import { mkdtempSync, readFileSync, readdirSync, rmSync, statSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { basename, dirname, extname, join, resolve } from 'node:path';
import { Library, type Loaded } from '../src/engine/library';

const root = resolve(process.env.VXSUB_ROOT ?? '../..');
const program = process.env.VXSUB ?? join(root, 'build/release/vxsub');
const makeVobSub = process.env.MAKE_VOBSUB ?? join(root, 'build/release/tools/samples/make_vobsub');
const wasm = process.env.VXSUB_WASM ?? join(root, 'build/web/vxsubtitle.wasm');
const ownFolders = ['tests/golden', 'tests/check', 'tests/meant/files', 'examples/inspector'];
const endings = ['.srt', '.ass', '.ssa', '.smi', '.sami', '.txt', '.sub', '.idx'];

/** A folder of our own while `use` runs. */
export function inFolder<Result>(use: (folder: string) => Result): Result {
    const folder = mkdtempSync(join(tmpdir(), 'vxsub-page-'));
    try {
        return use(folder);
    } finally {
        rmSync(folder, { recursive: true });
    }
}

function filesIn(folder: string): string[] {
    return readdirSync(folder, { recursive: true, encoding: 'utf8' })
        .map((name) => join(folder, name))
        .filter((path) => endings.includes(extname(path).toLowerCase()) && statSync(path).isFile())
        .sort();
}

/** Calls `look` with every sample's path; among our own is a VobSub pair that is made for it. */
export function eachSample(look: (path: string) => void): void {
    const { SAMPLES } = process.env;
    if (SAMPLES) return SAMPLES.split(':').flatMap(filesIn).forEach(look);
    inFolder((folder) => {
        spawnSync(makeVobSub, [join(folder, 'movie.idx')]);
        [...ownFolders.map((name) => join(root, name)), folder].flatMap(filesIn).forEach(look);
    });
}

/** The file, and the other half of its pair if there is one. */
export function load(path: string): Loaded[] {
    const stem = basename(path, extname(path));
    const others = readdirSync(dirname(path)).filter((name) => {
        const isOfPair = /\.(idx|sub)$/i.test(name) && basename(name, extname(name)) === stem;
        return isOfPair && name !== basename(path);
    });
    return [basename(path), ...others].map((name) => ({ name, bytes: readFileSync(join(dirname(path), name)) }));
}

export function vxsub(path: string, args: string[]): { status: number | null; stdout: Buffer; stderr: Buffer } {
    return spawnSync(program, args, { cwd: dirname(path), maxBuffer: 1 << 30 });
}

export async function startLibrary(): Promise<Library> {
    // The module is built for a worker.
    Object.assign(globalThis, { self: globalThis, location: { href: '' } });
    return Library.start(await WebAssembly.compile(readFileSync(wasm)));
}
