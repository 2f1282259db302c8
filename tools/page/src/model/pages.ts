/// Items of a long list that come in pages, as they are looked at.

/// Null: they cannot be had, and are not asked for again.
export type LoadPage<T> = (first: number, count: number) => Promise<T[] | null>;

/// Pages that are asked for at a time, and those that wait: who scrolls quickly never sees the rest.
const MOST_ASKED = 2;
const MOST_WAITING = 4;

export class Pages<T> {
    /// The one that was looked at last stands last.
    private readonly pages = new Map<number, T[]>();
    private readonly asked = new Set<number>();
    private waiting: number[] = [];

    constructor(
        private readonly count: number,
        private readonly load: LoadPage<T>,
        /// Called when items have come that were missing.
        private readonly onArrival: () => void,
        private readonly pageSize = 64,
        private readonly keep = 64,
    ) {}

    /// The item, if it is there; else it is on its way, or is when it is looked at again.
    get(index: number): T | undefined {
        const page = Math.floor(index / this.pageSize);
        const items = this.pages.get(page);
        if (!items) {
            this.want(page);
            return undefined;
        }
        this.pages.delete(page);
        this.pages.set(page, items);
        return items[index % this.pageSize];
    }

    private want(page: number): void {
        if (this.asked.has(page) || this.waiting.includes(page)) return;
        this.waiting = [...this.waiting, page].slice(-MOST_WAITING);
        this.askNext();
    }

    /// What was wanted last comes first.
    private askNext(): void {
        while (this.asked.size < MOST_ASKED && this.waiting.length > 0) void this.fetch(this.waiting.pop()!);
    }

    private async fetch(page: number): Promise<void> {
        this.asked.add(page);
        const first = page * this.pageSize;
        const items = await this.load(first, Math.min(this.pageSize, this.count - first));
        this.asked.delete(page);
        this.pages.set(page, items ?? []);
        this.dropOldest();
        if (items) this.onArrival();
        this.askNext();
    }

    private dropOldest(): void {
        for (const page of this.pages.keys()) {
            if (this.pages.size <= this.keep) return;
            this.pages.delete(page);
        }
    }
}
