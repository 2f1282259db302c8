/// A value that tells when it changes.

export type Unsubscribe = () => void;

export class Signal<T> {
    private readonly listeners = new Set<(value: T) => void>();

    constructor(private current: T) {}

    get value(): T {
        return this.current;
    }

    set value(next: T) {
        if (Object.is(next, this.current)) return;
        this.current = next;
        this.tell();
    }

    /// For values that change inside.
    tell(): void {
        for (const listener of [...this.listeners]) listener(this.current);
    }

    /// Calls `listener` now and at every change.
    follow(listener: (value: T) => void): Unsubscribe {
        this.listeners.add(listener);
        listener(this.current);
        return () => this.listeners.delete(listener);
    }
}
