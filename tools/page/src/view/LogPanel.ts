/// What the library logged of a file, for whoever looks into it.

import { h, replace } from '../dom';
import type { LogLines } from '../engine/types';
import type { Player } from '../session/Player';
import type { FileItem, Session } from '../session/Session';
import { texts } from '../texts';

export class LogPanel {
    readonly element: HTMLDetailsElement;
    private readonly lines = h('div', {});
    private shown = -1;

    constructor(
        private readonly session: Session,
        player: Player,
    ) {
        this.element = h('details', { class: 'log', id: 'log' }, h('summary', {}, texts.log.title), this.lines);
        this.element.addEventListener('toggle', () => void this.refresh());
        session.current.follow((item) => {
            this.element.hidden = !item?.result || item.state === 'broken';
            void this.refresh();
        });
        player.moment.follow((moment) => {
            if (moment === null || moment.shown === this.shown) return;
            this.shown = moment.shown;
            void this.refresh();
        });
    }

    /// Asks for nothing before it is looked at.
    private async refresh(): Promise<void> {
        const item = this.session.current.value;
        if (!this.element.open || !item?.result) return;
        const log = await this.session.ask(item, (engine, id) => engine.log(id));
        if (!log || item !== this.session.current.value) return;
        const { opening, showing } = log;
        replace(this.lines, ...part(texts.log.opening, opening), ...this.partOfShowing(item, showing));
    }

    private partOfShowing({ state }: FileItem, showing: LogLines): HTMLElement[] {
        return state === 'opened' && showing.lines.length > 0 ? part(texts.log.showing, showing) : [];
    }
}

function part(title: string, { lines, more }: LogLines): HTMLElement[] {
    const text = lines.length > 0 ? lines.join('\n') : texts.log.none;
    const box = h('pre', { class: 'report', tabindex: 0, 'aria-label': title }, text);
    const rest = more > 0 ? [h('p', { class: 'hint' }, texts.log.more(more))] : [];
    return [h('h3', {}, title), box, ...rest];
}
