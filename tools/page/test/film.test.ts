import { deepEqual, equal } from 'node:assert/strict';
import { test } from 'node:test';

import type { Finding, Opened } from '../src/engine/types';
import { entryOf, filmLength, firstFrom, orderByStart, shownEnd, trackOf } from '../src/model/film';
import { FilmMap, lanesOf } from '../src/model/filmMap';
import { OPEN_END } from '../src/model/times';

/// A file of entries, each with start and end; all in one track unless `tracks` names their bounds.
function film(times: [number, number][], tracks: [number, number][] = [[0, times.length]]): Opened {
    const numbers = (pick: (time: [number, number]) => number): Uint32Array => Uint32Array.from(times, pick);
    return {
        count: times.length,
        starts: numbers(([start]) => start),
        ends: numbers(([, end]) => end),
        offsets: Uint32Array.from(times, (_, index) => 100 * index),
        lengths: new Uint32Array(times.length).fill(50),
        marks: new Uint8Array(times.length),
        tracks: tracks.map(([first, end]) => ({ language: '', languageName: '', first, end })),
    } as Opened;
}

test('a film ends where its last entry does', () => {
    equal(
        filmLength(
            film([
                [0, 9000],
                [1000, 2000],
            ]),
        ),
        9000,
    );
    equal(filmLength(film([[7000, OPEN_END]])), 12_000);
    equal(filmLength(film([])), 1000);
});

test('an open entry stays until the next one of its track', () => {
    const file = film(
        [
            [0, OPEN_END],
            [4000, OPEN_END],
            [1000, OPEN_END],
        ],
        [
            [0, 2],
            [2, 3],
        ],
    );
    deepEqual(
        [0, 1, 2].map((index) => shownEnd(file, index)),
        [4000, 9000, 6000],
    );
    deepEqual(
        [0, 1, 2].map((index) => trackOf(file, index)),
        [0, 0, 1],
    );
});

test('entries are ordered by their starts, equal ones as they stand', () => {
    const { starts } = film([
        [5, 6],
        [1, 2],
        [5, 9],
        [0, 1],
    ]);
    const order = orderByStart(starts, 0, 4);
    deepEqual([...order], [3, 1, 0, 2]);
    deepEqual([...orderByStart(starts, 1, 3)], [1, 2]);
    deepEqual(
        [0, 1, 2, 5, 6].map((ms) => firstFrom(starts, order, ms)),
        [0, 1, 2, 2, 4],
    );
});

test('a finding leads to the entry that begins there, or to the one with its bytes', () => {
    const file = film([
        [1000, 2000],
        [3000, 4000],
    ]);
    const finding = (fields: Partial<Finding>): Finding => ({ name: '', cost: 'looks', sentence: '', ...fields });
    equal(entryOf(file, finding({ start: 3000, offset: 10 })), 1);
    equal(entryOf(file, finding({ start: 999, shown_at: 1000 })), 0);
    equal(entryOf(file, finding({ start: 999, offset: 149 })), 1);
    equal(entryOf(file, finding({ start: 999, offset: 150 })), -1);
    equal(entryOf(file, finding({})), -1);
});

test('of tracks with the same times, a finding leads into its own', () => {
    const file = film(
        [
            [1000, OPEN_END],
            [1000, OPEN_END],
        ],
        [
            [0, 1],
            [1, 2],
        ],
    );
    equal(entryOf(file, { name: '', cost: 'times', sentence: '', entry: 2, start: 1000 }), 1);
});

test('what overlaps stands in lanes of its own, as far as there are some', () => {
    const lanes = (times: [number, number][]): number[] => {
        const { starts, ends } = film(times);
        return [...lanesOf(starts, ends)];
    };
    deepEqual(
        lanes([
            [0, 10],
            [10, 20],
            [15, 30],
            [20, 25],
            [22, 23],
            [22, 24],
        ]),
        [0, 0, 1, 0, 2, 2],
    );
});

test('a stretch holds whatever reaches into it', () => {
    const map = new FilmMap(
        film([
            [0, 100],
            [10, 20],
            [30, 40],
            [200, 210],
        ]),
        0,
    );
    deepEqual(map.placesIn(50, 150), [0, 3]);
    deepEqual(map.placesIn(110, 150), [3, 3]);
    deepEqual(map.placesIn(205, 300), [3, 4]);
});

test('a column of pixels tells whether something is on, starts, or is marked', () => {
    const file = film([
        [0, 25],
        [40, 45],
        [41, 42],
    ]);
    file.marks[2] = 1;
    const columns = new FilmMap(file, 0).columns({ from: 0, msPerPixel: 10, width: 6 });
    deepEqual(
        columns.map(({ starts }) => starts),
        [1, 0, 0, 0, 2, 0],
    );
    deepEqual(
        columns.map(({ isCovered }) => isCovered),
        [true, true, true, false, true, false],
    );
    deepEqual(
        columns.map(({ isMarked }) => isMarked),
        [false, false, false, false, true, false],
    );
});

test('the pointer finds the entry of its lane', () => {
    const map = new FilmMap(
        film([
            [0, 100],
            [50, 80],
        ]),
        0,
    );
    deepEqual(
        [
            [60, 0],
            [60, 1],
            [90, 1],
            [100, 0],
        ].map(([ms, lane]) => map.placeAt(ms, lane)),
        [0, 1, -1, -1],
    );
});
