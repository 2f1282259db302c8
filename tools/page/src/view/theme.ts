/// Light or dark: as the system is set, until the person says otherwise.

import { Signal } from '../signal';

export type Theme = 'light' | 'dark';

const prefersDark = matchMedia('(prefers-color-scheme: dark)');

const preferred = (): Theme => (prefersDark.matches ? 'dark' : 'light');

export const theme = new Signal<Theme>(preferred());

let isChosen = false;

export function toggleTheme(): void {
    isChosen = true;
    theme.value = theme.value === 'dark' ? 'light' : 'dark';
}

prefersDark.addEventListener('change', () => {
    if (!isChosen) theme.value = preferred();
});

theme.follow((value) => (document.documentElement.dataset['theme'] = value));
