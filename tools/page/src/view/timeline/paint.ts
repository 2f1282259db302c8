/// Draws a time line: ruler, entries, lost entries and, at the foot, the whole film.

import type { Finding } from '../../engine/types';
import { LANES, type FilmMap } from '../../model/filmMap';
import { span, tickStep, ticks, toPixel, toTime, wholeFilm, type Scale } from '../../model/scale';
import { formatLength, formatTick } from '../../model/times';
import type { Colours } from './colours';

export const RULER = 22;
export const LANE = 20;
export const LOST_TOP = RULER + LANES * LANE + 4;
export const LOST = 14;
export const OVERVIEW_TOP = LOST_TOP + LOST + 8;
export const OVERVIEW = 14;
export const HEIGHT = OVERVIEW_TOP + OVERVIEW;

/// More entries than this in sight are drawn as columns of pixels.
const MOST_BARS = 1200;
/// A narrower bar has no words.
const LEAST_LABEL = 28;
const FONT = '11px system-ui, sans-serif';

export interface Scene {
    map: FilmMap;
    scale: Scale;
    length: number;
    /// Findings of entries that the television never has.
    lost: Finding[];
    selected: number;
    textOf: (entry: number) => string | undefined;
    colours: Colours;
}

export function paint(context: CanvasRenderingContext2D, scene: Scene): void {
    const { scale, colours } = scene;
    context.clearRect(0, 0, scale.width, HEIGHT);
    context.font = FONT;
    context.textBaseline = 'middle';
    context.fillStyle = colours.ground;
    context.fillRect(0, RULER, scale.width, LOST_TOP + LOST - RULER);
    paintRuler(context, scene);
    const [first, end] = scene.map.placesIn(scale.from, scale.from + span(scale));
    if (end - first > MOST_BARS) paintColumns(context, scene, scale, RULER, LANES * LANE);
    else paintBars(context, scene, first, end);
    paintLost(context, scene);
    paintOverview(context, scene);
}

function paintRuler(context: CanvasRenderingContext2D, { scale, colours }: Scene): void {
    const step = tickStep(scale, 90);
    for (const at of ticks(scale, step)) {
        const x = Math.round(toPixel(scale, at)) + 0.5;
        context.fillStyle = colours.line;
        context.fillRect(x - 0.5, RULER - 6, 1, LOST_TOP + LOST - RULER + 6);
        context.fillStyle = colours.faint;
        const label = formatTick(at, step);
        if (x + 4 + context.measureText(label).width <= scale.width) context.fillText(label, x + 4, RULER / 2);
    }
}

function paintColumns(
    context: CanvasRenderingContext2D,
    scene: Scene,
    scale: Scale,
    top: number,
    height: number,
): void {
    const { colours } = scene;
    scene.map.columns(scale).forEach(({ starts, isCovered, isMarked }, pixel) => {
        if (!isCovered) return;
        context.globalAlpha = Math.min(1, 0.55 + starts / 12);
        context.fillStyle = colours.entry;
        context.fillRect(pixel, top, 1, height);
        context.globalAlpha = 1;
        if (!isMarked) return;
        context.fillStyle = colours.marked;
        context.fillRect(pixel, top + height * 0.7, 1, height * 0.3);
    });
}

function paintBars(context: CanvasRenderingContext2D, scene: Scene, first: number, end: number): void {
    for (let place = first; place < end; place += 1) paintBar(context, scene, place);
    paintGaps(context, scene, first, end);
}

/// A bar is seen however short the entry is.
function paintBar(context: CanvasRenderingContext2D, scene: Scene, place: number): void {
    const { map, scale, colours } = scene;
    const entry = map.order[place];
    const left = toPixel(scale, map.start(place));
    const width = Math.max(2, toPixel(scale, map.ends[place]) - left - 1);
    const top = RULER + map.lanes[place] * LANE + 2;
    const isMarked = map.file.marks[entry] !== 0;
    context.fillStyle = isMarked ? colours.marked : colours.entry;
    context.beginPath();
    context.roundRect(left, top, width, LANE - 4, Math.min(3, width / 2));
    context.fill();
    if (entry === scene.selected) {
        context.strokeStyle = colours.text;
        context.lineWidth = 2;
        context.stroke();
    }
    const from = Math.max(left, 0);
    const room = left + width - from;
    if (room < LEAST_LABEL) return;
    context.fillStyle = isMarked ? colours.markedText : colours.entryText;
    paintLabel(context, scene.textOf(entry) ?? '', from, top, room);
}

