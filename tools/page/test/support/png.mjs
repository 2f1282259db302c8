// PNG files as the program writes them: colour map or RGBA, in rows.
import { inflateSync } from "node:zlib";

function chunksOf(file) {
    const chunks = new Map();
    for (let at = 8; at < file.length; ) {
        const size = file.readUInt32BE(at);
        const name = file.toString("latin1", at + 4, at + 8);
        const data = file.subarray(at + 8, at + 8 + size);
        chunks.set(name, Buffer.concat([chunks.get(name) ?? Buffer.alloc(0), data]));
        at += size + 12;
    }
    return chunks;
}

function paeth(left, above, corner) {
    const guess = left + above - corner;
    const [toLeft, toAbove, toCorner] = [left, above, corner].map((value) => Math.abs(guess - value));
    if (toLeft <= toAbove && toLeft <= toCorner) return left;
    return toAbove <= toCorner ? above : corner;
}

/** Takes the filters off, row by row. */
function unfiltered(data, rowBytes, height, step) {
    const out = new Uint8Array(rowBytes * height);
    for (let y = 0; y < height; ++y) {
        const filter = data[y * (rowBytes + 1)];
        for (let x = 0; x < rowBytes; ++x) {
            const at = y * rowBytes + x;
            const left = x >= step ? out[at - step] : 0;
            const above = y > 0 ? out[at - rowBytes] : 0;
            const corner = x >= step && y > 0 ? out[at - rowBytes - step] : 0;
            const guess = [0, left, above, (left + above) >> 1, paeth(left, above, corner)][filter];
            out[at] = data[y * (rowBytes + 1) + 1 + x] + guess;
        }
    }
    return out;
}

function fromColourMap(rows, depth, width, height, chunks) {
    const [map, alphas] = [chunks.get("PLTE"), chunks.get("tRNS") ?? Buffer.alloc(0)];
    const rowBytes = Math.ceil((width * depth) / 8);
    const rgba = new Uint8Array(width * height * 4);
    for (let i = 0; i < width * height; ++i) {
        const bit = (i % width) * depth;
        const byte = rows[Math.floor(i / width) * rowBytes + (bit >> 3)];
        const colour = (byte >> (8 - depth - (bit & 7))) & ((1 << depth) - 1);
        rgba.set(map.subarray(colour * 3, colour * 3 + 3), i * 4);
        rgba[i * 4 + 3] = alphas[colour] ?? 255;
    }
    return rgba;
}

/** {width, height, rgba} */
export function readPng(file) {
    const chunks = chunksOf(file);
    const head = chunks.get("IHDR");
    const [width, height, depth, kind] = [head.readUInt32BE(0), head.readUInt32BE(4), head[8], head[9]];
    if (kind !== 3 && !(kind === 6 && depth === 8)) throw new Error(`a PNG of kind ${kind}, depth ${depth}`);
    const rowBytes = kind === 6 ? width * 4 : Math.ceil((width * depth) / 8);
    const rows = unfiltered(inflateSync(chunks.get("IDAT")), rowBytes, height, kind === 6 ? 4 : 1);
    return { width, height, rgba: kind === 6 ? rows : fromColourMap(rows, depth, width, height, chunks) };
}
