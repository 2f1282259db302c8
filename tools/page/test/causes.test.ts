import { deepEqual } from 'node:assert/strict';
import { test } from 'node:test';

import type { Cost, Finding } from '../src/engine/types';
import { groupsOf } from '../src/model/causes';

const finding = (name: string, cost: Cost, line: number): Finding => ({ name, cost, line, sentence: '' });

test('findings stand by their causes, the dearest first', () => {
    const groups = groupsOf([
        finding('codes', 'looks', 1),
        finding('lost', 'entries', 2),
        finding('codes', 'looks', 3),
        finding('overlap', 'hidden', 4),
    ]);
    deepEqual(
        groups.map(({ name, findings }) => [name, findings.map(({ line }) => line)]),
        [
            ['lost', [2]],
            ['overlap', [4]],
            ['codes', [1, 3]],
        ],
    );
});
