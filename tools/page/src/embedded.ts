// What build.mjs puts into the page beside its script: blocks of data that the browser does not run. The blocks stand
// behind the script, which as a module runs when the whole document is there.

function block(id: string): string {
    return document.getElementById(id)?.textContent ?? "";
}

/** The bytes of a block in base64 of zlib-wrapped deflate. */
export async function unpack(base64: string): Promise<Uint8Array<ArrayBuffer>> {
    const units = atob(base64);
    const packed = new Uint8Array(units.length);
    for (let at = 0; at < units.length; ++at) packed[at] = units.charCodeAt(at);
    const stream = new Blob([packed]).stream().pipeThrough(new DecompressionStream("deflate"));
    return new Uint8Array(await new Response(stream).arrayBuffer());
}

let compiled: Promise<WebAssembly.Module> | undefined;

/** The library, compiled once for all workers. */
export function wasmModule(): Promise<WebAssembly.Module> {
    return (compiled ??= unpack(block("wasm")).then((bytes) => WebAssembly.compile(bytes)));
}

let workerUrl = "";

/** A worker that runs src/engine/worker.ts. */
export function startWorker(): Worker {
    workerUrl ||= URL.createObjectURL(new Blob([block("worker")], { type: "text/javascript" }));
    return new Worker(workerUrl);
}

/** The licences of the packages that the page contains. */
export function notices(): string {
    return block("notices");
}
