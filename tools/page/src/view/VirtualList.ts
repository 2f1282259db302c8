/// A list of any length of which only the rows in the window exist.

import { h } from '../dom';
import { RowLayout } from '../model/rows';

export interface RowSource {
    count: number;
    rowHeight: number;
    /// A new, empty row.
    create(): HTMLElement;
    /// Puts the row's contents into an element that may have shown another row.
    fill(row: HTMLElement, place: number): void;
}

const EMPTY: RowSource = { count: 0, rowHeight: 1, create: () => h('div'), fill: () => undefined };

export class VirtualList {
    private source = EMPTY;
    private layout = new RowLayout(0, 1);
    private readonly rows = new Map<number, HTMLElement>();
    private readonly spares: HTMLElement[] = [];
    private readonly spacer = h('div', { class: 'list-space', role: 'presentation' });
    private isDue = false;
    /// As they were told last: to ask the box for them makes the browser lay out the page.
    private scrollTop = 0;
    private viewHeight = 0;
    /// The row to reveal once the box is seen; -1: none.
    private awaited = -1;

    /// `box` scrolls; what it holds besides, such as a header, stays.
    constructor(private readonly box: HTMLElement) {
        box.append(this.spacer);
        box.addEventListener('scroll', () => this.onScroll(), { passive: true });
        new ResizeObserver(() => this.measure()).observe(box);
    }

    show(source: RowSource): void {
        this.clear();
        this.source = source;
        this.layout = new RowLayout(source.count, source.rowHeight);
        this.spacer.style.height = `${this.layout.height}px`;
        this.box.style.setProperty('--list-height', `${this.layout.height}px`);
        this.box.scrollTop = 0;
        this.awaited = -1;
        this.measure();
        this.refresh();
    }

    get rowsInView(): number {
        return Math.max(1, Math.floor(this.viewHeight / this.source.rowHeight));
    }

    private measure(): void {
        this.viewHeight = Math.max(0, this.box.clientHeight - this.spacer.offsetTop);
        this.scrollTop = this.box.scrollTop;
        if (this.awaited >= 0 && this.viewHeight > 0) this.reveal(this.awaited);
        this.refreshSoon();
    }

    private onScroll(): void {
        this.scrollTop = this.box.scrollTop;
        this.refreshSoon();
    }

    private clear(): void {
        this.spacer.replaceChildren();
        this.rows.clear();
        this.spares.length = 0;
    }

    /// Fills the rows anew at the next frame.
    refreshSoon(): void {
        if (this.isDue) return;
        this.isDue = true;
        requestAnimationFrame(() => {
            this.isDue = false;
            this.refresh();
        });
    }

    private refresh(): void {
        const { first, count, top } = this.layout.windowAt(this.scrollTop, this.viewHeight);
        this.retire(first, first + count);
        for (let place = first; place < first + count; place += 1) {
            const row = this.rowFor(place);
            row.style.transform = `translateY(${top + (place - first) * this.source.rowHeight}px)`;
            this.source.fill(row, place);
        }
    }

    private retire(first: number, end: number): void {
        for (const [place, row] of this.rows) {
            if (place >= first && place < end) continue;
            this.rows.delete(place);
            this.spares.push(row);
            row.hidden = true;
            row.removeAttribute('id');
        }
    }

    private rowFor(place: number): HTMLElement {
        const known = this.rows.get(place);
        if (known) return known;
        const row = this.spares.pop() ?? this.newRow();
        row.hidden = false;
        this.rows.set(place, row);
        return row;
    }

    private newRow(): HTMLElement {
        const row = this.source.create();
        row.classList.add('list-row');
        row.style.height = `${this.source.rowHeight}px`;
        this.spacer.append(row);
        return row;
    }

    reveal(place: number): void {
        this.awaited = this.viewHeight > 0 ? -1 : place;
        if (this.awaited >= 0) return;
        const aim = this.layout.reveal(place, this.scrollTop, this.viewHeight);
        if (aim === this.scrollTop) return;
        this.scrollTop = aim;
        this.box.scrollTop = aim;
        this.refreshSoon();
    }
}
