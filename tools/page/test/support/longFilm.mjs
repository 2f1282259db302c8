// A film of 32 MiB.
import { writeFileSync } from "node:fs";

const every = 700;
const lasts = 600;

/** The millisecond in the middle of an entry; between two entries nothing is shown. */
export const middleOf = (entry) => entry * every + lasts / 2;

/** Writes it as SubRip; gives the number of its entries, whose texts are "Line 0 of a very long film" and so on. */
export function writeLong(path) {
    const pad = (number, digits) => String(number).padStart(digits, "0");
    const part = (ms, unit, most) => pad(Math.floor(ms / unit) % most, 2);
    const clock = (ms) => `${part(ms, 3600000, 100)}:${part(ms, 60000, 60)}:${part(ms, 1000, 60)},${pad(ms % 1000, 3)}`;
    const entries = [];
    for (let size = 0; size < 32 << 20; size += entries.at(-1).length) {
        const [number, start] = [entries.length, entries.length * every];
        const times = `${clock(start)} --> ${clock(start + lasts)}`;
        entries.push(`${number + 1}\r\n${times}\r\nLine ${number} of a very long film\r\n\r\n`);
    }
    writeFileSync(path, entries.join(""));
    return entries.length;
}
