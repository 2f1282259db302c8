/// The files that were dropped, which of them is looked at, and what the television is set to.

import { groupsOf } from '../engine/pairs';
import {
    usualSettings,
    type CheckReport,
    type DeviceSettings,
    type Engine,
    type FileIn,
    type Mended,
    type MendOptions,
    type OpenResult,
    type Opened,
    type Progress,
} from '../engine/types';
import { Signal } from '../signal';
import { texts } from '../texts';

export interface FileItem {
    /// The page's own number; the engine's stands in `result`.
    key: number;
    name: string;
    size: number;
    state: 'waiting' | 'opening' | OpenResult['kind'];
    progress: Progress | null;
    result: OpenResult | null;
    /// Null until the check is through.
    report: CheckReport | null;
    reason: string;
}

/// What the library has of a file; null while it has nothing, and when the file broke it.
export const opened = (item: FileItem | null): Opened | null =>
    item?.state === 'opened' && item.result?.kind === 'opened' ? item.result : null;

/// So long a check waits: the first rows come first.
const CHECK_PAUSE_MS = 250;

/// Why nothing is shown, with the file's name in front once.
export const reasonOf = ({ name, reason }: FileItem): string =>
    reason.startsWith(`${name}:`) ? reason : `${name}: ${reason}`;

const isBreakage = (error: unknown): boolean => error instanceof Error && error.name === 'EngineBroken';

const message = (error: unknown): string => (error instanceof Error ? error.message : String(error));

export class Session {
    readonly files = new Signal<FileItem[]>([]);
    readonly current = new Signal<FileItem | null>(null);
    readonly settings = new Signal<DeviceSettings>({ ...usualSettings });
    /// What a screen reader is to say.
    readonly news = new Signal('');
    readonly busy = new Signal(false);

    private lastKey = 0;
    private opening: Promise<void> = Promise.resolve();
    private openingCount = 0;
    private isChecking = false;

    constructor(readonly engine: Engine) {}

    /// Opens files one behind the other; settled when all of them are.
    async add(files: FileIn[]): Promise<void> {
        this.busy.value = true;
        this.openingCount += 1;
        try {
            const batch = (await groupsOf(files)).map(({ files: group }) => ({ group, item: this.placeholder(group) }));
            this.files.value = [...this.files.value, ...batch.map(({ item }) => item)];
            for (const { group, item } of batch) this.opening = this.opening.then(() => this.openOne(group, item));
            await this.opening;
        } finally {
            this.openingCount -= 1;
            this.busy.value = this.openingCount > 0;
        }
    }

    private newItem(name: string, size: number, state: FileItem['state']): FileItem {
        this.lastKey += 1;
        return { key: this.lastKey, name, size, state, progress: null, result: null, report: null, reason: '' };
    }

    private placeholder(group: FileIn[]): FileItem {
        const size = group.reduce((sum, file) => sum + file.data.size, 0);
        return this.newItem(group[0].name, size, 'waiting');
    }

    /// Lists a file that nobody can open.
    addUnreadable(name: string, reason: string): void {
        const item = { ...this.newItem(name, 0, 'refused'), reason };
        this.files.value = [...this.files.value, item];
        this.current.value ??= item;
        this.tellOf(item);
    }

    private async openOne(group: FileIn[], item: FileItem): Promise<void> {
        if (this.files.value.includes(item)) await this.openGroup(group, item);
        window.setTimeout(() => void this.checkNext(), CHECK_PAUSE_MS);
    }

    private async openGroup(group: FileIn[], item: FileItem): Promise<void> {
        this.change(item, { state: 'opening' });
        try {
            const results = await this.engine.open(group, this.settings.value, (progress) =>
                this.change(item, { progress }),
            );
            if (this.files.value.includes(item)) this.settle(item, results);
            else this.letGo(results);
        } catch (error) {
            this.change(item, { state: 'broken', reason: message(error), progress: null });
        }
        if (!this.files.value.includes(item)) return; // removed, or joined to its other half
        this.tellOf(item);
        if (this.current.value === item) this.current.tell(); // it was chosen while it waited
        else if (!this.current.value || this.isWorthMore(item)) this.current.value = item;
    }

    /// Of a file that was removed meanwhile: halves that have a row go on, the rest is closed.
    private letGo(results: OpenResult[]): void {
        for (const result of results) {
            const known = this.files.value.find((file) => file.result?.id === result.id);
            if (known) this.take(known, result);
            else void this.engine.close(result.id).catch(() => undefined);
        }
    }

    /// The first result takes the placeholder's row; one that is known already, such as the half of a pair, its old row.
    private settle(item: FileItem, results: OpenResult[]): void {
        if (results.length === 0) this.forget(item);
        results.forEach((result, place) => {
            const known = this.files.value.find((file) => file.result?.id === result.id);
            if (known && known !== item) {
                if (place === 0) this.forget(item);
                this.take(known, result);
                this.tellOf(known);
                this.current.value = known;
                this.current.tell();
            } else if (place === 0) {
                this.take(item, result);
            } else {
                this.takeAsNew(result);
            }
        });
    }

