/// Text with its unseen characters made seen, and a part of it marked.

import { h } from '../dom';

const NAMES: Record<string, string> = {
    '\t': '→',
    '\0': '␀',
    '\u00a0': '⍽',
    '\u00ad': 'SHY',
    '\u200b': 'ZWSP',
    '\u200c': 'ZWNJ',
    '\u200d': 'ZWJ',
    '\u200e': 'LRM',
    '\u200f': 'RLM',
    '\u202a': 'LRE',
    '\u202b': 'RLE',
    '\u202c': 'PDF',
    '\u202d': 'LRO',
    '\u202e': 'RLO',
    '\ufeff': 'BOM',
};

/// Control characters, and others that take no room or look like a blank.
// eslint-disable-next-line no-control-regex
const UNSEEN = /[\u0000-\u001f\u007f-\u009f\u00a0\u00ad\u200b-\u200f\u202a-\u202e\ufeff]/g;

function nameOf(character: string): string {
    const code = character.charCodeAt(0);
    if (NAMES[character]) return NAMES[character];
    return code < 0x20 ? String.fromCharCode(0x2400 + code) : code.toString(16).padStart(2, '0');
}

function plain(text: string): Node[] {
    const nodes: Node[] = [];
    let from = 0;
    for (const match of text.matchAll(UNSEEN)) {
        if (match.index > from) nodes.push(document.createTextNode(text.slice(from, match.index)));
        nodes.push(h('span', { class: 'unseen-mark' }, nameOf(match[0])));
        from = match.index + 1;
    }
    if (from < text.length) nodes.push(document.createTextNode(text.slice(from)));
    return nodes;
}

export function pieces(text: string, marked: [number, number] | null): Node[] {
    if (!marked) return plain(text);
    const [from, end] = marked;
    const mark = h('mark', {});
    mark.append(...plain(text.slice(from, end)));
    return [...plain(text.slice(0, from)), mark, ...plain(text.slice(end))];
}
