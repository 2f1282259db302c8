/// What the arrays of an open file tell about its entries.

import type { Finding, Opened } from '../engine/types';
import { OPEN_END, SECOND } from './times';

/// A picture without an end is drawn this long behind the last start.
const LAST_PICTURE = 5 * SECOND;

type Times = Pick<Opened, 'count' | 'starts' | 'ends'>;

export function filmLength({ count, starts, ends }: Times): number {
    let length = 0;
    for (let index = 0; index < count; index += 1) {
        const end = ends[index];
        length = Math.max(length, end === OPEN_END ? starts[index] + LAST_PICTURE : end);
    }
    return Math.max(length, SECOND);
}

/// The end of an entry as it is drawn: that of an open one is the start of the next in its track.
export function shownEnd(file: Opened, index: number): number {
    const end = file.ends[index];
    if (end !== OPEN_END) return end;
    const track = file.tracks[trackOf(file, index)];
    const hasNext = index + 1 < (track?.end ?? file.count);
    return hasNext ? file.starts[index + 1] : file.starts[index] + LAST_PICTURE;
}

export function trackOf(file: Pick<Opened, 'tracks'>, index: number): number {
    return Math.max(
        0,
        file.tracks.findIndex(({ first, end }) => first <= index && index < end),
    );
}

/// The first place of `order` whose entry starts at `ms` or later.
export function firstFrom(starts: Uint32Array, order: Uint32Array, ms: number): number {
    let low = 0;
    let high = order.length;
    while (low < high) {
        const middle = (low + high) >> 1;
        if (starts[order[middle]] < ms) low = middle + 1;
        else high = middle;
    }
    return low;
}

/// The indices from `first` until just before `end` by their starts; equal ones in the order of the file.
export function orderByStart(starts: Uint32Array, first: number, end: number): Uint32Array {
    const order = new Uint32Array(end - first);
    let isSorted = true;
    for (let place = 0; place < order.length; place += 1) {
        order[place] = first + place;
        if (place > 0 && starts[first + place] < starts[first + place - 1]) isSorted = false;
    }
    return isSorted ? order : order.sort((a, b) => starts[a] - starts[b] || a - b);
}

/// The library's entry that a finding is about, if the library has it; -1: it has none.
export function entryOf(file: Opened, finding: Finding): number {
    const start = finding.shown_at ?? finding.start;
    if (start === undefined) return -1;
    // Of tracks with the same times, the number tells which is meant.
    const counted = (finding.entry ?? 0) - 1;
    if (file.starts[counted] === start) return counted;
    const byStart = file.starts.indexOf(start);
    if (byStart >= 0 || finding.offset === undefined) return byStart;
    const { offset } = finding;
    return file.offsets.findIndex((from, index) => from <= offset && offset < from + file.lengths[index]);
}
