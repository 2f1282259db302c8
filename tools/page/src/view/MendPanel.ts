/// A copy of the file that shows as meant, as a download, with what was changed.

import { freshId, h, replace } from '../dom';
import type { Mended, MendOptions } from '../engine/types';
import { formatSize } from '../model/bytes';
import type { FileItem, Session } from '../session/Session';
import { texts } from '../texts';
import { icon } from './icons';

export class MendPanel {
    readonly element: HTMLElement;
    private readonly keepFormat = h('input', { type: 'checkbox' });
    private readonly utf16 = h('input', { type: 'checkbox' });
    private readonly samiClass = h('input', { type: 'text', spellcheck: 'false', autocomplete: 'off' });
    private readonly classField: HTMLElement;
    private readonly start: HTMLButtonElement;
    private readonly outcome = h('div', { class: 'outcome', 'aria-live': 'polite' });
    private item: FileItem | null = null;
    private address = '';

    constructor(private readonly session: Session) {
        this.classField = this.field(this.samiClass, texts.mend.samiClass, texts.mend.samiClassHint);
        this.start = h('button', { type: 'submit', class: 'primary' }, texts.mend.start);
        const form = h(
            'form',
            { class: 'mend-form' },
            h('p', { class: 'lead' }, texts.mend.lead),
            this.field(this.keepFormat, texts.mend.keepFormat, texts.mend.keepFormatHint),
            this.field(this.utf16, texts.mend.utf16, texts.mend.utf16Hint),
            this.classField,
            this.start,
        );
        form.addEventListener('submit', (event) => {
            event.preventDefault();
            void this.mend();
        });
        this.exclude(this.keepFormat, this.utf16);
        this.exclude(this.utf16, this.keepFormat);
        this.element = h(
            'div',
            { class: 'panel mend', tabindex: 0, role: 'region', 'aria-label': texts.mend.label },
            form,
            this.outcome,
        );
        session.current.follow((item) => this.load(item));
    }

    private field(input: HTMLInputElement, label: string, hint: string): HTMLElement {
        input.id = freshId('mend');
        const words = h('span', {}, h('label', { for: input.id }, label), h('small', {}, hint));
        return h('div', { class: `field field-${input.type}` }, input, words);
    }

    /// One or the other.
    private exclude(one: HTMLInputElement, other: HTMLInputElement): void {
        one.addEventListener('change', () => {
            if (one.checked) other.checked = false;
        });
    }

    private load(item: FileItem | null): void {
        const isMendable = item?.result != null && (item.state === 'opened' || item.state === 'refused');
        this.start.disabled = !isMendable;
        this.classField.hidden = item?.result?.kind !== 'opened' || item.result.format !== 'smi';
        if (item === this.item) return;
        this.item = item;
        this.clear();
    }

    private clear(): void {
        if (this.address) URL.revokeObjectURL(this.address);
        this.address = '';
        this.outcome.replaceChildren();
    }

    private get options(): MendOptions {
        return {
            keepFormat: this.keepFormat.checked,
            utf16: this.utf16.checked,
            samiClass: this.classField.hidden ? '' : this.samiClass.value.trim(),
        };
    }

    private async mend(): Promise<void> {
        const { item } = this;
        if (!item) return;
        this.clear();
        replace(this.outcome, h('p', { class: 'empty' }, texts.mend.working));
        const mended = await this.session.mend(item, this.options);
        if (item !== this.item) return;
        if (mended) this.show(mended);
        else replace(this.outcome, h('p', { class: 'notice bad' }, item.reason || texts.mend.failed));
    }

    private show(mended: Mended): void {
        const title = texts.mend.status[mended.status] ?? texts.mend.failed;
        const kind = mended.status === 0 ? 'good' : mended.status === 3 ? 'plain' : 'bad';
        const notice = h(
            'div',
            { class: `notice ${kind}` },
            icon(kind === 'good' ? 'good' : 'warning'),
            h('strong', {}, title),
        );
        const lines = h(
            'pre',
            { class: 'report', tabindex: 0, 'aria-label': texts.mend.changes },
            mended.lines.join('\n'),
        );
        replace(this.outcome, notice, mended.name ? this.offers(mended) : null, mended.lines.length > 0 && lines);
    }

    private offers({ name, bytes, pictures }: Mended): HTMLElement {
        const blob = new Blob([bytes as BlobPart], { type: 'application/octet-stream' });
        if (this.address) URL.revokeObjectURL(this.address);
        this.address = URL.createObjectURL(blob);
        const download = h(
            'a',
            { class: 'button primary', href: this.address, download: name },
            icon('download'),
            texts.mend.download(name, formatSize(bytes.length)),
        );
        const open = h(
            'button',
            { type: 'button', onclick: () => void this.session.add([{ name, data: blob }, ...(pictures ? [pictures] : [])]) },
            texts.mend.open,
        );
        return h('div', { class: 'offers' }, download, open);
    }
}
