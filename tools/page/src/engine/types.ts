/**
 * What the page and the library say to each other. The page knows these types and `Engine` alone; behind them a worker
 * runs the library and the inspector's own code as WebAssembly.
 *
 * Times are milliseconds of play time. Everything large is a typed array.
 */

/** What the television is set to. */
export interface DeviceSettings {
    /** The subtitle language property, one of `Vocabulary.languages`; empty: not set. */
    language: string;
    /** Frames in a second for files that count frames, such as 25 or 23.976; null: the player names none. */
    framesPerSecond: number | null;
    /** Code page of 8-bit text, one of `Vocabulary.codePages`; empty: as the file's letters say. */
    codePage: string;
    /** The television's size in pixels, on which pictures are drawn. */
    surfaceWidth: number;
    surfaceHeight: number;
}

export const usualSettings: DeviceSettings = {
    language: '',
    framesPerSecond: null,
    codePage: '',
    surfaceWidth: 1920,
    surfaceHeight: 1080,
};

/** A file as it was dropped; `data` may be a `File`. It is kept, so that a worker that broke can be replaced. */
export interface FileIn {
    name: string;
    data: Blob;
}

/** The lists that settings choose from. */
export interface Vocabulary {
    version: string;
    languages: Choice[];
    codePages: Choice[];
    formats: { word: string; name: string; endings: string[] }[];
    /** In the order of the bits in `Opened.marks`: bit 0 first. */
    marks: { letter: string; word: string; meaning: string }[];
}

export interface Choice {
    word: string;
    name: string;
}

/** An end of `Opened.ends`: the entry is shown until the next one of its track starts. */
export const openEnd = 0xffffffff;

export interface Track {
    /** Word and name of the language: 'english', 'English'. */
    language: string;
    languageName: string;
    /** Its entries: those from `first` until just before `end`. */
    first: number;
    end: number;
}

/** A file that the library shows. All arrays have an element for each entry, in the order of the library's table. */
export interface Opened {
    kind: 'opened';
    id: number;
    name: string;
    /** Bytes of the file, and of the pictures' file beside an index. */
    size: number;
    pictureBytes: number;
    /** Word and name: 'srt', 'SubRip'. */
    format: string;
    formatName: string;
    /** As the library reports it: 'native', 'utf-8', 'i2' and the like. */
    codeType: string;
    /** For people, and what the texts are shown as: 'texts shown as UTF-8, because the whole file is well-formed'. */
    encoding: string;
    reading: string;
    /** Of files that count frames, the rate of the times, for people; else empty. */
    frameRate: string;
    count: number;
    starts: Uint32Array;
    ends: Uint32Array;
    /** Where the entry's bytes lie in the file (of pictures: in the pictures' file), and how many they are. */
    offsets: Uint32Array;
    lengths: Uint32Array;
    /** Bits as in `Vocabulary.marks`: another entry hides it, it ends before it starts, and so on. */
    marks: Uint8Array;
    /** One behind the other, and all of the entries; a text file has one. */
    tracks: Track[];
    isPictures: boolean;
    /** Only of VobSub pairs. */
    vobSub: VobSubFacts | null;
}

export interface VobSubFacts {
    frameWidth: number;
    frameHeight: number;
    originX: number;
    originY: number;
    /** 0xRRGGBB, 16 of them or none. */
    palette: number[];
}

/** A file that the library shows nothing of. */
export interface NotOpened {
    kind: 'refused' | 'broken' | 'lonely';
    /** Findings, source and mend are there all the same, unless the file broke the worker. */
    id: number;
    name: string;
    size: number;
    /** In words: why it is refused; what broke; which file of a pair is missing. */
    reason: string;
}

export type OpenResult = Opened | NotOpened;

/** Reading the bytes; the library's scan; its entries and texts; what was meant; and so on. */
export type Stage = 'reading' | 'scanning' | 'tables' | 'texts' | 'meaning' | 'comparing' | 'writing' | 'searching';

export interface Progress {
    name: string;
    stage: Stage;
    /** Of the whole, from 0 to 1. */
    done: number;
}

/** Lines as `vxsub --log` prints them: the first ones, and how many more there were. */
export interface LogLines {
    lines: string[];
    more: number;
}

export interface Log {
    /** Of opening the file. */
    opening: LogLines;
    /** Of showing the entry that was asked for last. */
    showing: LogLines;
}

/** An entry as the player gets it. */
export interface EntryDetail {
    index: number;
    track: number;
    start: number;
    end: number;
    /** The text; control characters stand in it as they are. Empty for pictures. */
    text: string;
    /** All units that the library counted, also those behind the first 0: bytes, or UTF-16 units when `wide`. */
    units: Uint16Array;
    wide: boolean;
    /** The bytes in the file, up to 64 KiB of them, and where they lie. */
    offset: number;
    length: number;
    bytes: Uint8Array;
    /** Source line of `offset`, from 1; 0 where there are no lines. */
    line: number;
}

