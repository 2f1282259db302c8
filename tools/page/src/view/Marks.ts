/// The marks that an entry carries when it is not shown as its times say.

import { h } from '../dom';
import type { Vocabulary } from '../engine/types';
import { Signal } from '../signal';

type Mark = Vocabulary['marks'][number];

export class Marks {
    readonly all = new Signal<Mark[]>([]);

    of(bits: number): Mark[] {
        return this.all.value.filter((_, bit) => (bits >> bit) & 1);
    }

    fill(cell: HTMLElement, bits: number): void {
        const key = String(bits) + String(this.all.value.length);
        if (cell.dataset['bits'] === key) return;
        cell.dataset['bits'] = key;
        cell.replaceChildren(...this.of(bits).map((mark) => this.badge(mark)));
    }

    badge(mark: Mark): HTMLElement {
        const letter = h('span', { 'aria-hidden': 'true' }, mark.letter);
        return h(
            'span',
            { class: `mark mark-${mark.word}`, title: mark.meaning },
            letter,
            h('span', { class: 'unseen' }, mark.word),
        );
    }
}
