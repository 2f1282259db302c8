/// The tab of the entries: search, table, and all about the chosen one.

import { h, setText } from '../dom';
import { opened, type FileItem, type Session } from '../session/Session';
import type { Player } from '../session/Player';
import { texts } from '../texts';
import { EntryDetails } from './EntryDetails';
import { EntryTable } from './EntryTable';
import { icon } from './icons';
import type { Marks } from './Marks';
import type { Selection } from './Selection';

/// So long after the last key a search begins.
const PAUSE_MS = 150;

export class EntryPanel {
    readonly element: HTMLElement;
    private readonly input: HTMLInputElement;
    private readonly hits = h('output', { class: 'hits' });
    private readonly table: EntryTable;
    private item: FileItem | null = null;
    private file: ReturnType<typeof opened> = null;
    private timer = 0;

    constructor(
        private readonly session: Session,
        player: Player,
        selection: Selection,
        marks: Marks,
    ) {
        this.table = new EntryTable(session, player, selection, marks);
        this.input = h('input', {
            type: 'search',
            id: 'search',
            placeholder: texts.entries.search,
            'aria-label': texts.entries.search,
        });
        this.input.addEventListener('input', () => this.searchSoon());
        this.input.addEventListener('keydown', (event) => this.onKey(event));
        const bar = h('div', { class: 'search-bar', role: 'search' }, icon('search'), this.input, this.hits);
        const details = new EntryDetails(session, selection, marks);
        this.element = h('div', { class: 'panel entries-panel' }, bar, this.table.element, details.element);
        session.current.follow((item) => this.load(item));
    }

    focusSearch(): void {
        this.input.focus();
        this.input.select();
    }

    private load(item: FileItem | null): void {
        const file = opened(item);
        if (item === this.item && file === this.file) return;
        this.item = item;
        this.file = file;
        this.input.value = '';
        this.input.disabled = !file || file.isPictures;
        this.showAll();
    }

    private showAll(): void {
        setText(this.hits, '');
        this.table.show(this.item, null);
    }

    private searchSoon(): void {
        clearTimeout(this.timer);
        this.timer = window.setTimeout(() => void this.search(), PAUSE_MS);
    }

    private async search(): Promise<void> {
        const words = this.input.value;
        const { item } = this;
        if (!item || words === '') {
            this.showAll();
            return;
        }
        const found = await this.session.search(item, words);
        if (!found || item !== this.item || words !== this.input.value) return;
        setText(this.hits, texts.entries.hits(found.length));
        this.table.show(item, found);
    }

    private onKey(event: KeyboardEvent): void {
        if (event.key !== 'Escape' || this.input.value === '') return;
        event.stopPropagation();
        this.input.value = '';
        this.showAll();
    }
}
