/// The entries of a track along the film's time, ready to be drawn at any scale.

import type { Opened } from '../engine/types';
import { firstFrom, orderByStart, shownEnd } from './film';
import { toTime, type Scale } from './scale';

export const LANES = 3;

/// What a column of pixels stands for.
export interface Column {
    /// Entries that start in it.
    starts: number;
    isCovered: boolean;
    /// Whether one of them is hidden by another, or never shown.
    isMarked: boolean;
}

export class FilmMap {
    /// Entries by their starts; `ends`, `lanes` and the rest go by the place in this order.
    readonly order: Uint32Array;
    readonly ends: Uint32Array;
    readonly lanes: Uint8Array;
    private readonly latestEnds: Uint32Array;
    private readonly markedBefore: Uint32Array;

    constructor(
        readonly file: Opened,
        readonly track: number,
    ) {
        const { first, end } = file.tracks[track] ?? { first: 0, end: file.count };
        this.order = orderByStart(file.starts, first, end);
        this.ends = this.order.map((index) => shownEnd(file, index));
        this.lanes = lanesOf(
            this.order.map((index) => file.starts[index]),
            this.ends,
        );
        this.latestEnds = latestOf(this.ends);
        this.markedBefore = countBefore(this.order, (index) => file.marks[index] !== 0);
    }

    start(place: number): number {
        return this.file.starts[this.order[place]];
    }

    placeFrom(ms: number): number {
        return firstFrom(this.file.starts, this.order, ms);
    }

    /// The places whose entries may reach into the stretch from `from` until `to`.
    placesIn(from: number, to: number): [number, number] {
        let first = this.placeFrom(from);
        while (first > 0 && this.latestEnds[first - 1] > from) first -= 1;
        return [first, this.placeFrom(to)];
    }

    /// One column for each pixel.
    columns(scale: Scale): Column[] {
        const columns: Column[] = [];
        let first = this.placeFrom(scale.from);
        for (let pixel = 0; pixel < scale.width; pixel += 1) {
            const next = this.placeFrom(toTime(scale, pixel + 1));
            columns.push({
                starts: next - first,
                isCovered: next > first || (first > 0 && this.latestEnds[first - 1] > toTime(scale, pixel)),
                isMarked: this.markedBefore[next] > this.markedBefore[first],
            });
            first = next;
        }
        return columns;
    }

    /// The place of the entry that stands at `ms` in `lane`; -1: none.
    placeAt(ms: number, lane: number): number {
        const [first, end] = this.placesIn(ms, ms + 1);
        for (let place = end - 1; place >= first; place -= 1) {
            if (this.lanes[place] === lane && this.start(place) <= ms && ms < this.ends[place]) return place;
        }
        return -1;
    }
}

/// Entries that overlap stand below each other, as far as there are lanes.
export function lanesOf(starts: Uint32Array, ends: Uint32Array): Uint8Array {
    const lanes = new Uint8Array(starts.length);
    const busyUntil = new Uint32Array(LANES);
    for (let place = 0; place < starts.length; place += 1) {
        let lane = 0;
        while (lane < LANES - 1 && busyUntil[lane] > starts[place]) lane += 1;
        lanes[place] = lane;
        if (ends[place] > busyUntil[lane]) busyUntil[lane] = ends[place];
    }
    return lanes;
}

function latestOf(ends: Uint32Array): Uint32Array {
    let latest = 0;
    return ends.map((end) => (latest = Math.max(latest, end)));
}

function countBefore(order: Uint32Array, isCounted: (index: number) => boolean): Uint32Array {
    const counts = new Uint32Array(order.length + 1);
    for (let place = 0; place < order.length; place += 1) {
        counts[place + 1] = counts[place] + (isCounted(order[place]) ? 1 : 0);
    }
    return counts;
}
