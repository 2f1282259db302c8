import { deepEqual, equal, ok } from 'node:assert/strict';
import { test } from 'node:test';

import {
    following,
    panned,
    resized,
    span,
    tickStep,
    ticks,
    toPixel,
    toTime,
    wholeFilm,
    zoomed,
} from '../src/model/scale';

const HOUR = 3_600_000;
const near = (a: number, b: number): void => ok(Math.abs(a - b) < 1e-6 * Math.max(1, Math.abs(b)), `${a} is not ${b}`);

test('the whole film has a little air behind it', () => {
    const whole = wholeFilm(HOUR, 1000);
    near(span(whole), HOUR * 1.02);
    equal(toPixel(whole, 0), 0);
});

test('a pixel is the time that stands there', () => {
    const scale = { from: 5000, msPerPixel: 20, width: 500 };
    equal(toTime(scale, 100), 7000);
    equal(toPixel(scale, 7000), 100);
});

test('what is under the pointer stays there', () => {
    const scale = zoomed(wholeFilm(HOUR, 1000), 8, 600, HOUR);
    near(toTime(scale, 600), toTime(wholeFilm(HOUR, 1000), 600));
    near(scale.msPerPixel, (HOUR * 1.02) / 8000);
});

test('no zoom goes behind the whole film, nor too close', () => {
    deepEqual(zoomed(wholeFilm(HOUR, 1000), 0.1, 500, HOUR), wholeFilm(HOUR, 1000));
    equal(zoomed(wholeFilm(HOUR, 1000), 1e12, 500, HOUR).msPerPixel, 0.5);
});

test('no way leads out of the film', () => {
    const scale = zoomed(wholeFilm(HOUR, 1000), 10, 0, HOUR);
    equal(panned(scale, -50, HOUR).from, 0);
    near(panned(scale, 1e9, HOUR).from + span(scale), HOUR * 1.02);
});

test('the stretch turns its page when the play time leaves it', () => {
    const scale = zoomed(wholeFilm(HOUR, 1000), 10, 0, HOUR);
    equal(following(scale, 1000, HOUR), scale);
    const turned = following(scale, HOUR / 2, HOUR);
    near(toPixel(turned, HOUR / 2), 100);
});

test('a narrower window shows no less than the film allows', () => {
    const scale = resized(wholeFilm(HOUR, 1000), 400, HOUR);
    equal(scale.width, 400);
    near(span(scale), HOUR * 0.4 * 1.02);
});

test('the marks of a ruler stand apart, on usual steps', () => {
    const scale = { from: 900, msPerPixel: 10, width: 300 };
    equal(tickStep(scale, 90), 1000);
    deepEqual(ticks(scale, 1000), [0, 1000, 2000, 3000]);
    equal(tickStep({ from: 0, msPerPixel: HOUR * 24, width: 300 }, 90), 90 * 24 * HOUR);
});
