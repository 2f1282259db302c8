/// The time line: entries, overlaps, gaps and losses along the film, at any scale.

import { h } from '../../dom';
import type { Finding } from '../../engine/types';
import { FilmMap } from '../../model/filmMap';
import { Pages } from '../../model/pages';
import { following, panned, resized, toTime, wholeFilm, zoomed, type Scale } from '../../model/scale';
import { formatTime } from '../../model/times';
import { opened, type FileItem, type Session } from '../../session/Session';
import type { Player } from '../../session/Player';
import { texts } from '../../texts';
import { icon, type IconName } from '../icons';
import type { Selection } from '../Selection';
import { theme } from '../theme';
import { coloursOf, type Colours } from './colours';
import { Gestures } from './Gestures';
import { HEIGHT, LANE, paint, paintHead, RULER } from './paint';

const ZOOM_STEP = 1.6;
const KEY_STEP = 20;

export class Timeline {
    readonly element: HTMLElement;
    private readonly field: HTMLElement;
    private readonly ground = h('canvas', { 'aria-hidden': 'true' });
    private readonly head = h('canvas', { class: 'head', 'aria-hidden': 'true' });
    private scale: Scale = { from: 0, msPerPixel: 1, width: 1 };
    private item: FileItem | null = null;
    private map: FilmMap | null = null;
    private lines: Pages<string> | null = null;
    private lost: Finding[] = [];
    private colours!: Colours;
    private isDue = false;

    constructor(
        private readonly session: Session,
        private readonly player: Player,
        private readonly selection: Selection,
    ) {
        this.field = h(
            'div',
            { class: 'timeline-field', role: 'slider', tabindex: 0, 'aria-label': texts.timeline.label },
            this.ground,
            this.head,
        );
        this.field.style.height = `${HEIGHT}px`;
        this.element = h(
            'section',
            { class: 'timeline', id: 'timeline', 'aria-label': texts.timeline.section },
            this.bar(),
            this.field,
        );
        new Gestures(this.field, this);
        this.field.addEventListener('keydown', (event) => this.onKey(event));
        new ResizeObserver(() => this.resize()).observe(this.field);
        this.follow();
    }

    private bar(): HTMLElement {
        const zoom = (name: IconName, label: string, act: () => void): HTMLElement =>
            h(
                'button',
                { type: 'button', class: 'small', 'aria-label': label, title: label, onclick: act },
                icon(name),
            );
        const swatch = (kind: keyof typeof texts.timeline.legend): HTMLElement =>
            h('li', { class: kind }, texts.timeline.legend[kind]);
        return h(
            'header',
            { class: 'timeline-bar' },
            h('ul', { class: 'legend' }, swatch('entry'), swatch('marked'), swatch('lost')),
            h('span', { class: 'grow' }),
            zoom('farther', texts.timeline.farther, () => this.zoomAtHead(1 / ZOOM_STEP)),
            zoom('closer', texts.timeline.closer, () => this.zoomAtHead(ZOOM_STEP)),
            zoom('whole', texts.timeline.whole, () => this.showAll()),
        );
    }

    private follow(): void {
        const { session, player, selection } = this;
        session.current.follow(() => this.load());
        session.files.follow(() => this.takeFindings());
        player.track.follow(() => this.load());
        player.time.follow((ms) => this.showTime(ms));
        selection.entry.follow(() => this.paintSoon());
        theme.follow(() => {
            this.colours = coloursOf(document.documentElement);
            this.paintSoon();
        });
    }

    private load(): void {
        const item = this.session.current.value;
        const file = opened(item);
        const track = this.player.track.value;
        if (item === this.item && file === (this.map?.file ?? null) && track === this.map?.track) return;
        this.item = item;
        this.map = file && new FilmMap(file, track);
        this.lines = file && item && this.linesOf(item, file.count, file.isPictures);
        this.takeFindings();
        this.field.setAttribute('aria-valuemin', '0');
        this.field.setAttribute('aria-valuemax', String(this.player.length.value));
        this.showTime(this.player.time.value);
        this.showAll();
    }

    private linesOf(item: FileItem, count: number, isPictures: boolean): Pages<string> | null {
        if (isPictures) return null;
        return new Pages(
            count,
            (first, size) => this.session.ask(item, (engine, id) => engine.texts(id, first, size)),
            () => this.paintSoon(),
        );
    }

