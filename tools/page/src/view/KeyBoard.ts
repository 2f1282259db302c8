/// The keys of the whole page; fields and lists keep theirs.

import { MINUTE, SECOND } from '../model/times';
import { SPEEDS, type Player } from '../session/Player';
import type { Selection, TabName } from './Selection';
import type { Transport } from './Transport';

const TABS: Record<string, TabName> = { '1': 'entries', '2': 'findings', '3': 'source', '4': 'pictures', '5': 'mend' };

export class KeyBoard {
    private readonly acts: Record<string, () => void>;

    constructor(
        private readonly player: Player,
        selection: Selection,
        transport: Transport,
        page: { search: () => void; help: () => void },
    ) {
        this.acts = {
            ' ': () => player.toggle(),
            ArrowLeft: () => player.move(-5 * SECOND),
            ArrowRight: () => player.move(5 * SECOND),
            ArrowDown: () => player.move(-MINUTE),
            ArrowUp: () => player.move(MINUTE),
            ',': () => transport.step(-1),
            '.': () => transport.step(1),
            '[': () => this.changeSpeed(-1),
            ']': () => this.changeSpeed(1),
            '?': () => page.help(),
            '/': () => {
                selection.tab.value = 'entries';
                page.search();
            },
        };
        for (const [key, tab] of Object.entries(TABS)) this.acts[key] = () => (selection.tab.value = tab);
        document.addEventListener('keydown', (event) => this.onKey(event));
    }

    private onKey(event: KeyboardEvent): void {
        if (event.altKey || event.ctrlKey || event.metaKey || event.defaultPrevented) return;
        if (!document.body.classList.contains('has-files') || isTaken(event)) return;
        const act = this.acts[event.key];
        if (!act) return;
        event.preventDefault();
        act();
    }

    private changeSpeed(by: number): void {
        const place = SPEEDS.indexOf(this.player.speed.value) + by;
        if (SPEEDS[place] !== undefined) this.player.speed.value = SPEEDS[place];
    }
}

/// Whether what has the focus does something of its own with the key.
function isTaken({ target, key }: KeyboardEvent): boolean {
    if (!(target instanceof HTMLElement)) return false;
    if (target.closest('dialog, input:not([type=range]):not([type=checkbox]), select, textarea')) return true;
    if (key === ' ' && target.closest('button, a, summary, input')) return true;
    return key.startsWith('Arrow') && target.closest('input, [role=region], .source-lines, .sheet, pre') !== null;
}
