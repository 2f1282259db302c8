import { engineTexts } from '../texts';
import type { Reply, Request, Requests, Start } from './protocol';
import { EngineBroken, type Stage } from './types';

/** What the page starts the library with. */
export interface Parts {
    /** The module, compiled once. */
    wasm: () => Promise<WebAssembly.Module>;
    /** A new worker that runs worker.ts. */
    startWorker: () => Worker;
}

/** A request, and who waits for its answer. */
export interface Job {
    request: Request;
    /** Milliseconds. */
    limit: number;
    /** What has to be done first, if anything; throws when that is known to be in vain. */
    before?: () => Job | undefined;
    progress?: (stage: Stage, done: number) => void;
    resolve(answer: unknown): void;
    reject(reason: Error): void;
}

/**
 * One worker and those that take its place. It has one request at a time, so that it is known which one broke it: that
 * one alone is rejected.
 */
export class Side {
    private worker: Worker | undefined;
    private readonly waiting: Job[] = [];
    private current: Job | undefined;
    private timer: ReturnType<typeof setTimeout> | undefined;

    /** `onReplaced` is called when the worker has gone with all that it held. */
    constructor(
        private readonly parts: Parts,
        private readonly onReplaced: () => void,
    ) {}

    ask<Name extends keyof Requests>(
        name: Name,
        args: Requests[Name],
        options: Pick<Job, 'limit' | 'before' | 'progress'>,
    ): Promise<unknown> {
        return new Promise((resolve, reject) => this.add({ request: { name, args }, ...options, resolve, reject }));
    }

    add(job: Job): void {
        this.waiting.push(job);
        void this.next();
    }

    private takeJob(): Job | undefined {
        for (let job = this.waiting[0]; job !== undefined; job = this.waiting[0]) {
            try {
                const first = job.before?.();
                if (first !== undefined) return first;
                return this.waiting.shift();
            } catch (error) {
                this.waiting.shift();
                job.reject(error as Error);
            }
        }
        return undefined;
    }

    private async next(): Promise<void> {
        if (this.current !== undefined) return;
        const job = this.takeJob();
        if (job === undefined) return;
        this.current = job;
        try {
            this.worker ??= await this.start();
            this.timer = setTimeout(() => this.breakDown(engineTexts.tookTooLong), job.limit);
            this.worker.postMessage(job.request);
        } catch (error) {
            this.settle(() => job.reject(error instanceof Error ? error : new Error(String(error))));
        }
    }

    private async start(): Promise<Worker> {
        const wasm = await this.parts.wasm();
        const worker = this.parts.startWorker();
        worker.onmessage = ({ data }: MessageEvent<Reply>) => {
            if (worker === this.worker) this.take(data);
        };
        worker.onerror = (event) => {
            event.preventDefault();
            if (worker === this.worker) this.breakDown(event.message || engineTexts.ended);
        };
        worker.onmessageerror = () => {
            if (worker === this.worker) this.breakDown(engineTexts.unreadable);
        };
        worker.postMessage({ wasm } satisfies Start);
        return worker;
    }

    private take(reply: Reply): void {
        const job = this.current;
        if (job === undefined) return;
        if (reply.kind === 'progress') job.progress?.(reply.stage, reply.done);
        if (reply.kind === 'answer') this.settle(() => job.resolve(reply.answer));
        if (reply.kind === 'failed') this.settle(() => job.reject(new Error(reply.message)));
        if (reply.kind === 'broken') this.breakDown(reply.message);
    }

    private settle(tell: () => void): void {
        clearTimeout(this.timer);
        this.current = undefined;
        tell();
        void this.next();
    }

    private breakDown(why: string): void {
        const job = this.current;
        this.worker?.terminate();
        this.worker = undefined;
        this.onReplaced();
        this.settle(() => job?.reject(new EngineBroken(engineTexts.broken(why))));
    }
}
