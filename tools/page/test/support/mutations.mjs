// Files that nobody would write: bytes flipped, cut, doubled, moved, and put together from others.

/** Random numbers that are the same each time. */
export class Chance {
    constructor(seed) {
        this.state = seed >>> 0;
    }

    /** From 0 to `end`, without it. */
    below(end) {
        this.state = (this.state + 0x6d2b79f5) >>> 0;
        let value = Math.imul(this.state ^ (this.state >>> 15), this.state | 1);
        value ^= value + Math.imul(value ^ (value >>> 7), value | 61);
        return ((value ^ (value >>> 14)) >>> 0) % Math.max(1, end);
    }
}

const pieces = [
    "\r", "\n", "\r\n\r\n", "\t", "\0", "-->", ":", ",", "{", "}", "<", ">", "[", "]", "|", "&#",
    "99999999999", "-1", "\xef\xbb\xbf", "\xff\xfe",
];

const changes = [
    (bytes, chance) => {
        const copy = Buffer.from(bytes);
        if (copy.length > 0) copy[chance.below(copy.length)] ^= 1 << chance.below(8);
        return copy;
    },
    (bytes, chance) => bytes.subarray(0, chance.below(bytes.length + 1)),
    (bytes, chance) => {
        const [from, length] = [chance.below(bytes.length), chance.below(64)];
        return Buffer.concat([bytes.subarray(0, from), bytes.subarray(from + length)]);
    },
    (bytes, chance) => {
        const [at, from, length] = [chance.below(bytes.length), chance.below(bytes.length), chance.below(256)];
        return Buffer.concat([bytes.subarray(0, at), bytes.subarray(from, from + length), bytes.subarray(at)]);
    },
    (bytes, chance) => {
        const at = chance.below(bytes.length + 1);
        const piece = Buffer.from(pieces[chance.below(pieces.length)], "latin1");
        return Buffer.concat([bytes.subarray(0, at), piece, bytes.subarray(at)]);
    },
    (bytes, chance, sources) => {
        const other = sources[chance.below(sources.length)].bytes;
        return Buffer.concat([bytes.subarray(0, chance.below(bytes.length)), other.subarray(chance.below(other.length))]);
    },
];

/** `bytes` after a few changes; `sources` lend parts. */
export function mutated(bytes, chance, sources) {
    let copy = bytes;
    for (let left = 1 + chance.below(8); left > 0; --left) {
        copy = changes[chance.below(changes.length)](copy, chance, sources);
    }
    return copy;
}
