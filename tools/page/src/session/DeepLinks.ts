/// Keeps the page's address and what is looked at together.

import { readPlace, writePlace } from '../links';
import { opened, type Session } from './Session';
import type { Player } from './Player';
import type { Selection } from '../view/Selection';

export class DeepLinks {
    constructor(
        private readonly session: Session,
        private readonly player: Player,
        private readonly selection: Selection,
    ) {}

    /// Goes where the address says, and follows it from now on.
    start(): void {
        this.go();
        window.addEventListener('hashchange', () => this.go());
        this.selection.entry.follow(() => this.write());
    }

    private go(): void {
        const { file, entry, time } = readPlace(location.hash);
        const item = this.session.files.value.find(({ name }) => file === null || name === file);
        if (!item || (file === null && entry === null && time === null)) return;
        this.session.current.value = item;
        if (!opened(item)) return;
        if (entry !== null) this.selection.showEntry(entry);
        if (time !== null) this.player.seek(time);
    }

    private write(): void {
        const item = this.session.current.value;
        const entry = this.selection.entry.value;
        if (!item || entry < 0) return;
        try {
            history.replaceState(null, '', writePlace(item.name, entry));
        } catch {
            // A page without an address of its own has none to change.
        }
    }
}
