import { engineTexts, inPage } from '../texts';
import type { Facts } from './library';
import { argument, picturesOf } from './names';
import { groupsOf, type Group } from './pairs';
import type { Requests } from './protocol';
import { Side, type Job, type Parts } from './side';
import {
    EngineBroken,
    type CheckReport,
    type DeviceSettings,
    type Engine,
    type EntryDetail,
    type FileIn,
    type Log,
    type MendOptions,
    type Mended,
    type Moment,
    type OpenResult,
    type Picture,
    type Progress,
    type RunResult,
    type SourceFacts,
    type SourceLine,
    type Stage,
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
    /** That it broke the worker when it was opened; it is not tried again with the same settings. */
    broken: Error | undefined;
}

/** Calls on a film, which need it to be open in the viewer. */
type FilmCall = 'log' | 'texts' | 'entry' | 'search' | 'at' | 'picture' | 'sourceFacts' | 'source' | 'lineAt';
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
        return this.viewer.ask('vocabulary', [], { limit: usualLimit }) as Promise<Vocabulary>;
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
        this.filmOf(id);
        this.films.delete(id);
        await this.viewer.ask('close', [id], { limit: usualLimit });
    }

    async texts(id: number, from: number, count: number): Promise<string[]> {
        return (await this.onFilm('texts', id, [from, count])) as string[];
    }

    async entry(id: number, index: number): Promise<EntryDetail> {
        return (await this.onFilm('entry', id, [index])) as EntryDetail;
    }

    async search(id: number, words: string, progress?: (step: Progress) => void): Promise<Uint32Array> {
        return (await this.onFilm('search', id, [words], progress)) as Uint32Array;
    }

    async at(id: number, track: number, time: number): Promise<Moment> {
        return (await this.onFilm('at', id, [track, time])) as Moment;
    }

    async picture(id: number, index: number): Promise<Picture> {
        return (await this.onFilm('picture', id, [index])) as Picture;
    }

    async log(id: number): Promise<Log> {
        return (await this.onFilm('log', id, [])) as Log;
    }

    async sourceFacts(id: number): Promise<SourceFacts> {
        return (await this.onFilm('sourceFacts', id, [])) as SourceFacts;
    }

    async source(id: number, line: number, count: number): Promise<SourceLine[]> {
        return (await this.onFilm('source', id, [line, count])) as SourceLine[];
    }

    async lineAt(id: number, offset: number): Promise<number> {
        return (await this.onFilm('lineAt', id, [offset])) as number;
    }

    async findings(id: number, progress?: (step: Progress) => void): Promise<CheckReport> {
        const { group, settings } = this.filmOf(id);
        const { surfaceWidth, surfaceHeight } = settings;
        const name = group.files[0]!.name;
        const surface = ['--surface', `${surfaceWidth}x${surfaceHeight}`];
        const words = ['check', '--json', ...optionsFor(settings), ...surface, argument(name)];
        const { output, errors, status } = await this.command(group.files, words, progress);
        const text = new TextDecoder().decode(output);
        if (text === '') return { file: name, status, error: inPage(errors.trim()) };
        const report = JSON.parse(text) as CheckReport;
        if (report.error !== undefined) report.error = inPage(report.error);
        return { ...report, file: name };
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
        const lines = [...linesOf(new TextDecoder().decode(output)), ...linesOf(errors)].map(inPage);
        const [copy] = files;
        const name = copy?.name ?? '';
        const [, stream] = group.files;
        const pictures = copy && stream ? { name: picturesOf(name), data: stream.data } : null;
        return { status, name, bytes: copy?.bytes ?? new Uint8Array(), pictures, lines };
    }

    run(files: FileIn[], args: string[]): Promise<RunResult> {
        return this.command(files, args);
    }

    private filmOf(id: number): Film {
        const film = this.films.get(id);
        if (film === undefined) throw new Error(engineTexts.noFile(id));
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
        const film: Film = { id: ++this.lastId, group, settings: {} as DeviceSettings, isHeld: false, broken: undefined };
        this.films.set(film.id, film);
        return film;
    }

    private async load(film: Film, progress: (step: Progress) => void): Promise<OpenResult> {
        const { files, lacks } = film.group;
        const [{ name, data }] = files as [FileIn, ...FileIn[]];
        const about = { id: film.id, name, size: data.size };
        try {
            const facts = await this.hold(film, progress);
            if ('refused' in facts)
                return { kind: lacks === null ? 'refused' : 'lonely', ...about, reason: inPage(facts.refused) };
            const { encoding, reading, frameRate } = facts;
            const words = { encoding: inPage(encoding), reading: inPage(reading), frameRate: inPage(frameRate) };
            return { kind: 'opened', ...about, pictureBytes: files[1]?.data.size ?? 0, ...facts, ...words };
        } catch (error) {
            const reason = error instanceof Error ? error.message : String(error);
            return { kind: error instanceof EngineBroken ? 'broken' : 'refused', ...about, reason };
        }
    }

    private hold(film: Film, progress: (step: Progress) => void): Promise<Facts> {
        return new Promise((resolve, reject) => this.viewer.add(this.opening(film, progress, resolve, reject)));
    }

    private opening(
        film: Film,
        progress: (step: Progress) => void,
        resolve: (facts: Facts) => void,
        reject: (reason: Error) => void,
    ): Job {
        const { id, group, settings } = film;
        const name = group.files[0]!.name;
        film.isHeld = false;
        film.broken = undefined;
        return {
            request: { name: 'open', args: [id, group.files, settings] },
            limit: limitFor(usualLimit, group.files),
            progress: (stage, done) => progress({ name, stage, done }),
            resolve: (facts) => {
                film.isHeld = true;
                resolve(facts as Facts);
            },
            reject: (reason) => {
                film.broken = reason;
                reject(reason);
            },
        };
    }

    /** In a worker that has the film; one that took another's place gets it first. */
    private onFilm<Name extends FilmCall>(
        name: Name,
        id: number,
        words: Words<Name>,
        progress?: (step: Progress) => void,
    ): Promise<unknown> {
        const film = this.filmOf(id);
        const args = [id, ...words] as unknown as Requests[Name];
        const nothing = (): void => undefined;
        const before = (): Job | undefined => {
            if (film.broken !== undefined) throw film.broken;
            return film.isHeld ? undefined : this.opening(film, nothing, nothing, nothing);
        };
        const { files } = film.group;
        const tell = (stage: Stage, done: number): void => progress?.({ name: files[0]!.name, stage, done });
        return this.viewer.ask(name, args, { limit: limitFor(usualLimit, files), before, progress: tell });
    }

    private async command(
        files: FileIn[],
        args: string[],
        progress?: (step: Progress) => void,
    ): Promise<RunResult> {
        const name = files[0]?.name ?? '';
        const tell = (stage: Stage, done: number): void => progress?.({ name, stage, done });
        const limit = limitFor(checkLimit, files);
        return this.checker.ask('run', [files, args], { limit, progress: tell }) as Promise<RunResult>;
    }
}

export function createEngine(parts: Parts): Engine {
    return new Client(parts);
}

export { EngineBroken };
