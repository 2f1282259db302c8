import { deepEqual, equal } from 'node:assert/strict';
import { test } from 'node:test';

import { readPlace, writePlace } from '../src/links';

test('an address names a file, and an entry or a play time', () => {
    deepEqual(readPlace('#file=a%20%26%20b.srt&entry=12'), { file: 'a & b.srt', entry: 12, time: null });
    deepEqual(readPlace('#file=a.srt&time=61500'), { file: 'a.srt', entry: null, time: 61_500 });
    deepEqual(readPlace(''), { file: null, entry: null, time: null });
    deepEqual(readPlace('#entry=-1&time=x'), { file: null, entry: null, time: null });
});

test('what is written is read again', () => {
    deepEqual(readPlace(writePlace('50 % & more #1.srt', 7)), { file: '50 % & more #1.srt', entry: 7, time: null });
    equal(writePlace('a.srt', -1), '#file=a.srt');
});
