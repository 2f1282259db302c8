// The module in the page answers what the program answers, byte for byte, and draws the same pictures.
import assert from 'node:assert/strict';
import { readFileSync, readdirSync } from 'node:fs';
import { basename, join } from 'node:path';
import { test } from 'node:test';
import { isDeepStrictEqual } from 'node:util';
import type { Facts, Library, Loaded } from '../src/engine/library';
import { argument } from '../src/engine/names';
import { usualSettings, type CheckReport, type Opened } from '../src/engine/types';
import { inPage } from '../src/texts';
import { eachSample, inFolder, load, startLibrary, vxsub } from './native';
import { readPng } from './support/png.mjs';

/** How long it took differs. */
function withoutTimes(output: Uint8Array): string {
    return Buffer.from(output).toString('latin1').replace(/"opened":[0-9.e-]+/, '');
}

const commands: ((name: string) => string[])[] = [
    (name) => ['list', '--json', '--raw', name],
    (name) => ['list', name],
    (name) => ['info', '--json', name],
    (name) => ['check', '--json', name],
    (name) => ['at', '--json', name, '65s'],
];

test('every file is answered as the program answers it', async () => {
    const library = await startLibrary();
    const differing: string[] = [];
    let compared = 0;
    eachSample((path) => {
        for (const command of commands) {
            const args = command(basename(path));
            const ours = library.run(load(path), args);
            const theirs = vxsub(path, args);
            const isSame = ours.status === theirs.status && withoutTimes(ours.output) === withoutTimes(theirs.stdout);
            if (!isSame) differing.push(`${path}: ${args[0]}`);
            ++compared;
        }
    });
    assert.deepEqual(differing, []);
    assert.ok(compared >= 100, `${compared} answers`);
    console.log(`# ${compared} answers are the same`);
});

test('a mended copy is the program\'s', async () => {
    const library = await startLibrary();
    const differing: string[] = [];
    let copies = 0;
    eachSample((path) => {
        if (/\.idx$/i.test(path)) return;
        const name = basename(path);
        const ours = library.run(load(path), ['fix', name, '-o', 'copy.srt']);
        inFolder((folder) => {
            const theirs = vxsub(path, ['fix', name, '-o', join(folder, 'copy.srt')]);
            const written = readdirSync(folder).map((file) => readFileSync(join(folder, file)));
            const isSame =
                ours.status === theirs.status &&
                ours.files.length === written.length &&
                ours.files.every((file, i) => written[i]!.equals(file.bytes));
            if (!isSame) differing.push(path);
            copies += written.length;
        });
    });
    assert.deepEqual(differing, []);
    assert.ok(copies >= 10, `${copies} copies`);
});

/** What a television of that size shows of an entry: where nothing is drawn, zeros. */
function surfaceOf(library: Library, index: number, width: number, height: number): Uint8Array {
    const picture = library.picture(1, index);
    const surface = new Uint8Array(width * height * 4);
    for (let y = 0; y < picture.height; ++y)
        for (let x = 0; x < picture.width; ++x) {
            const at = (y * picture.width + x) * 4;
            const pixel = picture.rgba.subarray(at, at + 4);
            if (pixel[3] !== 0) surface.set(pixel, ((picture.top + y) * width + picture.left + x) * 4);
        }
    return surface;
}

test('of a pair whose pictures are an empty file an entry has no bytes', async () => {
    const library = await startLibrary();
    const line = 'id: en, index: 0\ntimestamp: 00:00:01:000, filepos: 000000000\n';
    const files = [
        { name: 'movie.idx', bytes: new TextEncoder().encode(line) },
        { name: 'movie.sub', bytes: new Uint8Array() },
    ];
    const facts = library.open(1, files, usualSettings) as Facts;
    assert.equal(facts.count, 1);
    assert.equal(library.entry(1, 0).bytes.length, 0);
});

test('pictures are drawn as the program draws them', async () => {
    const library = await startLibrary();
    const [width, height] = [960, 540];
    const differing: string[] = [];
    let pictures = 0;
    eachSample((path) => {
        if (!/\.idx$/i.test(path)) return;
        const settings = { ...usualSettings, surfaceWidth: width, surfaceHeight: height };
        const facts = library.open(1, load(path), settings);
        if ('refused' in facts) return;
        inFolder((folder) => {
            const size = `${width}x${height}`;
            vxsub(path, ['render', '--all', '--background', 'none', '--surface', size, '-o', folder, basename(path)]);
            for (const name of readdirSync(folder)) {
                const png = readPng(readFileSync(join(folder, name)));
                const ours = surfaceOf(library, parseInt(name, 10), width, height);
                if (!Buffer.from(ours).equals(png.rgba)) differing.push(`${path}: ${name}`);
                ++pictures;
            }
        });
    });
    assert.deepEqual(differing, []);
    assert.ok(pictures >= 4, `${pictures} pictures`);
    console.log(`# ${pictures} pictures are the same`);
});

