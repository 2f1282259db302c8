/// Play, pause, speed and place: the buttons under the screen.

import { h, setText } from '../dom';
import { orderByStart, firstFrom } from '../model/film';
import { formatTime, parseTime, SECOND } from '../model/times';
import { opened, type Session } from '../session/Session';
import { SPEEDS, type Player } from '../session/Player';
import { texts } from '../texts';
import { icon, type IconName } from './icons';
import type { Selection } from './Selection';

function button(name: IconName, label: string, onclick: () => void): HTMLButtonElement {
    return h('button', { type: 'button', class: 'round', 'aria-label': label, title: label, onclick }, icon(name));
}

export class Transport {
    readonly element: HTMLElement;
    private readonly play: HTMLButtonElement;
    private readonly scrub: HTMLInputElement;
    private readonly clock: HTMLInputElement;
    private readonly length = h('span', { class: 'length' });
    private readonly track: HTMLSelectElement;
    private readonly speed: HTMLSelectElement;

    constructor(
        private readonly session: Session,
        private readonly player: Player,
        private readonly selection: Selection,
    ) {
        this.play = button('play', texts.transport.play, () => player.toggle());
        this.play.classList.add('primary');
        this.scrub = h('input', { type: 'range', id: 'scrub', min: 0, step: 1, 'aria-label': texts.transport.time });
        this.scrub.addEventListener('input', () => player.seek(Number(this.scrub.value)));
        this.clock = h('input', {
            class: 'clock',
            'aria-label': texts.transport.goTo,
            title: texts.transport.forms,
            spellcheck: 'false',
        });
        this.clock.addEventListener('change', () => this.goTo());
        this.speed = this.speedChoice();
        this.track = h('select', {
            class: 'track',
            'aria-label': texts.transport.track,
            onchange: () => this.chooseTrack(),
        });
        this.element = h(
            'div',
            { class: 'transport', role: 'group', 'aria-label': texts.transport.label },
            this.scrub,
            this.buttons(),
        );
        this.follow();
    }

    private buttons(): HTMLElement {
        const time = h('span', { class: 'time' }, this.clock, this.length);
        return h(
            'div',
            { class: 'transport-row' },
            button('previous', texts.transport.previous, () => this.step(-1)),
            button('back', texts.transport.back, () => this.player.move(-5 * SECOND)),
            this.play,
            button('forward', texts.transport.forward, () => this.player.move(5 * SECOND)),
            button('next', texts.transport.next, () => this.step(1)),
            time,
            h('span', { class: 'grow' }),
            this.track,
            this.speed,
        );
    }

    private speedChoice(): HTMLSelectElement {
        const options = SPEEDS.map((speed) => h('option', { value: speed, selected: speed === 1 }, `${speed}×`));
        const select = h('select', { 'aria-label': texts.transport.speed, title: texts.transport.speed }, ...options);
        select.addEventListener('change', () => (this.player.speed.value = Number(select.value)));
        return select;
    }

    private follow(): void {
        const { player } = this;
        player.time.follow((ms) => this.showTime(ms));
        player.length.follow((ms) => {
            this.scrub.max = String(ms);
            setText(this.length, `/ ${formatTime(ms)}`);
            this.showTime(player.time.value);
        });
        player.isPlaying.follow((isPlaying) => this.showPlaying(isPlaying));
        player.speed.follow((speed) => (this.speed.value = String(speed)));
        player.track.follow((track) => (this.track.value = String(track)));
        this.session.current.follow(() => this.showTracks());
    }

    private showTime(ms: number): void {
        this.scrub.value = String(Math.floor(ms));
        this.scrub.setAttribute('aria-valuetext', formatTime(ms));
        this.scrub.style.setProperty('--done', `${(100 * ms) / Math.max(1, this.player.length.value)}%`);
        if (document.activeElement !== this.clock) this.clock.value = formatTime(ms);
    }

    private showPlaying(isPlaying: boolean): void {
        const label = isPlaying ? texts.transport.pause : texts.transport.play;
        this.play.replaceChildren(icon(isPlaying ? 'pause' : 'play'));
        this.play.setAttribute('aria-label', label);
        this.play.title = label;
    }

    private showTracks(): void {
        const tracks = opened(this.session.current.value)?.tracks ?? [];
        this.track.hidden = tracks.length < 2;
        this.track.replaceChildren(
            ...tracks.map((track, at) => h('option', { value: at }, texts.transport.trackName(at, track.languageName))),
        );
        this.track.value = String(this.player.track.value);
    }

    private chooseTrack(): void {
        this.player.track.value = Number(this.track.value);
    }

    private goTo(): void {
        const ms = parseTime(this.clock.value);
        if (ms !== null) this.player.seek(ms);
        this.clock.setAttribute('aria-invalid', String(ms === null));
        this.clock.blur();
        this.showTime(this.player.time.value);
    }

    /// To the entry of this track that starts next, or that started before.
    step(by: 1 | -1): void {
        const file = opened(this.session.current.value);
        const track = file?.tracks[this.player.track.value];
        if (!file || !track) return;
        const order = orderByStart(file.starts, track.first, track.end);
        const time = Math.floor(this.player.time.value);
        const place = by > 0 ? firstFrom(file.starts, order, time + 1) : firstFrom(file.starts, order, time) - 1;
        if (place >= 0 && place < order.length) this.selection.choose(order[place]);
    }
}
