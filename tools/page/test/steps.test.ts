import { deepEqual } from 'node:assert/strict';
import { test } from 'node:test';

import { Steps } from '../src/engine/steps';

test('stages count alike, and a part of one is a part of the whole', () => {
    const told: [string, number][] = [];
    const steps = new Steps(4, (stage, done) => told.push([stage, done]));
    steps.tell('reading', 0);
    steps.tell('reading', 0.5);
    steps.tell('scanning', 0);
    steps.tell('texts', 0);
    steps.tell('scanning', 0);
    steps.tell('comparing', 0); // one more than was said
    deepEqual(told, [
        ['reading', 0],
        ['reading', 0.125],
        ['scanning', 0.25],
        ['texts', 0.5],
        ['scanning', 0.75],
        ['comparing', 1],
    ]);
});

test('what has no stages tells nothing', () => {
    const told: string[] = [];
    new Steps(0, (stage) => told.push(stage)).tell('scanning', 0);
    deepEqual(told, []);
});
