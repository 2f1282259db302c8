/** What goes between the page and a worker: one request at a time. */

import type { DeviceSettings, FileIn, Stage } from './types';

/** The first message; all others are requests. */
export interface Start {
    wasm: WebAssembly.Module;
}

export interface Requests {
    vocabulary: [];
    open: [id: number, files: FileIn[], settings: DeviceSettings];
    close: [id: number];
    texts: [id: number, from: number, count: number];
    entry: [id: number, index: number];
    search: [id: number, words: string];
    at: [id: number, track: number, time: number];
    picture: [id: number, index: number];
    log: [id: number];
    sourceFacts: [id: number];
    source: [id: number, line: number, count: number];
    lineAt: [id: number, offset: number];
    run: [files: FileIn[], args: string[]];
}

export interface Request<Name extends keyof Requests = keyof Requests> {
    name: Name;
    args: Requests[Name];
}

export type Reply =
    | { kind: 'answer'; answer: unknown }
    /** The call makes no sense; the worker goes on. */
    | { kind: 'failed'; message: string }
    /** The module is in no state to go on. */
    | { kind: 'broken'; message: string }
    | { kind: 'progress'; stage: Stage; done: number };
