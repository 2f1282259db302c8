/// The entry, and the line of the source, that the person looks at.

import { Signal } from '../signal';
import type { Player } from '../session/Player';
import { opened, type Session } from '../session/Session';
import { trackOf } from '../model/film';

export type TabName = 'entries' | 'findings' | 'source' | 'pictures' | 'mend';

export class Selection {
    /// -1: none.
    readonly entry = new Signal(-1);
    /// From 1; 0: none.
    readonly line = new Signal(0);
    readonly tab = new Signal<TabName>('entries');

    constructor(
        private readonly session: Session,
        private readonly player: Player,
    ) {
        let known = session.current.value;
        session.current.follow((item) => {
            if (item === known) return;
            known = item;
            this.entry.value = -1;
            this.line.value = 0;
        });
    }

    /// Takes an entry, and goes where the film shows it.
    choose(index: number): void {
        const file = opened(this.session.current.value);
        if (!file || index < 0 || index >= file.count) return;
        this.line.value = 0;
        this.entry.value = index;
        this.player.track.value = trackOf(file, index);
        this.player.seek(file.starts[index]);
    }

    /// The entry, in the table.
    showEntry(index: number): void {
        this.tab.value = 'entries';
        this.choose(index);
    }

    /// A line, in the source.
    showLine(line: number): void {
        this.tab.value = 'source';
        this.line.value = line;
        this.line.tell();
    }
}
