/// Play times in milliseconds, as the inspector writes and reads them.

import { unitTexts } from '../texts';

export const SECOND = 1000;
export const MINUTE = 60 * SECOND;
export const HOUR = 60 * MINUTE;

/// The end of an entry that has none of its own: it is shown until the next one starts.
export const OPEN_END = 0xffffffff;

const pad = (value: number, digits: number): string => String(value).padStart(digits, '0');

/// "00:01:02,500".
export function formatTime(ms: number): string {
    const whole = Math.max(0, Math.floor(ms));
    const hours = pad(Math.floor(whole / HOUR), 2);
    const minutes = pad(Math.floor(whole / MINUTE) % 60, 2);
    const seconds = pad(Math.floor(whole / SECOND) % 60, 2);
    return `${hours}:${minutes}:${seconds},${pad(whole % SECOND, 3)}`;
}

/// "3.2 s", "1 min 5 s": how long, at a glance.
export function formatLength(ms: number): string {
    const tenths = Math.round(ms / 100) / 10;
    if (ms < 10 * SECOND) return unitTexts.seconds(Number((ms / SECOND).toFixed(2)));
    if (tenths < 60) return unitTexts.seconds(tenths);
    const seconds = Math.round(ms / SECOND);
    if (seconds < 3600) return unitTexts.minutes(Math.floor(seconds / 60), seconds % 60);
    const minutes = Math.round(ms / MINUTE);
    return unitTexts.hours(Math.floor(minutes / 60), minutes % 60);
}

/// For the marks of a ruler: no more digits than the step between two marks needs.
export function formatTick(ms: number, step: number): string {
    const [clock, fraction] = formatTime(ms).split(',') as [string, string];
    const short = ms < HOUR ? clock.slice(3) : clock.replace(/^0(?=\d:)/, '');
    if (step >= SECOND) return short;
    return `${short},${step >= 100 ? fraction.slice(0, 1) : fraction}`;
}

function parseClock(text: string): number | null {
    const match = /^(?:(\d+):)?(\d+):(\d{1,2})(?:[.,](\d{1,3}))?$/.exec(text);
    if (!match) return null;
    const [, hours = '0', minutes = '0', seconds = '0', fraction = ''] = match;
    return Number(hours) * HOUR + Number(minutes) * MINUTE + Number(seconds) * SECOND + Number(fraction.padEnd(3, '0'));
}

/// Reads "61500", "61500ms", "61.5s", "1:01.5" and "00:01:01,500"; null is none of them.
export function parseTime(text: string): number | null {
    const trimmed = text.trim();
    const count = /^(\d+)(?:ms)?$/.exec(trimmed);
    if (count) return Number(count[1]);
    const seconds = /^(\d+(?:[.,]\d+)?)s$/.exec(trimmed);
    if (seconds) return Math.round(Number(seconds[1].replace(',', '.')) * SECOND);
    return parseClock(trimmed);
}
