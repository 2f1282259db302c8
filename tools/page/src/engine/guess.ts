import { analyse } from 'chardet';

/** What iconv calls the encodings that the detector names otherwise. */
const otherNames: Record<string, string> = {
    'Shift_JIS': 'SHIFT_JIS',
    'windows-874': 'CP874',
};

/** The encoding that 8-bit text looks like, as iconv names it; empty when nothing can be told. */
export function guessEncoding(bytes: Uint8Array): string {
    const best = analyse(bytes)[0];
    if (best === undefined) return '';
    return otherNames[best.name] ?? best.name.toUpperCase();
}
