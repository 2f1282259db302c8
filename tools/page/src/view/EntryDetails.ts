/// One entry: its text unit by unit, and its bytes in the file, when they are asked for.

import { h, replace } from '../dom';
import type { EntryDetail, Opened } from '../engine/types';
import { hexLines } from '../model/bytes';
import { shownEnd } from '../model/film';
import { formatTime } from '../model/times';
import { opened, type Session } from '../session/Session';
import { texts } from '../texts';
import type { Marks } from './Marks';
import type { Selection } from './Selection';

export class EntryDetails {
    readonly element = h('section', { class: 'entry-details', 'aria-label': texts.details.label, hidden: true });
    private isRawOpen = false;

    constructor(
        private readonly session: Session,
        private readonly selection: Selection,
        private readonly marks: Marks,
    ) {
        selection.entry.follow((index) => void this.show(index));
        session.current.follow(() => void this.show(selection.entry.value));
    }

    private async show(index: number): Promise<void> {
        const item = this.session.current.value;
        const file = opened(item);
        if (!item || !file || index < 0 || index >= file.count) {
            this.element.hidden = true;
            return;
        }
        const detail = await this.session.ask(item, (engine, id) => engine.entry(id, index));
        if (!detail || this.selection.entry.value !== index || this.session.current.value !== item) return;
        this.element.hidden = false;
        replace(
            this.element,
            this.head(file, detail),
            this.reasons(file, detail),
            this.text(file, detail),
            detail.length > 0 && this.raw(detail),
        );
    }

    private head(file: Opened, detail: EntryDetail): HTMLElement {
        const until = file.isPictures ? texts.entries.untilNext : formatTime(shownEnd(file, detail.index));
        const times = `${formatTime(detail.start)} → ${until}`;
        const link = h('button', { class: 'quiet', type: 'button' }, texts.details.line(detail.line));
        link.addEventListener('click', () => this.selection.showLine(detail.line));
        return h(
            'header',
            {},
            h('h3', {}, texts.details.title(detail.index)),
            h('span', { class: 'times' }, times),
            detail.line > 0 && link,
        );
    }

    private reasons(file: Opened, detail: EntryDetail): HTMLElement | null {
        const marks = this.marks.of(file.marks[detail.index]);
        if (marks.length === 0) return null;
        return h(
            'ul',
            { class: 'reasons' },
            ...marks.map((mark) => h('li', {}, this.marks.badge(mark), ` ${mark.meaning}`)),
        );
    }

    private text(file: Opened, detail: EntryDetail): HTMLElement | null {
        if (file.isPictures) return null;
        return h(
            'pre',
            { class: 'entry-text', dir: 'auto', tabindex: 0, 'aria-label': texts.details.text },
            detail.text,
        );
    }

    /// Dumps are made when they are opened first.
    private raw(detail: EntryDetail): HTMLElement {
        const summary = h('summary', {}, texts.details.raw(detail.length, detail.offset));
        const details = h('details', { class: 'raw' }, summary);
        const fill = (): void => {
            if (details.childElementCount === 1) details.append(...this.dumps(detail));
        };
        details.addEventListener('toggle', () => {
            this.isRawOpen = details.open;
            if (details.open) fill();
        });
        details.open = this.isRawOpen;
        if (details.open) fill();
        return details;
    }

    private dumps(detail: EntryDetail): HTMLElement[] {
        const parts = [this.dump(detail.bytes, detail.offset)];
        if (detail.bytes.length < detail.length)
            parts.push(h('p', { class: 'hint' }, texts.details.cut(detail.bytes.length)));
        if (detail.units.length > 0)
            parts.push(
                h('p', { class: 'hint' }, texts.details.units(detail.units.length, detail.wide)),
                this.units(detail),
            );
        return parts;
    }

    private dump(bytes: Uint8Array, offset: number): HTMLElement {
        const rows = hexLines(bytes, offset).map(
            ({ offset: at, bytes: row, letters }) => `${at}  ${row.padEnd(47)}  ${letters}`,
        );
        return h('pre', { class: 'dump', tabindex: 0, 'aria-label': texts.details.bytes }, rows.join('\n'));
    }

    private units({ units, wide }: EntryDetail): HTMLElement {
        const shown = Array.from(units, (unit) => unit.toString(16).padStart(wide ? 4 : 2, '0')).join(' ');
        return h('pre', { class: 'dump wrapped', tabindex: 0, 'aria-label': texts.details.unitsLabel }, shown);
    }
}
