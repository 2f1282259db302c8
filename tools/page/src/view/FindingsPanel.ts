/// Why something does not show as it was meant, in plain words, with ways to the entry and to the line.

import { h, replace } from '../dom';
import type { CheckReport, Finding, Opened } from '../engine/types';
import { groupsOf, type CauseGroup } from '../model/causes';
import { entryOf } from '../model/film';
import { opened, type FileItem, type Session } from '../session/Session';
import type { Player } from '../session/Player';
import { texts } from '../texts';
import { icon } from './icons';
import type { Selection } from './Selection';

/// Places of a cause that are shown at first, and how many more at each request.
const FIRST = 5;
const MORE = 100;

export class FindingsPanel {
    readonly element = h('div', {
        class: 'panel findings',
        tabindex: 0,
        role: 'region',
        'aria-label': texts.findings.label,
    });
    private item: FileItem | null = null;
    private report: CheckReport | null | undefined = undefined;

    constructor(
        private readonly session: Session,
        private readonly player: Player,
        private readonly selection: Selection,
    ) {
        session.current.follow(() => this.refresh());
        session.files.follow(() => this.refresh());
    }

    private refresh(): void {
        const item = this.session.current.value;
        const report = item?.report ?? null;
        if (item === this.item && report === this.report && item?.state !== 'broken') return;
        this.item = item;
        this.report = report;
        replace(this.element, ...this.contents(item, report));
    }

    private contents(item: FileItem | null, report: CheckReport | null): HTMLElement[] {
        if (!item) return [];
        if (item.reason) return this.causesOfRefusal(report);
        if (!report) return [h('p', { class: 'empty' }, texts.findings.checking)];
        if (report.error) return [h('p', { class: 'empty' }, report.error)];
        return [this.summary(report), ...this.groups(report)];
    }

    private causesOfRefusal(report: CheckReport | null): HTMLElement[] {
        const groups = this.groups(report);
        return groups.length > 0 ? groups : [h('p', { class: 'empty' }, texts.findings.nothing)];
    }

    private summary({ meant = 0, right = 0, findings = [] }: CheckReport): HTMLElement {
        const isFine = findings.length === 0;
        const text = texts.findings.right(
            right,
            meant,
            this.item?.result?.kind === 'opened' && this.item.result.isPictures,
        );
        const meter = h('div', { class: 'meter', 'aria-hidden': 'true' }, h('span', {}));
        (meter.firstElementChild as HTMLElement).style.width = `${meant ? (100 * right) / meant : 100}%`;
        const words = h('div', {}, h('strong', {}, text), isFine ? h('p', {}, texts.findings.fine) : meter);
        return h('div', { class: `notice ${isFine ? 'good' : 'plain'}` }, isFine && icon('good'), words);
    }

    private groups(report: CheckReport | null): HTMLElement[] {
        return groupsOf(report?.findings ?? []).map((group) => this.card(group));
    }

    private card(group: CauseGroup): HTMLElement {
        const cost = h(
            'span',
            { class: `cost cost-${group.cost}`, title: texts.findings.costs[group.cost].long },
            texts.findings.costs[group.cost].short,
        );
        const name = h('code', { title: texts.findings.nameHint }, group.name);
        const head = h(
            'header',
            {},
            cost,
            name,
            h('span', { class: 'grow' }),
            h('span', { class: 'count' }, texts.findings.places(group.findings.length)),
        );
        const mend = group.mend && h('p', { class: 'mend' }, h('strong', {}, texts.findings.mend), ` ${group.mend}`);
        return h('article', { class: 'cause' }, head, h('h3', {}, group.sentence), mend || null, this.places(group));
    }

    private places({ findings }: CauseGroup): HTMLElement | null {
        const placed = findings.filter(({ what, line }) => what || line);
        if (placed.length === 0) return null;
        const list = h('ul', { class: 'places' });
        const more = h('button', { type: 'button', class: 'quiet' });
        const add = (count: number): void => {
            const shown = list.childElementCount;
            list.append(...placed.slice(shown, shown + count).map((finding) => this.place(finding)));
            more.textContent = texts.findings.more(placed.length - list.childElementCount);
            more.hidden = list.childElementCount === placed.length;
        };
        more.addEventListener('click', () => add(MORE));
        add(FIRST);
        return h('div', {}, list, more);
    }

    private place(finding: Finding): HTMLElement {
        const { what, line, start } = finding;
        const go = h(
            'button',
            { type: 'button', class: 'place', onclick: () => this.goTo(finding) },
            what ?? texts.findings.here,
        );
        const toLine = line
            ? h(
                  'button',
                  { type: 'button', class: 'quiet', onclick: () => this.showLine(finding) },
                  texts.findings.line(line),
              )
            : null;
        go.disabled = start === undefined;
        return h('li', {}, go, toLine);
    }

    private file(): Opened | null {
        return opened(this.session.current.value);
    }

    /// The entry, when the library has it; at any rate the moment at which it was meant.
    private goTo(finding: Finding): void {
        const file = this.file();
        if (!file) return this.showLine(finding);
        const entry = entryOf(file, finding);
        if (entry >= 0) this.selection.showEntry(entry);
        else this.player.seek(finding.start ?? 0);
    }

    private showLine(finding: Finding): void {
        const file = this.file();
        const entry = file ? entryOf(file, finding) : -1;
        if (entry >= 0) this.selection.choose(entry);
        else if (finding.start !== undefined) this.player.seek(finding.start);
        this.selection.showLine(finding.line ?? 0);
    }
}
