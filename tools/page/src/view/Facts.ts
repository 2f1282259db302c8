/// What the library takes the file for.

import { h, replace } from '../dom';
import type { Opened } from '../engine/types';
import { formatSize } from '../model/bytes';
import { formatTime, OPEN_END } from '../model/times';
import { opened, type FileItem, type Session } from '../session/Session';
import { texts } from '../texts';

export class Facts {
    readonly element = h('dl', { class: 'facts', 'aria-label': texts.facts.label });
    private shown: FileItem['result'] = null;

    constructor(session: Session) {
        session.current.follow((item) => this.show(item));
    }

    private show(item: FileItem | null): void {
        if (item && item.result === this.shown) return;
        this.shown = item?.result ?? null;
        const file = opened(item);
        const rows = file ? rowsOf(file) : [];
        replace(this.element, ...rows.map(([name, value]) => h('div', {}, h('dt', {}, name), h('dd', {}, value))));
    }
}

function rowsOf(file: Opened): [string, string][] {
    const { facts } = texts;
    const rows: [string, string][] = [
        [facts.format, file.formatName],
        [facts.encoding, file.encoding],
        [facts.reading, file.reading],
        [facts.frameRate, file.frameRate],
        [facts.entries, texts.entries.count(file.count)],
        [facts.span, spanOf(file)],
        [facts.size, sizeOf(file)],
        [facts.tracks, file.tracks.length > 1 ? file.tracks.map(({ languageName }) => languageName).join(', ') : ''],
    ];
    return rows.filter(([, value]) => value !== '');
}

function spanOf({ count, starts, ends }: Opened): string {
    if (count === 0) return '';
    let first = starts[0];
    let last = 0;
    for (let index = 0; index < count; index += 1) {
        first = Math.min(first, starts[index]);
        last = Math.max(last, ends[index] === OPEN_END ? starts[index] : ends[index]);
    }
    return `${formatTime(first)} – ${formatTime(last)}`;
}

function sizeOf({ size, pictureBytes }: Opened): string {
    return pictureBytes > 0 ? texts.facts.pair(formatSize(size), formatSize(pictureBytes)) : formatSize(size);
}
