/// The page's icons: outlines on a field of 24 by 24.

const OUTLINES = {
    film: 'M4 5h16v14H4zM8 5v14M16 5v14M4 9.7h4M4 14.3h4M16 9.7h4M16 14.3h4',
    open: 'M12 15V4M8 8l4-4 4 4M4 14v5h16v-5',
    play: 'M8 5l11 7-11 7z',
    pause: 'M8 5v14M16 5v14',
    back: 'M11 6l-6 6 6 6M19 6l-6 6 6 6',
    forward: 'M13 6l6 6-6 6M5 6l6 6-6 6',
    previous: 'M18 6l-8 6 8 6zM6 6v12',
    next: 'M6 6l8 6-8 6zM18 6v12',
    closer: 'M10.5 4a6.5 6.5 0 1 1 0 13 6.5 6.5 0 0 1 0-13zM15.5 15.5L20 20M10.5 8v5M8 10.5h5',
    farther: 'M10.5 4a6.5 6.5 0 1 1 0 13 6.5 6.5 0 0 1 0-13zM15.5 15.5L20 20M8 10.5h5',
    whole: 'M4 9V4h5M20 9V4h-5M4 15v5h5M20 15v5h-5',
    television: 'M3 5h18v12H3zM8 21h8',
    sun: 'M12 8a4 4 0 1 1 0 8 4 4 0 0 1 0-8zM12 2v2M12 20v2M2 12h2M20 12h2M5 5l1.4 1.4M17.6 17.6L19 19M5 19l1.4-1.4M17.6 6.4L19 5',
    moon: 'M20 14.5A8.5 8.5 0 0 1 9.5 4 8.5 8.5 0 1 0 20 14.5z',
    keys: 'M3 6h18v12H3zM7 10h.01M11 10h.01M15 10h.01M8 14h8',
    close: 'M6 6l12 12M18 6L6 18',
    download: 'M12 4v11M8 11l4 4 4-4M4 19h16',
    search: 'M10.5 4a6.5 6.5 0 1 1 0 13 6.5 6.5 0 0 1 0-13zM15.5 15.5L20 20',
    good: 'M5 12.5l4.5 4.5L19 7.5',
    warning: 'M12 4l9 16H3zM12 10v4M12 17h.01',
};

export type IconName = keyof typeof OUTLINES;

const SVG = 'http://www.w3.org/2000/svg';

/// For the eye alone: the words beside it or the button's label say what it means.
export function icon(name: IconName): SVGSVGElement {
    const svg = document.createElementNS(SVG, 'svg');
    svg.setAttribute('viewBox', '0 0 24 24');
    svg.setAttribute('class', `icon icon-${name}`);
    svg.setAttribute('aria-hidden', 'true');
    const path = document.createElementNS(SVG, 'path');
    path.setAttribute('d', OUTLINES[name]);
    svg.append(path);
    return svg;
}