    private takeAsNew(result: OpenResult): void {
        const item = this.newItem(result.name, result.size, result.kind);
        this.files.value = [...this.files.value, item];
        this.take(item, result);
    }

    private take(item: FileItem, result: OpenResult): void {
        const reason = result.kind === 'opened' ? '' : result.reason;
        const { name, size, kind: state } = result;
        this.change(item, { name, size, state, result, reason, report: null, progress: null });
    }

    /// A file that shows is looked at rather than one that does not.
    private isWorthMore(item: FileItem): boolean {
        return item.state === 'opened' && this.current.value?.state !== 'opened';
    }

    private tellOf(item: FileItem): void {
        const file = opened(item);
        this.news.value = file ? texts.news.opened(file.name, file.formatName, file.count) : reasonOf(item);
    }

    private change(item: FileItem, fields: Partial<FileItem>): void {
        Object.assign(item, fields);
        this.files.tell();
    }

    private forget(item: FileItem): void {
        const left = this.files.value.filter((file) => file !== item);
        const place = this.files.value.indexOf(item);
        this.files.value = left;
        if (this.current.value === item) this.current.value = left[Math.min(place, left.length - 1)] ?? null;
    }

    async remove(item: FileItem): Promise<void> {
        this.forget(item);
        if (item.result) await this.engine.close(item.result.id).catch(() => undefined);
    }

    /// Asks the engine about a file. Null when that broke the worker: then the file is marked, and the others go on.
    async ask<T>(item: FileItem, question: (engine: Engine, id: number) => Promise<T>): Promise<T | null> {
        if (!item.result || item.state === 'broken') return null;
        try {
            return await question(this.engine, item.result.id);
        } catch (error) {
            if (isBreakage(error)) this.markBroken(item, message(error));
            else this.news.value = message(error);
            return null;
        }
    }

    private markBroken(item: FileItem, reason: string): void {
        this.change(item, { state: 'broken', reason, progress: null });
        this.news.value = `${item.name}: ${texts.files.broken}`;
        if (this.current.value === item) this.current.tell();
    }

    /// Shows every file as the television with these settings does.
    async apply(settings: DeviceSettings): Promise<void> {
        this.settings.value = settings;
        await this.opening;
        this.busy.value = true;
        for (const item of [...this.files.value]) await this.reopen(item, settings);
        this.busy.value = this.openingCount > 0;
        void this.checkNext();
    }

    /// Also one that broke the library: with other settings it may not.
    private async reopen(item: FileItem, settings: DeviceSettings): Promise<void> {
        const result = item.result && (await this.engine.reopen(item.result.id, settings).catch(() => null));
        if (!result || !this.files.value.includes(item)) return;
        this.take(item, result);
        if (item === this.current.value) this.current.tell();
    }

    /// The entries that hold `words`; null when that cannot be told.
    async search(item: FileItem, words: string): Promise<Uint32Array | null> {
        const told = (progress: Progress): void => this.change(item, { progress });
        const found = await this.ask(item, (engine, id) => engine.search(id, words, told));
        if (item.progress?.stage === 'searching') this.change(item, { progress: null });
        return found;
    }

    /// Checks one file after another, the one that is looked at first.
    private async checkNext(): Promise<void> {
        if (this.isChecking) return;
        const isOpen = (item: FileItem): boolean =>
            item.result !== null && !item.report && (item.state === 'opened' || item.state === 'refused');
        const current = this.current.value;
        const item = current && isOpen(current) ? current : this.files.value.find(isOpen);
        if (!item) return;
        this.isChecking = true;
        await this.check(item);
        this.isChecking = false;
        void this.checkNext();
    }

    /// Runs in a worker of its own: what breaks that one is shown all the same.
    private async check(item: FileItem): Promise<void> {
        const result = item.result!;
        const told = (progress: Progress): void => this.change(item, { progress });
        const failed = (error: unknown): CheckReport => ({ file: item.name, status: 1, error: message(error) });
        const report = await this.engine.findings(result.id, told).catch(failed);
        if (item.result === result) this.change(item, { progress: null, report });
    }

    /// A copy that shows as meant, from the same worker; null when it cannot be made.
    async mend(item: FileItem, options: MendOptions): Promise<Mended | null> {
        const told = (progress: Progress): void => this.change(item, { progress });
        try {
            return item.result && (await this.engine.mend(item.result.id, options, told));
        } catch (error) {
            this.news.value = message(error);
            return null;
        } finally {
            this.change(item, { progress: null });
        }
    }
}
