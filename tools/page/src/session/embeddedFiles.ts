/// The files that a report brings along.

import { unpack } from '../embedded';
import type { FileIn } from '../engine/types';

const BLOCKS = 'script[type="application/octet-stream+deflate"][data-name]';

/// One that does not unpack is left out: the others are worth a look all the same.
export async function embeddedFiles(): Promise<FileIn[]> {
    const blocks = [...document.querySelectorAll<HTMLScriptElement>(BLOCKS)];
    const files = await Promise.all(blocks.map((block) => fileIn(block).catch(() => null)));
    return files.filter((file) => file !== null);
}

async function fileIn(block: HTMLScriptElement): Promise<FileIn> {
    const bytes = await unpack((block.textContent ?? '').trim());
    return { name: block.dataset['name'] ?? '', data: new Blob([bytes]) };
}
