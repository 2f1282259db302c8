import { equal } from 'node:assert/strict';
import { test } from 'node:test';

import { formatLength, formatTick, formatTime, parseTime } from '../src/model/times';

test('times are written with hours and milliseconds', () => {
    equal(formatTime(0), '00:00:00,000');
    equal(formatTime(61_500), '00:01:01,500');
    equal(formatTime(359_999_999), '99:59:59,999');
    equal(formatTime(360_000_000), '100:00:00,000');
    equal(formatTime(-5), '00:00:00,000');
    equal(formatTime(1.9), '00:00:00,001');
});

test('lengths are written as people say them', () => {
    equal(formatLength(2000), '2 s');
    equal(formatLength(2850), '2.85 s');
    equal(formatLength(12_340), '12.3 s');
    equal(formatLength(65_000), '1 min 5 s');
    equal(formatLength(7_380_000), '2 h 3 min');
});

test('lengths carry what they round up', () => {
    equal(formatLength(59_990), '1 min 0 s');
    equal(formatLength(119_600), '2 min 0 s');
    equal(formatLength(3_599_900), '1 h 0 min');
});

test('the marks of a ruler have as many digits as their step needs', () => {
    equal(formatTick(65_000, 5000), '01:05');
    equal(formatTick(3_665_000, 5000), '1:01:05');
    equal(formatTick(1500, 500), '00:01,5');
    equal(formatTick(1520, 20), '00:01,520');
});

test('every form of a play time is read', () => {
    for (const form of ['61500', '61500ms', '61.5s', '61,5s', '1:01.5', '01:01,500', '00:01:01,500', ' 0:1:1.5 ']) {
        equal(parseTime(form), 61_500, form);
    }
});

test('what is no play time is none', () => {
    for (const form of ['', 'x', '1:', ':5', '1:2:3:4', '1.5', '-1', '1:01.5s']) equal(parseTime(form), null, form);
});