test('what a picture answers does not depend on what was asked before', async () => {
    const library = await startLibrary();
    let films = 0;
    eachSample((path) => {
        if (!/\.idx$/i.test(path)) return;
        const [index, pictures] = load(path);
        if (pictures === undefined) return;
        // The last pictures are cut off.
        const cut = { name: pictures.name, bytes: pictures.bytes.slice(0, pictures.bytes.length * 0.3) };
        const facts = library.open(1, [index!, cut], usualSettings);
        if ('refused' in facts) return;
        const look = (): string[] => Array.from({ length: Math.min(facts.count, 30) }, (_, i) => library.picture(1, i).why);
        const once = look();
        library.picture(1, facts.count - 1);
        assert.deepEqual(look(), once, path);
        films += Number(once.includes('') && once.some((why) => why !== ''));
    });
    assert.ok(films > 0);
});

interface Listed {
    entries: { index: number; start: number; end: number | null; text?: string; units?: number[]; marks: string[] }[];
}

/** The tables of a file that was opened, as `list` has them. */
function listed(library: Library, facts: Exclude<Facts, { refused: string }>, markWords: string[]): Listed['entries'] {
    return Array.from({ length: facts.count }, (_, index) => {
        const { text, units } = library.entry(1, index);
        return {
            index,
            start: facts.starts[index]!,
            end: facts.ends[index] === 0xffffffff ? null : facts.ends[index]!,
            text,
            units: [...units],
            marks: markWords.filter((_word, bit) => (facts.marks[index]! >> bit) & 1),
        };
    });
}

test('the tables say what the list says', async () => {
    const library = await startLibrary();
    const words = library.vocabulary().marks.map(({ word }) => word);
    const differing: string[] = [];
    eachSample((path) => {
        const facts = library.open(1, load(path), usualSettings);
        const theirs = vxsub(path, ['list', '--json', '--raw', basename(path)]);
        if ('refused' in facts) {
            if (theirs.status === 0) differing.push(path);
        } else if (!facts.isPictures) {
            const { entries } = JSON.parse(theirs.stdout.toString()) as Listed;
            if (!isDeepStrictEqual(listed(library, facts, words), entries)) differing.push(path);
        }
    });
    assert.deepEqual(differing, []);
});

test('findings and source count the same lines', async () => {
    const library = await startLibrary();
    const differing: string[] = [];
    let lines = 0;
    eachSample((path) => {
        library.open(1, load(path), usualSettings);
        const { output } = library.run(load(path), ['check', '--json', basename(path)]);
        const { findings = [] } = JSON.parse(Buffer.from(output).toString()) as CheckReport;
        for (const { line, offset } of findings) {
            if (line === undefined || offset === undefined) continue;
            if (library.lineAt(1, offset) !== line) differing.push(`${path}: ${line}, ${library.lineAt(1, offset)}`);
            ++lines;
        }
    });
    assert.deepEqual(differing, []);
    assert.ok(lines > 0, `${lines} lines`);
});

/** Addresses and descriptors differ; so do lines of the worker, which on a desktop run beside the caller's. */
function comparable(lines: string[]): string[] {
    return lines.map((line) => line.replace(/rawbuf: [0-9a-f]+|fd =-?\d+/g, '')).sort();
}

