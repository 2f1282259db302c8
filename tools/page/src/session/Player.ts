/// The play time of the file that is looked at, and what the library answers to it.

import type { Moment } from '../engine/types';
import { filmLength } from '../model/film';
import { Signal } from '../signal';
import { opened, type FileItem, type Session } from './Session';

export const SPEEDS = [0.5, 1, 2, 4, 8, 16, 60];

export class Player {
    readonly time = new Signal(0);
    readonly isPlaying = new Signal(false);
    readonly speed = new Signal(1);
    readonly track = new Signal(0);
    readonly moment = new Signal<Moment | null>(null);
    /// The length of the film as far as its subtitles tell.
    readonly length = new Signal(0);

    private item: FileItem | null = null;
    private file: ReturnType<typeof opened> = null;
    private lastFrame = 0;
    private isAsking = false;
    private isStale = false;

    constructor(private readonly session: Session) {
        session.current.follow((item) => this.load(item));
        this.time.follow(() => this.ask());
        this.track.follow(() => this.ask());
    }

    private load(item: FileItem | null): void {
        const file = opened(item);
        const isNew = item !== this.item || !this.file;
        this.item = item;
        this.file = file;
        this.length.value = file ? filmLength(file) : 0;
        this.moment.value = null;
        if (isNew) {
            this.pause();
            this.track.value = 0;
            this.seek(file && file.count > 0 ? file.starts[0] : 0);
        }
        this.ask();
    }

    seek(ms: number): void {
        this.time.value = Math.round(Math.min(Math.max(ms, 0), this.length.value));
    }

    move(ms: number): void {
        this.seek(this.time.value + ms);
    }

    toggle(): void {
        if (this.isPlaying.value) this.pause();
        else this.play();
    }

    pause(): void {
        this.isPlaying.value = false;
    }

    play(): void {
        if (!this.file) return;
        if (this.time.value >= this.length.value) this.seek(0);
        this.isPlaying.value = true;
        this.lastFrame = performance.now();
        requestAnimationFrame((now) => this.advance(now));
    }

    private advance(now: number): void {
        if (!this.isPlaying.value) return;
        this.time.value = Math.min(this.time.value + (now - this.lastFrame) * this.speed.value, this.length.value);
        this.lastFrame = now;
        if (this.time.value >= this.length.value) this.pause();
        else requestAnimationFrame((next) => this.advance(next));
    }

    /// One question at a time; of those that come meanwhile, the last is asked.
    private ask(): void {
        this.isStale = true;
        if (!this.isAsking) void this.askWhileStale();
    }

    private async askWhileStale(): Promise<void> {
        this.isAsking = true;
        while (this.isStale && this.item && this.file) {
            this.isStale = false;
            const { item } = this;
            const time = Math.floor(this.time.value);
            const moment = await this.session.ask(item, (engine, id) => engine.at(id, this.track.value, time));
            if (item === this.item) this.moment.value = moment;
            if (!moment && item === this.item) break;
        }
        this.isAsking = false;
    }
}
