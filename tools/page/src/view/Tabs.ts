/// Tabs with one panel in sight.

import { h, setText } from '../dom';
import { texts } from '../texts';
import type { Selection, TabName } from './Selection';

export interface Panel {
    name: TabName;
    element: HTMLElement;
}

export class Tabs {
    readonly element: HTMLElement;
    private readonly tabs = new Map<TabName, HTMLButtonElement>();
    private readonly list = h('div', { class: 'tab-list', role: 'tablist', 'aria-label': texts.tabs.label });

    constructor(
        private readonly panels: Panel[],
        private readonly selection: Selection,
    ) {
        for (const { name, element } of panels) this.add(name, element);
        this.list.addEventListener('keydown', (event) => this.onKey(event));
        this.element = h(
            'section',
            { class: 'tabs', 'aria-label': texts.tabs.section },
            this.list,
            ...panels.map(({ element }) => element),
        );
        selection.tab.follow((tab) => this.show(tab));
    }

    private add(name: TabName, panel: HTMLElement): void {
        panel.id = `panel-${name}`;
        panel.setAttribute('role', 'tabpanel');
        panel.setAttribute('aria-labelledby', `tab-${name}`);
        const tab = h(
            'button',
            {
                type: 'button',
                role: 'tab',
                id: `tab-${name}`,
                'data-tab': name,
                'aria-controls': panel.id,
                onclick: () => (this.selection.tab.value = name),
            },
            texts.tabs.names[name],
            h('span', { class: 'badge', hidden: true }),
        );
        this.tabs.set(name, tab);
        this.list.append(tab);
    }

    private show(chosen: TabName): void {
        for (const { name, element } of this.panels) {
            const isChosen = name === chosen;
            element.hidden = !isChosen;
            this.tabs.get(name)!.setAttribute('aria-selected', String(isChosen));
            this.tabs.get(name)!.tabIndex = isChosen ? 0 : -1;
        }
    }

    private onKey(event: KeyboardEvent): void {
        const names = this.panels.map(({ name }) => name).filter((name) => !this.tabs.get(name)!.hidden);
        const here = names.indexOf(this.selection.tab.value);
        const targets: Record<string, number> = {
            ArrowRight: here + 1,
            ArrowLeft: here - 1,
            Home: 0,
            End: names.length - 1,
        };
        const target = targets[event.key];
        if (target === undefined) return;
        event.preventDefault();
        event.stopPropagation();
        this.selection.tab.value = names[(target + names.length) % names.length];
        this.tabs.get(this.selection.tab.value)!.focus();
    }

    setBadge(name: TabName, text: string): void {
        const badge = this.tabs.get(name)!.lastElementChild as HTMLElement;
        setText(badge, text);
        badge.hidden = text === '';
    }

    setVisible(name: TabName, isVisible: boolean): void {
        this.tabs.get(name)!.hidden = !isVisible;
        if (!isVisible && this.selection.tab.value === name) this.selection.tab.value = 'entries';
    }
}
