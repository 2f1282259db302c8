import { deepEqual, equal, ok } from 'node:assert/strict';
import { test } from 'node:test';

import { RowLayout } from '../src/model/rows';

const VIEW = 300;

test('a short list is there as a whole', () => {
    deepEqual(new RowLayout(5, 30).windowAt(0, VIEW), { first: 0, count: 5, top: 0 });
    deepEqual(new RowLayout(0, 30).windowAt(0, VIEW), { first: 0, count: 0, top: 0 });
});

test('of a long list, the rows in sight and some around', () => {
    const { first, count, top } = new RowLayout(500_000, 30).windowAt(30_000, VIEW);
    equal(first, 994);
    equal(top, first * 30);
    equal(first + count, 1017);
});

test('the last row can be reached, however many there are', () => {
    for (const rows of [400_000, 500_000, 600_000, 5_000_000, 100_000_000]) {
        const layout = new RowLayout(rows, 30);
        ok(layout.height <= 15_000_000);
        const { first, count, top } = layout.windowAt(layout.height - VIEW, VIEW);
        equal(first + count, rows);
        ok(Math.abs(top + count * 30 - layout.height) < 1, String(rows));
    }
});

test('every row of a list that is too tall can be revealed', () => {
    const layout = new RowLayout(5_000_000, 30);
    for (const row of [0, 1, 77, 2_500_000, 4_999_998, 4_999_999]) {
        const scroll = layout.reveal(row, 0, VIEW);
        const { first, top } = layout.windowAt(scroll, VIEW);
        const place = top + (row - first) * 30 - scroll;
        ok(place > -1 && place + 30 < VIEW + 1, `row ${row} stands at ${place}`);
    }
});

test('a row in sight stays where it is', () => {
    equal(new RowLayout(1000, 30).reveal(12, 333, VIEW), 333);
});

test('a step over the edge moves by a row, a leap puts the row in the middle', () => {
    const layout = new RowLayout(1000, 30);
    equal(layout.reveal(10, 0, VIEW), 30);
    equal(layout.reveal(19, 600, VIEW), 570);
    equal(layout.reveal(500, 0, VIEW), 15_000 - 135);
});
