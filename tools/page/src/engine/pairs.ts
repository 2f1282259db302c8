import type { FileIn } from './types';

/** Files that are opened together: an index and, if it is there, its pictures' file; or one file alone. */
export interface Group {
    files: FileIn[];
    lacks: 'index' | 'pictures' | null;
}

function splitName(name: string): { stem: string; ending: string } {
    const point = name.lastIndexOf('.');
    if (point < 0) return { stem: name.toLowerCase(), ending: '' };
    return { stem: name.slice(0, point).toLowerCase(), ending: name.slice(point + 1).toLowerCase() };
}

const known = new WeakMap<Blob, Promise<boolean>>();

async function beginsAsStream(data: Blob): Promise<boolean> {
    const [a, b, c, d] = new Uint8Array(await data.slice(0, 4).arrayBuffer());
    return a === 0 && b === 0 && c === 1 && d === 0xba;
}

/** Pictures begin as an MPEG-2 program stream does; a text of the same ending, or what cannot be read, does not. */
export function isPictureStream(data: Blob): Promise<boolean> {
    let answer = known.get(data);
    if (!answer) known.set(data, (answer = beginsAsStream(data).catch(() => false)));
    return answer;
}

/** Puts halves of pairs together by their names, whatever the letter case. */
export async function groupsOf(files: FileIn[]): Promise<Group[]> {
    const groups: Group[] = [];
    const indexes = new Map<string, Group>();
    for (const file of files) {
        const { stem, ending } = splitName(file.name);
        const group: Group = { files: [file], lacks: ending === 'idx' ? 'pictures' : null };
        if (ending === 'idx') indexes.set(stem, group);
        groups.push(group);
    }
    for (const group of [...groups]) {
        const file = group.files[0]!;
        const { stem, ending } = splitName(file.name);
        if (ending !== 'sub') continue;
        const index = indexes.get(stem);
        if (index?.lacks === 'pictures') {
            index.files.push(file);
            index.lacks = null;
            groups.splice(groups.indexOf(group), 1);
        } else if (await isPictureStream(file.data)) {
            group.lacks = 'index';
        }
    }
    return groups;
}
