/** What Emscripten makes of the library; the bundler knows where it lies. */
declare module 'vxsubtitle-module' {
    export interface Folder {
        mkdir(path: string): void;
        rmdir(path: string): void;
        chdir(path: string): void;
        readdir(path: string): string[];
        unlink(path: string): void;
        writeFile(path: string, bytes: Uint8Array, options?: { canOwn: boolean }): void;
        readFile(path: string): Uint8Array;
        lookupPath(path: string): { node: { contents: Uint8Array | null; usedBytes: number } };
        stat(path: string): { mode: number };
        isFile(mode: number): boolean;
    }

    export interface Module {
        FS: Folder;
        HEAPU8: Uint8Array;
        _malloc(size: number): number;
        _free(at: number): void;
        _vx_call(request: number): number;
        UTF8ToString(at: number): string;
        stringToUTF8(text: string, at: number, room: number): void;
        lengthBytesUTF8(text: string): number;
    }

    export default function createLibrary(options: {
        instantiateWasm(
            imports: WebAssembly.Imports,
            done: (instance: WebAssembly.Instance) => void,
        ): Record<string, never>;
        guessEncoding(bytes: Uint8Array): string;
        tellStage(stage: string, done: number): void;
        print(line: string): void;
        printErr(line: string): void;
    }): Promise<Module>;
}
