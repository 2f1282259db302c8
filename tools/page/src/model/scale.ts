/// Which stretch of the film a time line shows, and where a time stands in it.

import { HOUR, MINUTE, SECOND } from './times';

/// The stretch from `from` on, `width` pixels wide.
export interface Scale {
    from: number;
    msPerPixel: number;
    width: number;
}

/// No closer than a millisecond on two pixels.
const CLOSEST = 0.5;
/// A little air behind the last entry.
const MARGIN = 1.02;

export const toPixel = (scale: Scale, ms: number): number => (ms - scale.from) / scale.msPerPixel;
export const toTime = (scale: Scale, pixel: number): number => scale.from + pixel * scale.msPerPixel;
export const span = (scale: Scale): number => scale.width * scale.msPerPixel;

const clamp = (value: number, low: number, high: number): number => Math.min(Math.max(value, low), Math.max(low, high));

/// The widest pixel that still has a use: all of the film at once.
const farthest = (length: number, width: number): number => Math.max(CLOSEST, (length * MARGIN) / Math.max(1, width));

export function wholeFilm(length: number, width: number): Scale {
    return { from: 0, msPerPixel: farthest(length, width), width };
}

function within(scale: Scale, length: number): Scale {
    const msPerPixel = clamp(scale.msPerPixel, CLOSEST, farthest(length, scale.width));
    const last = length * MARGIN - scale.width * msPerPixel;
    return { ...scale, msPerPixel, from: clamp(scale.from, 0, last) };
}

/// `factor` above 1 comes closer; what is at `pixel` stays there.
export function zoomed(scale: Scale, factor: number, pixel: number, length: number): Scale {
    const msPerPixel = clamp(scale.msPerPixel / factor, CLOSEST, farthest(length, scale.width));
    return within({ ...scale, msPerPixel, from: toTime(scale, pixel) - pixel * msPerPixel }, length);
}

export function panned(scale: Scale, pixels: number, length: number): Scale {
    return within({ ...scale, from: scale.from + pixels * scale.msPerPixel }, length);
}

/// Turns a page when `ms` has left the stretch, so that it stands near its beginning.
export function following(scale: Scale, ms: number, length: number): Scale {
    const pixel = toPixel(scale, ms);
    if (pixel >= 0 && pixel < scale.width) return scale;
    return within({ ...scale, from: ms - span(scale) * 0.1 }, length);
}

export const resized = (scale: Scale, width: number, length: number): Scale => within({ ...scale, width }, length);

const STEPS = [
    1,
    2,
    5,
    10,
    20,
    50,
    100,
    200,
    500,
    SECOND,
    2 * SECOND,
    5 * SECOND,
    10 * SECOND,
    15 * SECOND,
    30 * SECOND,
    MINUTE,
    2 * MINUTE,
    5 * MINUTE,
    10 * MINUTE,
    15 * MINUTE,
    30 * MINUTE,
    HOUR,
    2 * HOUR,
    6 * HOUR,
    12 * HOUR,
    24 * HOUR,
];

/// The smallest usual step between two marks of a ruler that stand at least `pixels` apart.
export function tickStep(scale: Scale, pixels: number): number {
    const least = pixels * scale.msPerPixel;
    return STEPS.find((step) => step >= least) ?? Math.ceil(least / (24 * HOUR)) * 24 * HOUR;
}

/// Where the marks stand, those just outside included.
export function ticks(scale: Scale, step: number): number[] {
    const marks: number[] = [];
    const end = scale.from + span(scale);
    for (let at = Math.floor(scale.from / step) * step; at <= end; at += step) marks.push(at);
    return marks;
}
