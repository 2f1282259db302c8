/// What stands in front of the page for a while: the television's settings, the keys, the licences.

import { freshId, h } from '../dom';
import { usualSettings, type Choice, type DeviceSettings } from '../engine/types';
import type { Session } from '../session/Session';
import { texts } from '../texts';
import { icon } from './icons';

export function dialog(title: string, ...contents: (Node | string)[]): HTMLDialogElement {
    const id = freshId('dialog');
    const close = h(
        'button',
        { type: 'button', class: 'round', 'aria-label': texts.close, title: texts.close },
        icon('close'),
    );
    const head = h('header', {}, h('h2', { id }, title), close);
    const element = h('dialog', { 'aria-labelledby': id }, head, ...contents);
    close.addEventListener('click', () => element.close());
    element.addEventListener('click', (event) => {
        if (event.target === element) element.close();
    });
    return element;
}

export function keysDialog(notices: string): HTMLDialogElement {
    const rows = texts.keys.list.map(([keys, act]) =>
        h('tr', {}, h('th', { scope: 'row' }, ...keys.split(' ').map((key) => h('kbd', {}, key))), h('td', {}, act)),
    );
    const licences = h(
        'details',
        {},
        h('summary', {}, texts.keys.licences),
        h('pre', { class: 'report', tabindex: 0 }, notices),
    );
    return dialog(
        texts.keys.title,
        h('table', { class: 'keys' }, h('tbody', {}, ...rows)),
        h('p', { class: 'hint' }, texts.keys.private),
        licences,
    );
}

const SIZES = ['1280x720', '1920x1080', '3840x2160'];
const RATES = ['', '23.976', '24', '25', '29.97', '30', '50', '59.94', '60'];

export class SettingsDialog {
    readonly element: HTMLDialogElement;
    private readonly language = h('select', {});
    private readonly codePage = h('select', {});
    private readonly rate = h('input', { type: 'number', min: 1, max: 999.999, step: 0.001, inputmode: 'decimal' });
    private readonly width = h('input', { type: 'number', min: 16, max: 4096, required: true });
    private readonly height = h('input', { type: 'number', min: 16, max: 4096, required: true });

    constructor(private readonly session: Session) {
        const rates = h(
            'datalist',
            { id: freshId('rates') },
            ...RATES.filter(Boolean).map((rate) => h('option', { value: rate })),
        );
        this.rate.setAttribute('list', rates.id);
        this.rate.placeholder = texts.settings.noRate;
        const form = h(
            'form',
            { method: 'dialog' },
            h('p', { class: 'hint' }, texts.settings.lead),
            this.field(texts.settings.language, texts.settings.languageHint, this.language),
            this.field(texts.settings.codePage, texts.settings.codePageHint, this.codePage),
            this.field(texts.settings.rate, texts.settings.rateHint, this.rate, rates),
            this.sizeField(),
            this.buttons(),
        );
        form.addEventListener('submit', () => void session.apply(this.chosen));
        this.element = dialog(texts.settings.title, form);
        void this.fillChoices();
    }

    private field(label: string, hint: string, input: HTMLElement, ...more: HTMLElement[]): HTMLElement {
        input.id = freshId('setting');
        return h(
            'div',
            { class: 'setting' },
            h('label', { for: input.id }, label),
            input,
            ...more,
            h('small', {}, hint),
        );
    }

    private sizeField(): HTMLElement {
        const size = h(
            'select',
            {},
            ...SIZES.map((size) => h('option', { value: size }, size.replace('x', ' × '))),
            h('option', { value: '' }, texts.settings.otherSize),
        );
        size.addEventListener('change', () => {
            if (size.value) [this.width.value, this.height.value] = size.value.split('x') as [string, string];
        });
        this.width.setAttribute('aria-label', texts.settings.width);
        this.height.setAttribute('aria-label', texts.settings.height);
        for (const input of [this.width, this.height])
            input.addEventListener('input', () => (size.value = this.sizeWord));
        const field = this.field(
            texts.settings.size,
            texts.settings.sizeHint,
            size,
            h('span', { class: 'pair' }, this.width, '×', this.height),
        );
        this.session.settings.follow((settings) => {
            this.show(settings);
            size.value = this.sizeWord;
        });
        return field;
    }

    private get sizeWord(): string {
        const word = `${this.width.value}x${this.height.value}`;
        return SIZES.includes(word) ? word : '';
    }

    private buttons(): HTMLElement {
        const usual = h('button', { type: 'button', onclick: () => this.show(usualSettings) }, texts.settings.usual);
        return h(
            'div',
            { class: 'dialog-buttons' },
            usual,
            h('span', { class: 'grow' }),
            h('button', { type: 'submit', class: 'primary' }, texts.settings.apply),
        );
    }

    private async fillChoices(): Promise<void> {
        const { languages, codePages } = await this.session.engine.vocabulary();
        fillSelect(this.language, texts.settings.noLanguage, languages);
        fillSelect(this.codePage, texts.settings.guess, codePages);
        this.show(this.session.settings.value);
    }

    private show(settings: DeviceSettings): void {
        this.language.value = settings.language;
        this.codePage.value = settings.codePage;
        this.rate.value = settings.framesPerSecond === null ? '' : String(settings.framesPerSecond);
        this.width.value = String(settings.surfaceWidth);
        this.height.value = String(settings.surfaceHeight);
    }

    private get chosen(): DeviceSettings {
        return {
            language: this.language.value,
            codePage: this.codePage.value,
            framesPerSecond: this.rate.value === '' ? null : Number(this.rate.value),
            surfaceWidth: Number(this.width.value),
            surfaceHeight: Number(this.height.value),
        };
    }

    open(): void {
        this.show(this.session.settings.value);
        this.element.showModal();
    }
}

function fillSelect(select: HTMLSelectElement, none: string, choices: Choice[]): void {
    const options = choices
        .filter(({ word }) => word !== '')
        .map(({ word, name }) => h('option', { value: word }, name));
    select.replaceChildren(h('option', { value: '' }, none), ...options);
}
