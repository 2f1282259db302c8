/// The files that were dropped, and how well each shows.

import { h } from '../dom';
import { formatSize } from '../model/bytes';
import { opened, type FileItem, type Session } from '../session/Session';
import { texts } from '../texts';
import { icon } from './icons';

type Health = 'good' | 'warning' | 'bad' | 'unknown';

export function healthOf(item: FileItem): Health {
    if (item.state === 'broken' || item.state === 'refused') return 'bad';
    if (item.state === 'lonely') return 'warning';
    const { report } = item;
    if (!report) return 'unknown';
    if (report.error !== undefined || (report.right ?? 0) < (report.meant ?? 0)) return 'bad';
    return (report.findings?.length ?? 0) > 0 ? 'warning' : 'good';
}

export class FileList {
    readonly element: HTMLElement;
    private readonly list = h('ul', { id: 'files' });
    private readonly rows = new Map<number, { row: HTMLElement; says: unknown[] }>();

    private isDue = false;

    constructor(private readonly session: Session) {
        this.element = h(
            'nav',
            { class: 'file-list', 'aria-label': texts.files.label },
            h('h2', {}, texts.files.label),
            this.list,
        );
        session.files.follow(() => this.refreshSoon());
        session.current.follow(() => this.refreshSoon());
    }

    /// Once a frame: of a thousand files, something happens to one or another all the time.
    private refreshSoon(): void {
        if (this.isDue) return;
        this.isDue = true;
        requestAnimationFrame(() => {
            this.isDue = false;
            this.refresh(this.session.files.value);
        });
    }

    private refresh(files: FileItem[]): void {
        const known = new Set(files.map(({ key }) => key));
        for (const [key, { row }] of this.rows) {
            if (known.has(key)) continue;
            row.remove();
            this.rows.delete(key);
        }
        for (const item of files) this.refreshRow(item);
    }

    /// Rows are made anew only when they say something else, so that the focus stays where it is.
    private refreshRow(item: FileItem): void {
        const isCurrent = item === this.session.current.value;
        const says = [item.state, item.result, item.progress, item.report, isCurrent];
        const known = this.rows.get(item.key);
        if (known && says.every((part, at) => part === known.says[at])) return;
        const row = known?.row ?? this.addRow(item);
        this.rows.set(item.key, { row, says });
        this.fill(row, item, isCurrent);
    }

    private addRow(item: FileItem): HTMLElement {
        const choose = h('button', {
            type: 'button',
            class: 'file',
            onclick: () => (this.session.current.value = item),
        });
        const remove = h(
            'button',
            { type: 'button', class: 'remove', onclick: () => void this.session.remove(item) },
            icon('close'),
        );
        const row = h('li', { 'data-id': item.key }, choose, remove);
        this.list.append(row);
        return row;
    }

    private fill(row: HTMLElement, item: FileItem, isCurrent: boolean): void {
        const [choose, remove] = [...row.children] as [HTMLElement, HTMLElement];
        row.className = `health-${healthOf(item)}${isCurrent ? ' is-current' : ''}`;
        choose.setAttribute('aria-current', String(isCurrent));
        choose.replaceChildren(
            h('span', { class: 'dot', 'aria-hidden': 'true' }),
            h('span', { class: 'name', title: item.name }, item.name),
            h('span', { class: 'state' }, this.state(item)),
        );
        remove.setAttribute('aria-label', texts.files.remove(item.name));
        remove.title = texts.files.remove(item.name);
        this.showProgress(row, item);
    }

    private showProgress(row: HTMLElement, item: FileItem): void {
        const known = row.querySelector('progress');
        if (item.state !== 'opening' && !item.progress) {
            known?.remove();
            return;
        }
        const bar = known ?? h('progress', { max: 1, 'aria-label': texts.files.progress(item.name) });
        bar.value = item.progress?.done ?? 0;
        bar.setAttribute('aria-valuetext', this.state(item));
        if (!known) row.append(bar);
    }

    private state(item: FileItem): string {
        if (item.progress) return texts.progress[item.progress.stage];
        if (item.state === 'waiting' || item.state === 'opening') return texts.files[item.state];
        const file = opened(item);
        if (!file) return texts.files[item.state as 'refused' | 'lonely' | 'broken'];
        const { report } = item;
        if (!report) return `${file.formatName} · ${formatSize(file.size)}`;
        if (report.meant === undefined) return `${file.formatName} · ${texts.entries.count(file.count)}`;
        return texts.files.right(report.right ?? 0, report.meant);
    }
}
