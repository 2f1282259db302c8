/// Files that belong together among those that were dropped at once.

const PAIRED = /^(.*)\.(idx|sub)$/i;

/// An index and its pictures make one group, the index first; every other file is a group of its own.
export function grouped<T extends { name: string }>(files: T[]): T[][] {
    const groups: T[][] = [];
    const pairs = new Map<string, T[]>();
    for (const file of files) {
        const [, stem, ending] = PAIRED.exec(file.name) ?? [];
        const key = stem?.toLowerCase();
        const other = key === undefined ? undefined : pairs.get(key);
        if (other?.length === 1 && !other[0].name.toLowerCase().endsWith(`.${ending!.toLowerCase()}`)) {
            other.push(file);
            other.sort((a, b) => Number(/\.sub$/i.test(a.name)) - Number(/\.sub$/i.test(b.name)));
            continue;
        }
        const group = [file];
        if (key !== undefined) pairs.set(key, group);
        groups.push(group);
    }
    return groups;
}
