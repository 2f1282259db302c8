import { deepEqual, equal } from 'node:assert/strict';
import { test } from 'node:test';

import { Pages } from '../src/model/pages';

const settled = (): Promise<void> => new Promise((resolve) => setTimeout(resolve));

test('a page is asked for once, and is there when it has come', async () => {
    const asked: [number, number][] = [];
    let arrivals = 0;
    const pages = new Pages(
        25,
        async (first, count) => {
            asked.push([first, count]);
            return Array.from({ length: count }, (_, at) => first + at);
        },
        () => (arrivals += 1),
        10,
    );
    equal(pages.get(23), undefined);
    equal(pages.get(21), undefined);
    await settled();
    equal(pages.get(23), 23);
    deepEqual(asked, [[20, 5]]);
    equal(arrivals, 1);
});

test('the page that was not looked at for longest goes first', async () => {
    const asked: number[] = [];
    const load = async (first: number): Promise<number[]> => {
        asked.push(first);
        return [first];
    };
    const pages = new Pages(10, load, () => undefined, 1, 2);
    for (const index of [0, 1]) pages.get(index);
    await settled();
    pages.get(0);
    pages.get(2);
    await settled();
    for (const index of [0, 2, 1]) pages.get(index);
    deepEqual(asked, [0, 1, 2, 1]);
});

test('who scrolls quickly gets what was looked at last', async () => {
    const asked: number[] = [];
    const load = async (first: number): Promise<number[]> => {
        asked.push(first);
        return [first];
    };
    const pages = new Pages(100, load, () => undefined, 1);
    for (let index = 0; index < 20; index += 1) pages.get(index);
    deepEqual(asked, [0, 1]);
    await settled();
    deepEqual(asked, [0, 1, 19, 18, 17, 16]);
});

test('what cannot be had is not asked for again', async () => {
    let asked = 0;
    const load = async (): Promise<null> => {
        asked += 1;
        return null;
    };
    const pages = new Pages(10, load, () => undefined, 1);
    for (const index of [0, 1, 2]) {
        pages.get(index);
        await settled();
    }
    equal(pages.get(0), undefined);
    equal(asked, 3);
});
