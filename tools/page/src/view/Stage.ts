/// The television's screen: the text or the picture at the play time, as the library answers.

import { h, setText } from '../dom';
import type { Moment, Picture } from '../engine/types';
import { opened, type Session } from '../session/Session';
import type { Player } from '../session/Player';
import { texts } from '../texts';

export class Stage {
    readonly element: HTMLElement;
    private readonly screen: HTMLElement;
    private readonly words = h('p', { class: 'stage-text', dir: 'auto' });
    private readonly canvas = h('canvas', { class: 'stage-picture', role: 'img', 'aria-label': texts.stage.picture });
    private readonly caption = h('p', { class: 'stage-caption', role: 'status' });
    /// What the canvas shows: an entry of a file with settings.
    private drawn = '';

    constructor(
        private readonly session: Session,
        player: Player,
    ) {
        this.screen = h('div', { class: 'screen', id: 'stage' }, this.canvas, this.words);
        this.element = h('section', { class: 'stage', 'aria-label': texts.stage.label }, this.screen, this.caption);
        session.settings.follow(({ surfaceWidth, surfaceHeight }) => {
            this.screen.style.setProperty('--ratio', String(surfaceWidth / surfaceHeight));
        });
        player.moment.follow((moment) => this.show(moment));
        player.isPlaying.follow((isPlaying) => this.caption.setAttribute('aria-live', isPlaying ? 'off' : 'polite'));
        this.screen.addEventListener('click', () => player.toggle());
    }

    private show(moment: Moment | null): void {
        const file = opened(this.session.current.value);
        const isShown = moment !== null && moment.shown >= 0;
        setText(this.words, isShown && !file?.isPictures ? moment.lines.join('\n') : '');
        this.screen.dataset['shown'] = isShown ? String(moment.shown) : '';
        setText(this.caption, this.captionFor(moment));
        if (isShown && file?.isPictures) void this.draw(moment.shown);
        else this.hidePicture();
    }

    private captionFor(moment: Moment | null): string {
        if (!moment) return '';
        return moment.shown >= 0 ? texts.stage.shown(moment.shown) : texts.stage.nothing(moment.why);
    }

    private hidePicture(): void {
        this.canvas.hidden = true;
        this.drawn = '';
    }

    private async draw(index: number): Promise<void> {
        const item = this.session.current.value!;
        const { surfaceWidth, surfaceHeight } = this.session.settings.value;
        const key = `${item.key} ${index} ${surfaceWidth} ${surfaceHeight} ${item.result?.id}`;
        if (this.drawn === key) return;
        this.drawn = key;
        const picture = await this.session.ask(item, (engine, id) => engine.picture(id, index));
        if (!picture || this.drawn !== key) return;
        this.canvas.hidden = false;
        this.canvas.dataset['entry'] = String(index);
        drawPicture(this.canvas, picture);
        if (picture.why) setText(this.caption, texts.stage.unseen(index, picture.why));
    }
}

/// Puts a picture where the television draws it, on a canvas of the television's size.
export function drawPicture(canvas: HTMLCanvasElement, picture: Picture): void {
    canvas.width = picture.surfaceWidth;
    canvas.height = picture.surfaceHeight;
    if (picture.width === 0 || picture.height === 0) return;
    const pixels = new ImageData(picture.width, picture.height);
    pixels.data.set(picture.rgba);
    canvas.getContext('2d')?.putImageData(pixels, picture.left, picture.top);
}
