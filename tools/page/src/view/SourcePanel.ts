/// The file as it stands: numbered lines with what is else unseen, the chosen entry's bytes marked.

import { h, replace, setText } from '../dom';
import type { EntryDetail, SourceFacts, SourceLine } from '../engine/types';
import { charAt, formatSize } from '../model/bytes';
import { Pages } from '../model/pages';
import { opened, type FileItem, type Session } from '../session/Session';
import { texts } from '../texts';
import type { Selection } from './Selection';
import { pieces } from './unseen';
import { VirtualList } from './VirtualList';

const ROW_HEIGHT = 22;

type Range = Pick<EntryDetail, 'index' | 'offset' | 'length' | 'line'>;

export class SourcePanel {
    readonly element: HTMLElement;
    private readonly facts = h('p', { class: 'source-facts' });
    private readonly box = h('div', {
        class: 'source-lines',
        tabindex: 0,
        role: 'list',
        'aria-label': texts.source.label,
    });
    private readonly list = new VirtualList(this.box);
    private item: FileItem | null = null;
    private result: FileItem['result'] = null;
    private about: SourceFacts | null = null;
    private lines: Pages<SourceLine> | null = null;
    private range: Range | null = null;
    private line = 0;

    constructor(
        private readonly session: Session,
        private readonly selection: Selection,
    ) {
        this.element = h('div', { class: 'panel source' }, this.facts, this.box);
        session.current.follow(() => void this.load());
        selection.tab.follow(() => void this.load());
        selection.entry.follow((index) => void this.markEntry(index));
        selection.line.follow((line) => this.goTo(line));
    }

    private get isSeen(): boolean {
        return this.selection.tab.value === 'source';
    }

    /// Reads nothing before it is looked at.
    private async load(): Promise<void> {
        const item = this.session.current.value;
        if (!this.isSeen || (item === this.item && item?.result === this.result)) return;
        this.item = item;
        this.result = item?.result ?? null;
        const about = item && (await this.session.ask(item, (engine, id) => engine.sourceFacts(id)));
        if (item !== this.item) return;
        this.about = about;
        this.showFacts();
        this.showLines(item);
        await this.markEntry(this.selection.entry.value);
        this.goTo(this.selection.line.value);
    }

    private showFacts(): void {
        const { about } = this;
        if (!about || !this.item) {
            setText(this.facts, texts.source.none);
            return;
        }
        const mark = h('span', { class: 'tag' }, about.mark ? texts.source.mark(about.mark) : texts.source.noMark);
        const legend = h('span', { class: 'hint' }, texts.source.legend);
        const words = `${about.encoding} · ${texts.source.lines(about.lines)} · ${formatSize(this.item.size)}`;
        replace(this.facts, h('span', {}, words), mark, legend);
    }

    private showLines(item: FileItem | null): void {
        const count = this.about?.lines ?? 0;
        this.lines =
            item &&
            new Pages(
                count,
                (first, size) => this.session.ask(item, (engine, id) => engine.source(id, first + 1, size)),
                () => this.list.refreshSoon(),
            );
        this.list.show({
            count,
            rowHeight: ROW_HEIGHT,
            create: () => this.create(),
            fill: (row, place) => this.fill(row, place),
        });
    }

    private create(): HTMLElement {
        const number = h('span', { class: 'number', 'aria-hidden': 'true' });
        return h(
            'div',
            { class: 'source-line', role: 'listitem' },
            number,
            h('span', { class: 'code', dir: 'auto' }),
            h('span', { class: 'ending', 'aria-hidden': 'true' }),
        );
    }

    private fill(row: HTMLElement, place: number): void {
        const line = this.lines?.get(place);
        const [number, code, ending] = [...row.children] as [HTMLElement, HTMLElement, HTMLElement];
        setText(number, String(place + 1));
        row.setAttribute('aria-setsize', String(this.about?.lines ?? 0));
        row.setAttribute('aria-posinset', String(place + 1));
        row.classList.toggle('is-aim', place + 1 === this.line);
        const marked = line ? this.markedIn(line) : null;
        const key = line ? `${line.number} ${marked?.join()} ${line.text}` : '';
        if (row.dataset['shown'] === key) return;
        row.dataset['shown'] = key;
        code.replaceChildren(...(line ? pieces(line.text, marked) : []));
        if (line?.number === 1 && this.about?.mark)
            code.prepend(h('span', { class: 'unseen-mark' }, texts.source.markSign));
        setText(ending, line ? texts.source.endings[line.ending] : '');
    }

    /// The characters of a line that belong to the chosen entry: from the first until just before the second.
    private markedIn(line: SourceLine): [number, number] | null {
        const { range, about } = this;
        if (!range || !about || range.offset >= line.offset + line.length || range.offset + range.length <= line.offset)
            return null;
        const place = (offset: number): number => charAt(line.text, Math.max(0, offset - line.offset), about.encoding);
        return [place(range.offset), place(range.offset + range.length)];
    }

    private async markEntry(index: number): Promise<void> {
        this.range = null;
        const item = this.session.current.value;
        const file = opened(item);
        const isKnown = this.isSeen && item && file && !file.isPictures && index >= 0 && index < file.count;
        const range = isKnown ? await this.session.ask(item, (engine, id) => engine.entry(id, index)) : null;
        if (item !== this.session.current.value || index !== this.selection.entry.value) return;
        this.range = range;
        this.list.refreshSoon();
        if (this.range && this.selection.line.value === 0) this.list.reveal(Math.max(0, this.range.line - 1));
    }

    private goTo(line: number): void {
        this.line = line;
        if (line > 0 && this.about && this.isSeen) this.list.reveal(line - 1);
        this.list.refreshSoon(); // also of lines that are in sight
    }
}