/** What the library answers at a play time. */
export interface Moment {
    time: number;
    /** The entry that GetTag names, whether it still runs or not; -1: none. */
    begun: number;
    /** The entry that the television shows; -1: nothing, and `why` says why. */
    shown: number;
    why: string;
    /** Of the shown entry: its text, in lines as they are displayed. */
    lines: string[];
}

/** A picture as it is drawn on the television. */
export interface Picture {
    index: number;
    surfaceWidth: number;
    surfaceHeight: number;
    /** Where it stands on the surface; nothing is drawn elsewhere. Width and height 0: nothing is seen. */
    left: number;
    top: number;
    width: number;
    height: number;
    /** width * height pixels, R, G, B, A, not multiplied. */
    rgba: Uint8ClampedArray;
    /** Why nothing is seen; empty when something is. */
    why: string;
}

export type Cost = 'entries' | 'times' | 'text' | 'hidden' | 'letters' | 'looks';

/** As `vxsub check --json` writes it. */
export interface Finding {
    name: string;
    cost: Cost;
    line?: number;
    offset?: number;
    /** From 1, in the order of the file as it was meant. */
    entry?: number;
    start?: number;
    end?: number;
    shown_at?: number;
    what?: string;
    sentence: string;
    mend?: string;
}

export interface CheckReport {
    file: string;
    /** 0 nothing is lost, 3 something is, 1 it is no subtitle file: then `error` alone is there. */
    status: number;
    error?: string;
    format?: string;
    encoding?: string;
    meant?: number;
    right?: number;
    findings?: Finding[];
}

export interface MendOptions {
    /** Keep the format where it can show everything. */
    keepFormat: boolean;
    /** UTF-16 in place of UTF-8, for televisions that are set to Big5. */
    utf16: boolean;
    /** Of a SAMI file, the class that is written; empty: all. */
    samiClass: string;
}

export interface Mended {
    /** 0 every entry shows, 3 some do not, 1 there is no copy. */
    status: number;
    /** Of the copy; empty when there is none. */
    name: string;
    bytes: Uint8Array;
    /** Of an index, the pictures that the copy needs beside it, under the name that it looks for. */
    pictures: FileIn | null;
    /** What changed, as `vxsub fix` tells it. */
    lines: string[];
}

export interface SourceFacts {
    lines: number;
    /** 'UTF-8', 'UTF-16LE', 'WINDOWS-1251'. */
    encoding: string;
    /** 'UTF-8', 'UTF-16LE', 'UTF-16BE'; empty: the file has no byte-order mark. */
    mark: string;
}

export interface SourceLine {
    /** From 1. */
    number: number;
    /** In the file, with the bytes of the line end. */
    offset: number;
    length: number;
    /** Without its line end; a long line is cut behind 10,000 characters. */
    text: string;
    ending: 'CR LF' | 'LF' | 'CR' | '';
}

export interface RunResult {
    status: number;
    output: Uint8Array;
    errors: string;
    /** What the command wrote, by name. */
    files: { name: string; bytes: Uint8Array }[];
}

/** The library at work. Every promise is settled; a call that breaks the worker is rejected with `EngineBroken`. */
export interface Engine {
    vocabulary(): Promise<Vocabulary>;

    /**
     * Opens what was dropped, one result for each film: an index takes its pictures' file with it, and a file of a pair
     * that was opened as 'lonely' finds its other half when that is dropped later.
     */
    open(files: FileIn[], settings: DeviceSettings, progress: (step: Progress) => void): Promise<OpenResult[]>;
    /** The same file with other settings, under the same id. */
    reopen(id: number, settings: DeviceSettings): Promise<OpenResult>;
    close(id: number): Promise<void>;

    /** Texts of `count` entries from `from` on, each on one line with \n and the like written out, as in a list. */
    texts(id: number, from: number, count: number): Promise<string[]>;
    entry(id: number, index: number): Promise<EntryDetail>;
    /** Indices of the entries that hold `words`, in any letter case. */
    search(id: number, words: string, progress?: (step: Progress) => void): Promise<Uint32Array>;
    at(id: number, track: number, time: number): Promise<Moment>;
    picture(id: number, index: number): Promise<Picture>;

    /** Runs beside the others: it delays none of them. */
    findings(id: number, progress?: (step: Progress) => void): Promise<CheckReport>;
    mend(id: number, options: MendOptions, progress?: (step: Progress) => void): Promise<Mended>;

    /** Also of a file that was refused. */
    log(id: number): Promise<Log>;

    sourceFacts(id: number): Promise<SourceFacts>;
    source(id: number, line: number, count: number): Promise<SourceLine[]>;
    /** The line, from 1, of a byte. */
    lineAt(id: number, offset: number): Promise<number>;

    /** The inspector's own command line over `files`, as in a folder that holds nothing else. */
    run(files: FileIn[], args: string[]): Promise<RunResult>;
}

/** The worker ended or did not answer in time. It has been replaced; every other file is still there. */
export class EngineBroken extends Error {
    constructor(message: string) {
        super(message);
        this.name = 'EngineBroken';
    }
}
