/// Where files come in: by a drop anywhere on the page, by the chooser, by pasting.

import { h } from '../dom';
import type { FileIn } from '../engine/types';
import { texts } from '../texts';
import { icon } from './icons';

type Take = (files: FileIn[]) => void;

const taken = (files: Iterable<File>): FileIn[] => [...files].map((file) => ({ name: file.name, data: file }));

export class DropZone {
    /// Shown while there is no file.
    readonly element: HTMLElement;
    private readonly chooser = h('input', {
        type: 'file',
        multiple: true,
        hidden: true,
        id: 'chooser',
        'aria-label': texts.drop.choose,
    });
    private readonly veil = h('div', { class: 'drop-veil', 'aria-hidden': 'true', hidden: true }, texts.drop.here);
    private depth = 0;

    constructor(private readonly take: Take) {
        const choose = h(
            'button',
            { type: 'button', class: 'primary big', onclick: () => this.choose() },
            texts.drop.choose,
        );
        this.element = h(
            'section',
            { class: 'drop-zone', 'aria-label': texts.drop.title },
            icon('film'),
            h('h2', {}, texts.drop.title),
            h('p', {}, texts.drop.pair),
            choose,
            h('p', { class: 'hint' }, texts.drop.formats),
            h('p', { class: 'hint' }, texts.drop.private),
        );
        this.chooser.addEventListener('change', () => this.takeChosen());
        document.body.append(this.veil, this.chooser);
        this.listen();
    }

    choose(): void {
        this.chooser.click();
    }

    private takeChosen(): void {
        this.take(taken(this.chooser.files ?? []));
        this.chooser.value = '';
    }

    private listen(): void {
        document.addEventListener('dragenter', (event) => this.onDrag(event, 1));
        document.addEventListener('dragleave', (event) => this.onDrag(event, -1));
        document.addEventListener('dragover', (event) => event.preventDefault());
        document.addEventListener('drop', (event) => this.onDrop(event));
        document.addEventListener('paste', (event) => this.offer(event.clipboardData));
    }

    private onDrag(event: DragEvent, by: number): void {
        if (!event.dataTransfer?.types.includes('Files')) return;
        event.preventDefault();
        this.depth += by;
        this.veil.hidden = this.depth <= 0;
    }

    private onDrop(event: DragEvent): void {
        event.preventDefault();
        this.depth = 0;
        this.veil.hidden = true;
        this.offer(event.dataTransfer);
    }

    private offer(transfer: DataTransfer | null): void {
        const files = taken(transfer?.files ?? []);
        if (files.length > 0) this.take(files);
    }
}
