// Reads the PNG files that vxsub writes: 8 bits a channel, RGB or RGBA, not interlaced.
import assert from "node:assert/strict";
import { inflateSync } from "node:zlib";

function* chunks(bytes) {
    for (let at = 8; at < bytes.length; at += 12 + bytes.readUInt32BE(at)) {
        yield { type: bytes.toString("latin1", at + 4, at + 8), data: bytes.subarray(at + 8, at + 8 + bytes.readUInt32BE(at)) };
    }
}

function paeth(left, up, corner) {
    const guess = left + up - corner;
    const [byLeft, byUp, byCorner] = [left, up, corner].map((value) => Math.abs(guess - value));
    if (byLeft <= byUp && byLeft <= byCorner) return left;
    return byUp <= byCorner ? up : corner;
}

const predictors = [
    () => 0,
    (left) => left,
    (left, up) => up,
    (left, up) => (left + up) >> 1,
    paeth,
];

function unfilter(data, height, stride, step) {
    const pixels = Buffer.alloc(height * stride);
    for (let y = 0; y < height; ++y) {
        const predict = predictors[data[y * (stride + 1)]];
        const row = y * stride;
        for (let x = 0; x < stride; ++x) {
            const left = x >= step ? pixels[row + x - step] : 0;
            const up = y > 0 ? pixels[row - stride + x] : 0;
            const corner = x >= step && y > 0 ? pixels[row - stride + x - step] : 0;
            pixels[row + x] = data[y * (stride + 1) + 1 + x] + predict(left, up, corner);
        }
    }
    return pixels;
}

export function readPng(bytes) {
    const all = [...chunks(bytes)];
    const header = all.find(({ type }) => type === "IHDR").data;
    const [width, height] = [header.readUInt32BE(0), header.readUInt32BE(4)];
    const channels = { 2: 3, 6: 4 }[header[9]];
    assert.ok(header[8] === 8 && channels && header[12] === 0, "a kind of PNG that vxsub does not write");
    const data = inflateSync(Buffer.concat(all.filter(({ type }) => type === "IDAT").map((chunk) => chunk.data)));
    const pixels = unfilter(data, height, width * channels, channels);
    if (channels === 4) return { width, height, rgba: pixels };
    const rgba = Buffer.alloc(width * height * 4, 255);
    for (let at = 0; at < width * height; ++at) pixels.copy(rgba, at * 4, at * 3, at * 3 + 3);
    return { width, height, rgba };
}
