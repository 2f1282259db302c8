// What the tests of the module compare with: the program, and samples of the project's own or, by SAMPLES, of a folder.
import { execFileSync, spawnSync } from 'node:child_process';
import { mkdtempSync, readFileSync, readdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { basename, dirname, extname, join } from 'node:path';
import { Library, type Loaded } from '../src/engine/library';
import { makeVobsub, module, vxsub as program } from './support/places.mjs';
import { filmFilesBelow, ownFolders } from './support/samples.mjs';

/** A folder of our own while `use` runs. */
export function inFolder<Result>(use: (folder: string) => Result): Result {
    const folder = mkdtempSync(join(tmpdir(), 'vxsub-page-'));
    try {
        return use(folder);
    } finally {
        rmSync(folder, { recursive: true });
    }
}

/** Calls `look` with every sample's path; among our own is a VobSub pair that is made for it. */
export function eachSample(look: (path: string) => void): void {
    const { SAMPLES } = process.env;
    if (SAMPLES) return filmFilesBelow(SAMPLES).forEach(look);
    inFolder((folder) => {
        execFileSync(makeVobsub, [join(folder, 'movie.idx')]);
        [...ownFolders, folder].flatMap(filmFilesBelow).forEach(look);
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
    return Library.start(await WebAssembly.compile(readFileSync(module.replace(/js$/, 'wasm'))));
}
