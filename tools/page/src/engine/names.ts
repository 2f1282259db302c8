/** Halves of characters, which no file system of the worker can name. */
const halves = /\p{Surrogate}/gu;

/** A file's name in the worker's folders: one that could lead out of them is changed. */
export function fileName(name: string): string {
    const plain = name.replaceAll('/', '_').replaceAll('\0', '_').replace(halves, '\ufffd');
    return plain === '' || plain === '.' || plain === '..' ? '_' : plain;
}

/** The same for a command line, which could take it for an option. */
export function argument(name: string): string {
    const plain = fileName(name);
    return plain.startsWith('-') ? `./${plain}` : plain;
}

/** The name under which an index looks for its pictures. */
export function picturesOf(index: string): string {
    return index.replace(/\.[^.]*$/, '') + '.sub';
}
