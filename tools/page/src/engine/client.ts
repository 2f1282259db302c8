import type { Facts } from './library';
import { groupsOf, type Group } from './pairs';
import type { Requests } from './protocol';
import { Side, type Parts } from './side';
import {
    EngineBroken,
    type CheckReport,
    type DeviceSettings,
    type Engine,
    type EntryDetail,
    type FileIn,
    type MendOptions,
    type Mended,
    type Moment,
    type OpenResult,
    type Picture,
    type Progress,
    type RunResult,
    type SourceFacts,
    type SourceLine,
    type Vocabulary,
} from './types';

export type { Parts } from './side';

/** Milliseconds for a call, and what each MiB of the file adds to them. */
const usualLimit = 20_000;
const checkLimit = 60_000;
const limitPerMiB = 2_000;

/** A file that was dropped, with what it takes to open it again. */
interface Film {
    id: number;
    group: Group;
    settings: DeviceSettings;
    /** The viewer's worker has it. */
    isHeld: boolean;
}

/** Calls on a film, which need it to be open in the viewer. */
type FilmCall = 'texts' | 'entry' | 'search' | 'at' | 'picture' | 'sourceFacts' | 'source' | 'lineAt';
type Words<Name extends FilmCall> = Requests[Name] extends [number, ...infer Rest] ? Rest : never;

function sizeOf(files: FileIn[]): number {
    return files.reduce((sum, file) => sum + file.data.size, 0);
}

function limitFor(base: number, files: FileIn[]): number {
    return base + (sizeOf(files) / 1048576) * limitPerMiB;
}

/** The settings in the words of the command line. */
function optionsFor({ language, codePage, framesPerSecond }: DeviceSettings): string[] {
    return [
        ...(language === '' ? [] : ['--language', language]),
        ...(codePage === '' ? [] : ['--native', codePage]),
        ...(framesPerSecond === null ? [] : ['--fps', String(framesPerSecond)]),
    ];
}

function linesOf(text: string): string[] {
    return text.split('\n').filter((line) => line !== '');
}

/** A name that the command line cannot take for an option, nor for a path elsewhere. */
function argument(name: string): string {
    return `./${name.replaceAll('/', '_')}`;
}

class Client implements Engine {
    private readonly films = new Map<number, Film>();
    private readonly viewer: Side;
    private readonly checker: Side;
    private lastId = 0;

    constructor(parts: Parts) {
        this.viewer = new Side(parts, () => {
            for (const film of this.films.values()) film.isHeld = false;
        });
        this.checker = new Side(parts, () => undefined);
    }

    vocabulary(): Promise<Vocabulary> {
        return this.viewer.ask('vocabulary', [], usualLimit) as Promise<Vocabulary>;
    }

    async open(
        files: FileIn[],
        settings: DeviceSettings,
        progress: (step: Progress) => void,
    ): Promise<OpenResult[]> {
        const results: OpenResult[] = [];
        for (const { film, group } of await this.place(files)) {
            film.group = group;
            film.settings = settings;
            results.push(await this.load(film, progress));
        }
        return results;
    }

    async reopen(id: number, settings: DeviceSettings): Promise<OpenResult> {
        const film = this.filmOf(id);
        film.settings = settings;
        return this.load(film, () => undefined);
    }

    async close(id: number): Promise<void> {
        const film = this.filmOf(id);
        this.films.delete(id);
        if (film.isHeld) await this.viewer.ask('close', [id], usualLimit);
    }

    texts(id: number, from: number, count: number): Promise<string[]> {
        return this.onFilm('texts', id, [from, count]) as Promise<string[]>;
    }

    entry(id: number, index: number): Promise<EntryDetail> {
        return this.onFilm('entry', id, [index]) as Promise<EntryDetail>;
    }

    search(id: number, words: string): Promise<Uint32Array> {
        return this.onFilm('search', id, [words]) as Promise<Uint32Array>;
    }

    at(id: number, track: number, time: number): Promise<Moment> {
        return this.onFilm('at', id, [track, time]) as Promise<Moment>;
    }

    picture(id: number, index: number): Promise<Picture> {
        return this.onFilm('picture', id, [index]) as Promise<Picture>;
    }

    sourceFacts(id: number): Promise<SourceFacts> {
        return this.onFilm('sourceFacts', id, []) as Promise<SourceFacts>;
    }

    source(id: number, line: number, count: number): Promise<SourceLine[]> {
        return this.onFilm('source', id, [line, count]) as Promise<SourceLine[]>;
    }

    lineAt(id: number, offset: number): Promise<number> {
        return this.onFilm('lineAt', id, [offset]) as Promise<number>;
    }

