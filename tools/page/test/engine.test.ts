// The module in the page answers what the program answers: byte for byte, for every sample.
//
// VXSUB: the program; VXSUB_MODULE: vxsubtitle.wasm; SAMPLES: a folder of files, in place of the project's own.
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { readFileSync, readdirSync, statSync } from 'node:fs';
import { basename, dirname, extname, join } from 'node:path';
import { test } from 'node:test';
import { Library, type Loaded } from '../src/engine/library';

const root = process.env.VXSUB_ROOT ?? '../..';
const program = process.env.VXSUB ?? join(root, 'build/release/vxsub');
const module = process.env.VXSUB_MODULE ?? join(root, 'build/web/vxsubtitle.wasm');
const ownSamples = ['tests/golden', 'tests/check', 'tests/meant/files', 'examples/inspector'].map((path) => join(root, path));
const folders = process.env.SAMPLES ? process.env.SAMPLES.split(':') : ownSamples;
const endings = ['.srt', '.ass', '.ssa', '.smi', '.sami', '.txt', '.sub', '.idx'];

function filesIn(folder: string): string[] {
    return readdirSync(folder, { recursive: true, encoding: 'utf8' })
        .map((name) => join(folder, name))
        .filter((path) => endings.includes(extname(path).toLowerCase()) && statSync(path).isFile())
        .sort();
}

/** The file, and what lies beside it under the same name. */
function withCompanions(path: string): Loaded[] {
    const stem = basename(path, extname(path));
    const names = readdirSync(dirname(path)).filter((name) => {
        const isOfPair = /\.(idx|sub)$/i.test(name) && basename(name, extname(name)) === stem;
        return isOfPair && name !== basename(path);
    });
    return [basename(path), ...names].map((name) => ({ name, bytes: readFileSync(join(dirname(path), name)) }));
}

/** How long it took, which differs. */
function withoutTimes(output: Uint8Array): string {
    return Buffer.from(output).toString('latin1').replace(/"opened":[0-9.e-]+/, '');
}

const commands = [
    ['list', '--json', '--raw'],
    ['info', '--json'],
    ['check', '--json'],
    ['at', '--json', '--track', '0'],
];

async function start(): Promise<Library> {
    (globalThis as { self?: unknown }).self ??= globalThis;
    (globalThis as { location?: unknown }).location ??= { href: '' };
    return Library.start(await WebAssembly.compile(readFileSync(module)));
}

test('every file is answered as the program answers it', async () => {
    const library = await start();
    const differing: string[] = [];
    let compared = 0;
    for (const path of folders.flatMap(filesIn)) {
        const files = withCompanions(path);
        for (const command of commands) {
            const args = command[0] === 'at' ? [...command, basename(path), '65s'] : [...command, basename(path)];
            const ours = library.run(files.map((file) => ({ ...file })), args);
            const expected = spawnSync(program, args, { cwd: dirname(path), maxBuffer: 1 << 30 });
            const isSame =
                ours.status === expected.status && withoutTimes(ours.output) === withoutTimes(expected.stdout);
            if (!isSame) differing.push(`${path}: ${command.join(' ')}`);
            ++compared;
        }
    }
    assert.ok(compared > 0, 'there are samples');
    console.log(`${compared} answers compared, ${differing.length} differ`);
    assert.deepEqual(differing, []);
});