    private takeFindings(): void {
        const findings = this.session.current.value?.report?.findings ?? [];
        const lost = findings.filter(({ cost, start }) => cost === 'entries' && start !== undefined);
        if (lost.length === this.lost.length && lost[0] === this.lost[0]) return;
        this.lost = lost;
        this.paintSoon();
    }

    private showTime(ms: number): void {
        this.field.setAttribute('aria-valuenow', String(Math.floor(ms)));
        this.field.setAttribute('aria-valuetext', formatTime(ms));
        if (this.player.isPlaying.value) this.rescale(following(this.scale, ms, this.length));
        this.paintHeadNow();
    }

    private get length(): number {
        return this.player.length.value;
    }

    private rescale(scale: Scale): void {
        if (scale === this.scale) return;
        this.scale = scale;
        this.paintSoon();
    }

    private resize(): void {
        const width = Math.max(1, this.field.clientWidth);
        const ratio = window.devicePixelRatio || 1;
        for (const canvas of [this.ground, this.head]) {
            canvas.width = Math.round(width * ratio);
            canvas.height = Math.round(HEIGHT * ratio);
            canvas.getContext('2d')?.setTransform(ratio, 0, 0, ratio, 0, 0);
        }
        const isWhole = this.scale.width <= 1;
        this.scale = isWhole ? wholeFilm(this.length, width) : resized(this.scale, width, this.length);
        this.paintNow();
    }

    private showAll(): void {
        this.rescale(wholeFilm(this.length, Math.max(1, this.field.clientWidth)));
    }

    private paintSoon(): void {
        if (this.isDue) return;
        this.isDue = true;
        requestAnimationFrame(() => {
            this.isDue = false;
            this.paintNow();
        });
    }

    private paintNow(): void {
        const context = this.ground.getContext('2d');
        if (!context) return;
        if (!this.map || !this.colours) {
            context.clearRect(0, 0, this.scale.width, HEIGHT);
            return;
        }
        const { map, scale, lost, colours, length } = this;
        paint(context, {
            map,
            scale,
            lost,
            colours,
            length,
            selected: this.selection.entry.value,
            textOf: (entry) => this.lines?.get(entry),
        });
        this.paintHeadNow();
    }

    private paintHeadNow(): void {
        const context = this.head.getContext('2d');
        if (context && this.colours) paintHead(context, this.scale, this.length, this.player.time.value, this.colours);
    }

    seekTo(pixel: number): void {
        this.player.seek(toTime(this.scale, pixel));
    }

    /// A touch of an entry takes it, too.
    choose(pixel: number, y: number): void {
        const place = this.map?.placeAt(toTime(this.scale, pixel), Math.floor((y - RULER) / LANE)) ?? -1;
        if (place >= 0) this.selection.entry.value = this.map!.order[place];
    }

    zoom(factor: number, pixel: number): void {
        this.rescale(zoomed(this.scale, factor, pixel, this.length));
    }

    pan(pixels: number): void {
        this.rescale(panned(this.scale, pixels, this.length));
    }

    /// Puts the stretch around a place of the whole film.
    panToWhole(pixel: number): void {
        const middle = toTime(wholeFilm(this.length, this.scale.width), pixel);
        const from = middle - (this.scale.width * this.scale.msPerPixel) / 2;
        this.pan((from - this.scale.from) / this.scale.msPerPixel);
    }

    private zoomAtHead(factor: number): void {
        const pixel = (this.player.time.value - this.scale.from) / this.scale.msPerPixel;
        const isSeen = pixel >= 0 && pixel <= this.scale.width;
        this.zoom(factor, isSeen ? pixel : this.scale.width / 2);
    }

    private onKey(event: KeyboardEvent): void {
        if (event.altKey || event.ctrlKey || event.metaKey) return;
        const step = KEY_STEP * this.scale.msPerPixel;
        const acts: Record<string, () => void> = {
            ArrowLeft: () => this.player.move(-step),
            ArrowRight: () => this.player.move(step),
            Home: () => this.player.seek(0),
            End: () => this.player.seek(this.length),
            '+': () => this.zoomAtHead(ZOOM_STEP),
            '-': () => this.zoomAtHead(1 / ZOOM_STEP),
            '0': () => this.showAll(),
        };
        const act = acts[event.key];
        if (!act) return;
        event.preventDefault();
        event.stopPropagation();
        act();
        this.rescale(following(this.scale, this.player.time.value, this.length));
    }
}