test('the log is the one that the program shows', async () => {
    const library = await startLibrary();
    const differing: string[] = [];
    let lines = 0;
    eachSample((path) => {
        const facts = library.open(1, load(path), usualSettings);
        const shown = 'refused' in facts ? -1 : library.at(1, 0, 0).shown;
        if (shown >= 0) library.picture(1, shown);
        const { opening, showing } = library.log(1);
        const theirs = vxsub(path, ['at', '--log', basename(path), '0']).stderr.toString().split('\n');
        const logged = theirs.filter((line) => /^[VDIWEF]\//.test(line));
        const isWhole = opening.more === 0;
        const ours = [...opening.lines, ...showing.lines];
        if (opening.lines.length + opening.more + showing.lines.length !== logged.length) differing.push(path);
        else if (isWhole && !isDeepStrictEqual(comparable(ours), comparable(logged))) differing.push(path);
        lines += ours.length;
    });
    assert.deepEqual(differing, []);
    assert.ok(lines > 100, `${lines} lines`);
});

const named = (name: string, text: string): Loaded[] => [{ name, bytes: new TextEncoder().encode(text) }];

test('of a log without end, the first thousand lines are kept and the others counted', async () => {
    const library = await startLibrary();
    const entries = Array.from({ length: 5000 }, (_, i) => `{${i * 20}}{${i * 20 + 15}}Line ${i}\n`);
    library.open(1, named('long.sub', entries.join('')), usualSettings);
    const { opening } = library.log(1);
    assert.equal(opening.lines.length, 1000);
    assert.equal(opening.lines[0], 'D/SubtitleParserSUB: SubtitleParserSUB::BeginParse - Enter');
    assert.ok(opening.more > 4000 && opening.more < 4100, `${opening.more} more`);
    library.open(1, named('short.srt', '1\n00:00:01,000 --> 00:00:02,000\na\n'), usualSettings);
    assert.equal(library.log(1).opening.more, 0);
});

test('a refused file has its log', async () => {
    const library = await startLibrary();
    assert.ok('refused' in library.open(1, named('letter.sub', 'Dear reader,\n'), usualSettings));
    const { lines } = library.log(1).opening;
    assert.ok(lines.includes('D/SubtitleParserSUB: SubtitleParserSUB::BeginParse - Try MicroDVD'), lines.join('\n'));
});

test('settings that mean nothing are said, not passed over', async () => {
    const library = await startLibrary();
    const film = named('a.srt', '1\n00:00:01,000 --> 00:00:02,000\na\n');
    for (const framesPerSecond of [0, 0.5, -1, 1000, 23.9761, NaN, 1e21])
        assert.throws(() => library.open(1, film, { ...usualSettings, framesPerSecond }), /is no frame rate/);
    assert.throws(() => library.open(1, film, { ...usualSettings, codePage: 'x' }), /x is no known code page/);
    for (const framesPerSecond of [1, 999.999, 23.976])
        assert.equal((library.open(1, film, { ...usualSettings, framesPerSecond }) as Opened).count, 1);
});

test('screens from the smallest to the largest are drawn on', async () => {
    const library = await startLibrary();
    let drawn = 0;
    eachSample((path) => {
        if (!/\.idx$/i.test(path) || drawn > 0) return;
        for (const [surfaceWidth, surfaceHeight] of [[16, 16], [4096, 4096], [16, 4096]] as const) {
            const facts = library.open(1, load(path), { ...usualSettings, surfaceWidth, surfaceHeight });
            if ('refused' in facts) return;
            const { left, top, width, height, rgba } = library.picture(1, 0);
            assert.equal(rgba.length, width * height * 4);
            assert.ok(left >= 0 && top >= 0 && left + width <= surfaceWidth && top + height <= surfaceHeight, path);
            drawn += Number(width > 0);
        }
    });
    assert.ok(drawn > 0);
});

test('bytes of a SAMI entry end where an element begins, and nowhere else', async () => {
    const library = await startLibrary();
    const head = '<SAMI><BODY>\n';
    for (const [text, more] of [['one', '<sYnC Start=3000><P>two'], ['one <', ''], ['a < b <s', ''], ['one <syn', '']]) {
        const film = named('a.smi', `${head}<SYNC Start=1000><P>${text}${more}`);
        library.open(1, film, usualSettings);
        const { offset, length } = library.entry(1, 0);
        assert.equal(offset + length, film[0]!.bytes.length - more!.length, text);
    }
});

test('files with every name are opened, also those that are no text', async () => {
    const library = await startLibrary();
    const bytes = new TextEncoder().encode('1\n00:00:01,000 --> 00:00:02,000\na\n');
    for (const name of ['\ud800.srt', 'a\udc00b.srt', '\udfff\ud800.srt', '\u{1f600}.srt', '../a.srt', '-.srt']) {
        assert.equal((library.open(1, [{ name, bytes }], usualSettings) as Opened).count, 1, name);
        assert.equal(library.entry(1, 0).bytes.length > 0, true, name);
        assert.equal(library.run([{ name, bytes }], ['list', argument(name)]).status, 0, name);
    }
});

test('the browser is asked once about an encoding that it alone knows', async () => {
    const library = await startLibrary();
    const { TextDecoder: Plain } = globalThis;
    let asked = 0;
    globalThis.TextDecoder = class extends Plain {
        constructor(label?: string, options?: TextDecoderOptions) {
            super(label, options);
            asked += Number(this.encoding === 'shift_jis');
        }
    };
    try {
        const entry = '1\n00:00:01,000 --> 00:00:02,000\n';
        const bytes = Buffer.concat([Buffer.from(entry), Buffer.from([0x83, 0x65, 0x83, 0x58, 0x83, 0x67, 0x0a])]);
        library.open(1, [{ name: 'a.srt', bytes }], { ...usualSettings, codePage: 'CP932' });
        for (let count = 0; count < 20; ++count) assert.equal(library.source(1, 3, 1)[0]!.text, 'テスト');
        assert.equal(library.entry(1, 0).text.trim(), 'テスト');
    } finally {
        globalThis.TextDecoder = Plain;
    }
    assert.ok(asked <= 1, `${asked} times`);
});

test('what is said of a file is said for a page, not for a terminal', async () => {
    const library = await startLibrary();
    const said = new Set<string>();
    const note = (facts: Facts): void => {
        const words = 'refused' in facts ? [facts.refused] : [facts.encoding, facts.reading, facts.frameRate];
        for (const each of words) said.add(each);
    };
    eachSample((path) => {
        for (const framesPerSecond of [null, 23.976])
            note(library.open(1, load(path), { ...usualSettings, framesPerSecond }));
    });
    note(library.open(1, named('a.sub', '{1}{1}25\n{1}{2}a\n'), { ...usualSettings, framesPerSecond: 24 }));
    for (const name of ['a.xyz', 'a', 'a.sub', 'a.idx']) note(library.open(1, named(name, 'Dear reader\n'), usualSettings));
    const isForTerminals = (words: string): boolean => /(^|[ (])--[a-z]|\bvxsub\b/.test(words);
    assert.ok([...said].some(isForTerminals));
    assert.deepEqual([...said].map(inPage).filter(isForTerminals), []);
});
