/// Which rows of a long list stand in its window.
///
/// Browsers stop laying out above some 16 million pixels: beyond that the scroll bar's way is shared out among the
/// rows in proportion.

export interface RowWindow {
    first: number;
    count: number;
    /// Where the first of them stands in the scrolled content, in pixels.
    top: number;
}

const TALLEST = 15_000_000;

/// Rows in front of and behind the window, so that a quick scroll meets some.
const SPARE = 6;

export class RowLayout {
    readonly height: number;
    private readonly full: number;

    constructor(
        readonly count: number,
        readonly rowHeight: number,
    ) {
        this.full = count * rowHeight;
        this.height = Math.min(this.full, TALLEST);
    }

    /// The offset among all rows that a scroll position stands for.
    private offsetAt(scrollTop: number, viewHeight: number): number {
        const way = this.height - viewHeight;
        if (way <= 0) return 0;
        const clamped = Math.min(Math.max(scrollTop, 0), way);
        return (clamped * (this.full - viewHeight)) / way;
    }

    windowAt(scrollTop: number, viewHeight: number): RowWindow {
        const offset = this.offsetAt(scrollTop, viewHeight);
        const seen = Math.floor(offset / this.rowHeight);
        const first = Math.max(0, seen - SPARE);
        const last = Math.min(this.count, seen + Math.ceil(viewHeight / this.rowHeight) + 1 + SPARE);
        return { first, count: Math.max(0, last - first), top: scrollTop + first * this.rowHeight - offset };
    }

    private scrollFor(offset: number, viewHeight: number): number {
        const rest = this.full - viewHeight;
        if (rest <= 0) return 0;
        return (Math.min(Math.max(offset, 0), rest) * (this.height - viewHeight)) / rest;
    }

    /// The scroll position nearest to `scrollTop` at which a row is seen whole; where it must move far, in the middle.
    reveal(row: number, scrollTop: number, viewHeight: number): number {
        const offset = this.offsetAt(scrollTop, viewHeight);
        const top = row * this.rowHeight;
        if (top >= offset && top + this.rowHeight <= offset + viewHeight) return scrollTop;
        const near = 2 * this.rowHeight;
        if (top < offset && offset - top <= near) return this.scrollFor(top, viewHeight);
        const below = top + this.rowHeight - viewHeight;
        if (below > offset && below - offset <= near) return this.scrollFor(below, viewHeight);
        return this.scrollFor(top - (viewHeight - this.rowHeight) / 2, viewHeight);
    }
}
