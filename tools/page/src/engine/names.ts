/** A file's name in the worker's folders: one that could lead out of them is changed. */
export function fileName(name: string): string {
    const plain = name.replaceAll('/', '_').replaceAll('\0', '_');
    return plain === '' || plain === '.' || plain === '..' ? '_' : plain;
}

/** The same for a command line, which could take it for an option. */
export function argument(name: string): string {
    const plain = fileName(name);
    return plain.startsWith('-') ? `./${plain}` : plain;
}
