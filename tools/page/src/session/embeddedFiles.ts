/// The files that a report brings along.

import { unpack } from '../embedded';
import type { FileIn } from '../engine/types';

const BLOCKS = 'script[type="application/octet-stream+deflate"][data-name]';

export interface EmbeddedFiles {
    files: FileIn[];
    /// Names of those that do not unpack: the others are worth a look all the same.
    damaged: string[];
}

export async function embeddedFiles(): Promise<EmbeddedFiles> {
    const found: EmbeddedFiles = { files: [], damaged: [] };
    for (const block of document.querySelectorAll<HTMLScriptElement>(BLOCKS)) {
        const name = block.dataset['name'] ?? '';
        try {
            const bytes = await unpack((block.textContent ?? '').trim());
            found.files.push({ name, data: new Blob([bytes]) });
        } catch {
            found.damaged.push(name);
        }
    }
    return found;
}
