import { deepEqual, equal } from 'node:assert/strict';
import { test } from 'node:test';

import { charAt, formatSize, hexLines } from '../src/model/bytes';

test('sizes are short', () => {
    deepEqual([0, 1, 293, 1024, 34_000_000].map(formatSize), ['0 bytes', '1 byte', '293 bytes', '1.0 KiB', '32 MiB']);
});

test('bytes stand sixteen to a line, with their letters', () => {
    const lines = hexLines(
        Uint8Array.from({ length: 17 }, (_, at) => 0x40 + at),
        256,
    );
    equal(lines.length, 2);
    deepEqual(lines[1], { offset: '00000110', bytes: '50', letters: 'P' });
    equal(lines[0].letters, '@ABCDEFGHIJKLMNO');
    equal(hexLines(Uint8Array.of(0, 31, 32, 126, 127), 0)[0].letters, '·· ~·');
});

test('a byte leads to its character in every encoding', () => {
    equal(charAt('café!', 5, 'UTF-8'), 4);
    equal(charAt('€uro', 3, 'UTF-8'), 1);
    equal(charAt('\u{1f600}!', 4, 'UTF-8'), 2);
    equal(charAt('café!', 8, 'UTF-16LE'), 4);
    equal(charAt('Привет', 2, 'WINDOWS-1251'), 2);
    equal(charAt('中文a', 4, 'GB18030'), 2);
    equal(charAt('short', 99, 'UTF-8'), 5);
});
