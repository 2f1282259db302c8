/// Items of a long list that come in pages, as they are looked at.

export type LoadPage<T> = (first: number, count: number) => Promise<T[] | null>;

export class Pages<T> {
    private readonly pages = new Map<number, T[] | null>();

    constructor(
        private readonly count: number,
        private readonly load: LoadPage<T>,
        /// Called when items have come that were missing.
        private readonly onArrival: () => void,
        private readonly pageSize = 64,
        private readonly keep = 64,
    ) {}

    /// The item, if it is there; else it is on its way.
    get(index: number): T | undefined {
        const page = Math.floor(index / this.pageSize);
        const items = this.pages.get(page);
        if (items) {
            this.pages.delete(page);
            this.pages.set(page, items);
            return items[index % this.pageSize];
        }
        if (items === undefined) void this.fetch(page);
        return undefined;
    }

    private async fetch(page: number): Promise<void> {
        this.pages.set(page, null);
        const first = page * this.pageSize;
        const items = await this.load(first, Math.min(this.pageSize, this.count - first));
        if (!items) return;
        this.pages.set(page, items);
        this.dropOldest();
        this.onArrival();
    }

    private dropOldest(): void {
        for (const page of this.pages.keys()) {
            if (this.pages.size <= this.keep) return;
            if (this.pages.get(page) !== null) this.pages.delete(page);
        }
    }
}
