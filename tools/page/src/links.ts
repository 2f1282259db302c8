/// Links into the page: `#file=movie.srt&entry=12`, or `&time=61500`.

export interface Place {
    file: string | null;
    entry: number | null;
    time: number | null;
}

const whole = (text: string | null): number | null => (text !== null && /^\d+$/.test(text) ? Number(text) : null);

export function readPlace(hash: string): Place {
    const parameters = new URLSearchParams(hash.replace(/^#/, ''));
    return { file: parameters.get('file'), entry: whole(parameters.get('entry')), time: whole(parameters.get('time')) };
}

export function writePlace(file: string, entry: number): string {
    const name = encodeURIComponent(file);
    return entry >= 0 ? `#file=${name}&entry=${entry}` : `#file=${name}`;
}
