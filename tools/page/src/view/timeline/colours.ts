/// The page's colours for a canvas, which knows no style sheet.

export interface Colours {
    ground: string;
    line: string;
    text: string;
    faint: string;
    entry: string;
    entryText: string;
    marked: string;
    markedText: string;
    lost: string;
    accent: string;
    window: string;
}

export function coloursOf(element: Element): Colours {
    const style = getComputedStyle(element);
    const colour = (name: string): string => style.getPropertyValue(`--${name}`).trim();
    return {
        ground: colour('sunken'),
        line: colour('line'),
        text: colour('text'),
        faint: colour('faint'),
        entry: colour('entry'),
        entryText: colour('entry-text'),
        marked: colour('marked'),
        markedText: colour('marked-text'),
        lost: colour('bad'),
        accent: colour('accent'),
        window: colour('window'),
    };
}
