/// Every entry of a file, in rows that are made as they come into sight.

import { h, setText } from '../dom';
import type { Opened } from '../engine/types';
import { Pages } from '../model/pages';
import { shownEnd } from '../model/film';
import { formatLength, formatTime, OPEN_END } from '../model/times';
import { opened, type FileItem, type Session } from '../session/Session';
import type { Player } from '../session/Player';
import { texts } from '../texts';
import type { Marks } from './Marks';
import type { Selection } from './Selection';
import { VirtualList } from './VirtualList';

const ROW_HEIGHT = 30;

const COLUMNS = ['index', 'start', 'end', 'length', 'marks', 'text'] as const;

export class EntryTable {
    readonly element: HTMLElement;
    private readonly grid: HTMLElement;
    private readonly empty = h('p', { class: 'empty', hidden: true });
    private readonly list: VirtualList;
    private item: FileItem | null = null;
    private file: Opened | null = null;
    private lines: Pages<string> | null = null;
    /// The entries that a search has found; null: all.
    private found: Uint32Array | null = null;
    /// What the television shows at the play time.
    private shown = -1;

    constructor(
        private readonly session: Session,
        private readonly player: Player,
        private readonly selection: Selection,
        private readonly marks: Marks,
    ) {
        this.grid = h('div', { class: 'entry-grid', role: 'grid', tabindex: 0, 'aria-label': texts.entries.label });
        this.grid.append(this.header());
        this.element = h('div', { class: 'entry-table' }, this.grid, this.empty);
        this.list = new VirtualList(this.grid);
        this.grid.addEventListener('click', (event) => this.onClick(event));
        this.grid.addEventListener('keydown', (event) => this.onKey(event));
        selection.entry.follow((index) => this.onSelection(index));
        player.moment.follow(() => this.followPlay());
        marks.all.follow(() => this.list.refreshSoon());
    }

    private header(): HTMLElement {
        const cells = COLUMNS.map((name) =>
            h('span', { role: 'columnheader', class: name }, texts.entries.columns[name]),
        );
        return h('div', { role: 'row', class: 'entry-head', 'aria-rowindex': 1 }, ...cells);
    }

    /// Shows a file's entries, all of them or those that a search has found.
    show(item: FileItem | null, found: Uint32Array | null): void {
        if (item !== this.item || opened(item) !== this.file) this.load(item);
        this.found = found;
        const count = this.count;
        this.grid.setAttribute('aria-rowcount', String(count + 1));
        this.empty.hidden = count > 0;
        setText(this.empty, found ? texts.entries.nothingFound : texts.entries.none);
        this.list.show({
            count,
            rowHeight: ROW_HEIGHT,
            create: () => this.createRow(),
            fill: (row, place) => this.fill(row, place),
        });
        this.onSelection(this.selection.entry.value);
    }

    private load(item: FileItem | null): void {
        this.item = item;
        this.file = opened(item);
        if (!item || !this.file) return;
        this.lines = new Pages(
            this.file.count,
            (first, count) => this.session.ask(item, (engine, id) => engine.texts(id, first, count)),
            () => this.list.refreshSoon(),
        );
    }

    private get count(): number {
        return this.found?.length ?? this.file?.count ?? 0;
    }

    private entryAt(place: number): number {
        return this.found ? this.found[place] : place;
    }

    private placeOf(entry: number): number {
        return this.found ? this.found.indexOf(entry) : entry;
    }

    private createRow(): HTMLElement {
        return h('div', { role: 'row' }, ...COLUMNS.map((name) => h('span', { role: 'gridcell', class: name })));
    }

    private fill(row: HTMLElement, place: number): void {
        const { file } = this;
        if (!file) return;
        const entry = this.entryAt(place);
        const line = file.isPictures ? texts.entries.picture : this.lines?.get(entry);
        this.mark(row, place, entry);
        this.fillCells(row, file, entry, line);
    }

    private mark(row: HTMLElement, place: number, entry: number): void {
        row.id = `entry-row-${entry}`;
        row.dataset['index'] = String(entry);
        row.setAttribute('aria-rowindex', String(place + 2));
        row.setAttribute('aria-selected', String(entry === this.selection.entry.value));
        row.classList.toggle('is-shown', entry === this.shown);
        row.classList.toggle('is-odd', place % 2 === 1);
    }

    private fillCells(row: HTMLElement, file: Opened, entry: number, line: string | undefined): void {
        const [index, start, end, length, marks, text] = [...row.children] as HTMLElement[];
        const from = file.starts[entry];
        const to = shownEnd(file, entry);
        setText(index!, String(entry));
        setText(start!, formatTime(from));
        setText(end!, file.ends[entry] === OPEN_END ? texts.entries.untilNext : formatTime(to));
        setText(length!, to > from ? formatLength(to - from) : '–');
        this.marks.fill(marks!, file.marks[entry]);
        setText(text!, line ?? '');
        text!.classList.toggle('is-coming', line === undefined);
    }

    private onClick(event: MouseEvent): void {
        const row = (event.target as Element).closest<HTMLElement>('[data-index]');
        if (row) this.selection.choose(Number(row.dataset['index']));
    }

    private onKey(event: KeyboardEvent): void {
        const here = this.placeOf(this.selection.entry.value);
        const page = this.list.rowsInView;
        const targets: Record<string, number> = {
            ArrowDown: here + 1,
            ArrowUp: here - 1,
            PageDown: here + page,
            PageUp: here - page,
            Home: 0,
            End: this.count - 1,
        };
        const target = targets[event.key];
        if (target === undefined || this.count === 0 || event.altKey || event.ctrlKey || event.metaKey) return;
        event.preventDefault();
        event.stopPropagation();
        this.selection.choose(this.entryAt(Math.min(Math.max(target, 0), this.count - 1)));
    }

    private onSelection(entry: number): void {
        this.list.refreshSoon();
        const place = entry < 0 ? -1 : this.placeOf(entry);
        if (place < 0 || place >= this.count) {
            this.grid.removeAttribute('aria-activedescendant');
            return;
        }
        this.list.reveal(place);
        this.grid.setAttribute('aria-activedescendant', `entry-row-${entry}`);
    }

    /// While the film runs, the rows go along.
    private followPlay(): void {
        const shown = this.player.moment.value?.shown ?? -1;
        if (shown === this.shown) return;
        this.shown = shown;
        this.list.refreshSoon();
        if (!this.player.isPlaying.value || shown < 0) return;
        const place = this.placeOf(shown);
        if (place >= 0 && place < this.count) this.list.reveal(place);
    }
}