    async findings(id: number, progress?: (step: Progress) => void): Promise<CheckReport> {
        const { group, settings } = this.filmOf(id);
        const { surfaceWidth, surfaceHeight } = settings;
        const name = group.files[0]!.name;
        const surface = ['--surface', `${surfaceWidth}x${surfaceHeight}`];
        const words = ['check', '--json', ...optionsFor(settings), ...surface, argument(name)];
        const { output, errors, status } = await this.command(group.files, words, progress);
        const text = new TextDecoder().decode(output);
        if (text === '') return { file: name, status, error: errors.trim() };
        return { ...(JSON.parse(text) as CheckReport), file: name };
    }

    async mend(id: number, options: MendOptions, progress?: (step: Progress) => void): Promise<Mended> {
        const { group, settings } = this.filmOf(id);
        const words = [
            'fix',
            ...optionsFor(settings),
            ...(options.keepFormat ? ['--keep-format'] : []),
            ...(options.utf16 ? ['--utf16'] : []),
            ...(options.samiClass === '' ? [] : ['--class', options.samiClass]),
            argument(group.files[0]!.name),
        ];
        const { status, output, errors, files } = await this.command(group.files, words, progress);
        const lines = [...linesOf(new TextDecoder().decode(output)), ...linesOf(errors)];
        const [copy] = files;
        return { status, name: copy?.name ?? '', bytes: copy?.bytes ?? new Uint8Array(), lines };
    }

    run(files: FileIn[], args: string[]): Promise<RunResult> {
        return this.command(files, args);
    }

    private filmOf(id: number): Film {
        const film = this.films.get(id);
        if (film === undefined) throw new Error(`There is no file ${id}.`);
        return film;
    }

    /** The films that the files belong to: new ones, and those that lack a half which has come now. */
    private async place(files: FileIn[]): Promise<{ film: Film; group: Group }[]> {
        const lonely = [...this.films.values()].filter((film) => film.group.lacks !== null);
        const known = new Map(lonely.map((film) => [film.group.files[0]!, film]));
        const groups = await groupsOf([...known.keys(), ...files]);
        const placed: { film: Film; group: Group }[] = [];
        for (const group of groups) {
            const before = group.files.map((file) => known.get(file)).filter((film) => film !== undefined);
            if (before.length > 0 && group.files.every((file) => known.has(file)) && group.lacks !== null) continue;
            placed.push({ film: before[0] ?? this.newFilm(group), group });
            for (const other of before.slice(1)) this.films.delete(other.id);
        }
        return placed;
    }

    private newFilm(group: Group): Film {
        const film: Film = { id: ++this.lastId, group, settings: {} as DeviceSettings, isHeld: false };
        this.films.set(film.id, film);
        return film;
    }

    private async load(film: Film, progress: (step: Progress) => void): Promise<OpenResult> {
        const { files, lacks } = film.group;
        const [{ name, data }] = files as [FileIn, ...FileIn[]];
        const about = { id: film.id, name, size: data.size };
        try {
            const facts = await this.hold(film, progress);
            if (!('refused' in facts))
                return { kind: 'opened', ...about, pictureBytes: files[1]?.data.size ?? 0, ...facts };
            const reason = facts.refused;
            return { kind: lacks === null ? 'refused' : 'lonely', ...about, reason };
        } catch (error) {
            const reason = error instanceof Error ? error.message : String(error);
            return { kind: 'broken', ...about, reason };
        }
    }

    private async hold(film: Film, progress: (step: Progress) => void): Promise<Facts> {
        const { id, group, settings } = film;
        const name = group.files[0]!.name;
        const tell = (stage: Progress['stage']): void => progress({ name, stage, done: null });
        const limit = limitFor(usualLimit, group.files);
        const facts = (await this.viewer.ask('open', [id, group.files, settings], limit, tell)) as Facts;
        film.isHeld = true;
        return facts;
    }

    /** In a worker that has the film; one that took another's place gets it first. */
    private async onFilm<Name extends FilmCall>(name: Name, id: number, words: Words<Name>): Promise<unknown> {
        const film = this.filmOf(id);
        if (!film.isHeld) await this.hold(film, () => undefined);
        const args = [id, ...words] as unknown as Requests[Name];
        return this.viewer.ask(name, args, limitFor(usualLimit, film.group.files));
    }

    private async command(
        files: FileIn[],
        args: string[],
        progress?: (step: Progress) => void,
    ): Promise<RunResult> {
        const name = files[0]?.name ?? '';
        const tell = (stage: Progress['stage']): void => progress?.({ name, stage, done: null });
        return this.checker.ask('run', [files, args], limitFor(checkLimit, files), tell) as Promise<RunResult>;
    }
}

export function createEngine(parts: Parts): Engine {
    return new Client(parts);
}

export { EngineBroken };
