/// The pictures of a VobSub pair: all at a glance, the palette, and how the chosen one is drawn.

import { h, replace, setText } from '../dom';
import type { Opened, Picture } from '../engine/types';
import { formatTime } from '../model/times';
import { opened, type FileItem, type Session } from '../session/Session';
import { texts } from '../texts';
import type { Selection } from './Selection';
import { VirtualList } from './VirtualList';

/// The least width of a cell, and its shape: the lower part of a screen.
const CELL_WIDTH = 210;
const CELL_RATIO = 0.36;
/// A cell is as wide as this part of the television, so that all pictures are to one scale.
const CELL_SHARE = 0.5;
const CAPTION = 26;
const GAP = 10;
/// Small pictures that are kept.
const KEEP = 400;

export class PicturesPanel {
    readonly element: HTMLElement;
    private readonly facts = h('div', { class: 'picture-facts' });
    private readonly box = h('div', { class: 'sheet', role: 'list', tabindex: 0, 'aria-label': texts.pictures.sheet });
    private readonly list = new VirtualList(this.box);
    private file: Opened | null = null;
    private item: FileItem | null = null;
    private columns = 0;
    private rowHeight = 0;
    private readonly small = new Map<number, HTMLElement | null>();

    constructor(
        private readonly session: Session,
        private readonly selection: Selection,
    ) {
        this.element = h('div', { class: 'panel pictures' }, this.facts, this.box);
        session.current.follow(() => this.load());
        selection.tab.follow(() => this.load());
        selection.entry.follow((index) => this.onSelection(index));
        new ResizeObserver(() => this.relay()).observe(this.box);
    }

    private load(): void {
        const item = this.session.current.value;
        const file = opened(item);
        if (file === this.file || this.selection.tab.value !== 'pictures') return;
        this.item = item;
        this.file = file?.isPictures ? file : null;
        this.small.clear();
        this.columns = 0;
        replace(
            this.facts,
            ...(this.file ? this.factsOf(this.file) : [h('p', { class: 'empty' }, texts.pictures.none)]),
        );
        this.relay();
    }

    private factsOf({ vobSub, count, encoding }: Opened): HTMLElement[] {
        const words = vobSub
            ? texts.pictures.frame(vobSub.frameWidth, vobSub.frameHeight, vobSub.originX, vobSub.originY)
            : '';
        const line = h('p', {}, [texts.pictures.count(count), encoding, words].filter(Boolean).join(' · '));
        return vobSub && vobSub.palette.length > 0 ? [line, this.palette(vobSub.palette)] : [line];
    }

    private palette(colours: number[]): HTMLElement {
        const list = h('ul', { class: 'palette', 'aria-label': texts.pictures.palette });
        colours.forEach((colour, place) => {
            const code = colour.toString(16).padStart(6, '0');
            const swatch = h('span', { class: 'swatch', 'aria-hidden': 'true' });
            swatch.style.background = `#${code}`;
            list.append(h('li', { title: texts.pictures.colour(place, code) }, swatch, h('code', {}, code)));
        });
        return list;
    }

    /// As many beside each other as there is room for.
    private relay(): void {
        if (this.selection.tab.value !== 'pictures') return;
        const width = this.box.clientWidth - GAP;
        const columns = Math.max(1, Math.floor(width / (CELL_WIDTH + GAP)));
        const rowHeight = Math.round((width / columns - GAP) * CELL_RATIO) + CAPTION + GAP;
        if (columns === this.columns && rowHeight === this.rowHeight) return;
        this.columns = columns;
        this.rowHeight = rowHeight;
        this.small.clear();
        this.list.show({
            count: Math.ceil((this.file?.count ?? 0) / columns),
            rowHeight,
            create: () => this.createRow(),
            fill: (row, place) => this.fill(row, place),
        });
    }

    private createRow(): HTMLElement {
        const row = h('div', { class: 'sheet-row', role: 'presentation' });
        for (let column = 0; column < this.columns; column += 1) row.append(this.createCell());
        return row;
    }

    private createCell(): HTMLElement {
        const choose = h(
            'button',
            { type: 'button', class: 'cell' },
            h('span', { class: 'thumb' }),
            h('span', { class: 'cell-caption' }),
        );
        const cell = h('div', { role: 'listitem' }, choose);
        choose.addEventListener('click', () => this.selection.choose(Number(cell.dataset['index'])));
        return cell;
    }

    private fill(row: HTMLElement, place: number): void {
        [...row.children].forEach((cell, column) => this.fillCell(cell as HTMLElement, place * this.columns + column));
    }

    private fillCell(cell: HTMLElement, index: number): void {
        const { file } = this;
        cell.hidden = !file || index >= file.count;
        if (!file || cell.hidden) return;
        cell.dataset['index'] = String(index);
        const choose = cell.firstElementChild as HTMLElement;
        const [thumb, caption] = [...choose.children] as [HTMLElement, HTMLElement];
        choose.setAttribute('aria-pressed', String(index === this.selection.entry.value));
        setText(caption, `${index} · ${formatTime(file.starts[index])}`);
        const small = this.thumbOf(index);
        if (small) thumb.replaceChildren(small);
        else thumb.replaceChildren();
    }

    private thumbOf(index: number): HTMLElement | null {
        const known = this.small.get(index);
        if (known === undefined) void this.drawThumb(index);
        return known ?? null;
    }

    private async drawThumb(index: number): Promise<void> {
        const { item, file } = this;
        this.small.set(index, null);
        const picture = item && (await this.session.ask(item, (engine, id) => engine.picture(id, index)));
        if (!picture || file !== this.file || this.small.get(index) !== null) return;
        const isSeen = picture.width > 0 && picture.height > 0;
        const height = this.rowHeight - CAPTION - GAP;
        this.small.set(index, isSeen ? reduced(picture, height) : h('span', { class: 'why' }, picture.why));
        this.dropOldest();
        this.list.refreshSoon();
    }

    private dropOldest(): void {
        for (const [index, canvas] of this.small) {
            if (this.small.size <= KEEP) return;
            if (canvas) this.small.delete(index);
        }
    }

    private onSelection(index: number): void {
        this.list.refreshSoon();
        if (index >= 0 && this.columns > 0 && this.selection.tab.value === 'pictures')
            this.list.reveal(Math.floor(index / this.columns));
    }
}

/// A picture in a cell, smaller than the others only when it is too large for it.
function reduced(picture: Picture, cellHeight: number): HTMLCanvasElement {
    const ratio = window.devicePixelRatio || 1;
    const label = texts.pictures.one(picture.width, picture.height, picture.left, picture.top);
    const small = h('canvas', { role: 'img', 'aria-label': label });
    small.height = Math.round(cellHeight * ratio);
    small.width = Math.round(small.height / CELL_RATIO);
    const { width, height } = picture;
    const scale = Math.min(
        small.width / (picture.surfaceWidth * CELL_SHARE),
        small.width / width,
        small.height / height,
    );
    const context = small.getContext('2d')!;
    context.imageSmoothingQuality = 'high';
    const place = [(small.width - width * scale) / 2, (small.height - height * scale) / 2] as const;
    context.drawImage(cutOut(picture), ...place, width * scale, height * scale);
    return small;
}

function cutOut({ width, height, rgba }: Picture): HTMLCanvasElement {
    const canvas = h('canvas', { width, height });
    const pixels = new ImageData(width, height);
    pixels.data.set(rgba);
    canvas.getContext('2d')!.putImageData(pixels, 0, 0);
    return canvas;
}
