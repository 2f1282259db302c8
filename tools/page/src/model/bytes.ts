/// Bytes for people, and where bytes of a file stand in its text.

import { unitTexts } from '../texts';

const SIZES: [number, string][] = [
    [1 << 30, unitTexts.sizes.gibi],
    [1 << 20, unitTexts.sizes.mebi],
    [1 << 10, unitTexts.sizes.kibi],
];

export function formatSize(bytes: number): string {
    for (const [unit, name] of SIZES) {
        if (bytes >= unit) return `${(bytes / unit).toFixed(bytes < 10 * unit ? 1 : 0)} ${name}`;
    }
    return unitTexts.bytes(bytes);
}

const hex = (value: number, digits: number): string => value.toString(16).padStart(digits, '0');

export interface HexLine {
    offset: string;
    bytes: string;
    letters: string;
}

/// Sixteen bytes a line, with their ASCII letters beside.
export function hexLines(bytes: Uint8Array, offset: number): HexLine[] {
    const lines: HexLine[] = [];
    for (let at = 0; at < bytes.length; at += 16) {
        const row = [...bytes.subarray(at, at + 16)];
        lines.push({
            offset: hex(offset + at, 8),
            bytes: row.map((byte) => hex(byte, 2)).join(' '),
            letters: row.map((byte) => (byte >= 0x20 && byte < 0x7f ? String.fromCharCode(byte) : '·')).join(''),
        });
    }
    return lines;
}

/// Bytes of one character, a surrogate pair's shared out between its halves.
function sizeOf(unit: number, encoding: string): number {
    if (/^UTF-16/i.test(encoding)) return 2;
    if (/^UTF-8/i.test(encoding)) {
        if (unit >= 0xd800 && unit < 0xe000) return 2;
        return unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3;
    }
    const isDouble = /^(GB|BIG5|SHIFT|EUC|CP9)/i.test(encoding);
    return isDouble && unit >= 0x80 ? 2 : 1;
}

/// The place in `text` of the character that `bytes` bytes stand in front of.
export function charAt(text: string, bytes: number, encoding: string): number {
    let at = 0;
    for (let passed = 0; at < text.length && passed < bytes; at += 1) passed += sizeOf(text.charCodeAt(at), encoding);
    return at;
}