function paintLabel(context: CanvasRenderingContext2D, text: string, left: number, top: number, width: number): void {
    context.save();
    context.beginPath();
    context.rect(left, top, width - 4, LANE);
    context.clip();
    context.fillText(plainly(text), left + 5, top + (LANE - 4) / 2 + 0.5);
    context.restore();
}

/// A list's text without its written-out line breaks.
function plainly(text: string): string {
    return text.replace(/\\([n\\])/g, (_, sign: string) => (sign === 'n' ? ' ' : sign));
}

/// The length of a gap stands in it, where there is room.
function paintGaps(
    context: CanvasRenderingContext2D,
    { map, scale, colours }: Scene,
    first: number,
    end: number,
): void {
    context.fillStyle = colours.faint;
    let until = first < end ? map.ends[first] : 0;
    for (let place = first + 1; place < end; place += 1) {
        const start = map.start(place);
        const left = toPixel(scale, until);
        const width = toPixel(scale, start) - left;
        const text = formatLength(start - until);
        const room = context.measureText(text).width;
        if (width > room + 16) context.fillText(text, left + (width - room) / 2, RULER + LANE / 2);
        until = Math.max(until, map.ends[place]);
    }
}

function paintLost(context: CanvasRenderingContext2D, { scale, lost, colours }: Scene): void {
    context.strokeStyle = colours.lost;
    context.lineWidth = 1.5;
    let drawnUntil = -Infinity;
    for (const { start = 0, end = start } of lost) {
        const left = toPixel(scale, start);
        const width = Math.max(3, toPixel(scale, end) - left);
        if (left > scale.width || left + width < 0 || left + width <= drawnUntil) continue;
        drawnUntil = left + width;
        hatch(context, Math.max(left, -10), LOST_TOP, Math.min(width, scale.width + 20), LOST);
    }
}

function hatch(context: CanvasRenderingContext2D, left: number, top: number, width: number, height: number): void {
    context.save();
    context.beginPath();
    context.rect(left, top, width, height);
    context.clip();
    context.strokeRect(left + 0.75, top + 0.75, width - 1.5, height - 1.5);
    context.beginPath();
    for (let x = left - height; x < left + width; x += 6) {
        context.moveTo(x, top + height);
        context.lineTo(x + height, top);
    }
    context.stroke();
    context.restore();
}

/// The whole film, and which stretch of it stands above.
function paintOverview(context: CanvasRenderingContext2D, scene: Scene): void {
    const { scale, colours, length } = scene;
    const whole = wholeFilm(length, scale.width);
    context.fillStyle = colours.ground;
    context.fillRect(0, OVERVIEW_TOP, scale.width, OVERVIEW);
    paintColumns(context, scene, whole, OVERVIEW_TOP + 3, OVERVIEW - 6);
    context.fillStyle = colours.lost;
    for (const { start = 0 } of scene.lost) context.fillRect(toPixel(whole, start), OVERVIEW_TOP, 1.5, OVERVIEW);
    const left = toPixel(whole, scale.from);
    const width = Math.max(4, toPixel(whole, toTime(scale, scale.width)) - left);
    context.fillStyle = colours.window;
    context.fillRect(left, OVERVIEW_TOP, width, OVERVIEW);
    context.strokeStyle = colours.accent;
    context.lineWidth = 1.5;
    context.strokeRect(left + 0.75, OVERVIEW_TOP + 0.75, Math.max(1, width - 1.5), OVERVIEW - 1.5);
}

/// The play time, over all of it.
export function paintHead(
    context: CanvasRenderingContext2D,
    scale: Scale,
    length: number,
    ms: number,
    colours: Colours,
): void {
    context.clearRect(0, 0, scale.width, HEIGHT);
    const x = toPixel(scale, ms);
    context.fillStyle = colours.accent;
    context.fillRect(x - 1, 4, 2, LOST_TOP + LOST - 4);
    context.beginPath();
    context.moveTo(x - 6, 2);
    context.lineTo(x + 6, 2);
    context.lineTo(x, 12);
    context.fill();
    context.fillRect(toPixel(wholeFilm(length, scale.width), ms) - 1, OVERVIEW_TOP, 2, OVERVIEW);
}
