// The inspector as it runs in a terminal: what the page is held against.
import { execFileSync, spawnSync } from "node:child_process";
import { mkdtempSync, readdirSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { readPng } from "./png.mjs";
import { makeVobsub, vxsub } from "./places.mjs";

export function run(args, cwd) {
    const { status, stdout, stderr } = spawnSync(vxsub, args, { cwd, maxBuffer: 1 << 30 });
    return { status, output: stdout, errors: stderr.toString() };
}

export function json(args, cwd) {
    const { status, output } = run(args, cwd);
    return status === 0 ? JSON.parse(output.toString()) : null;
}

/** Calls `use` with a folder that is gone afterwards. */
export async function withFolder(use) {
    const folder = mkdtempSync(join(tmpdir(), "vxsub-page-"));
    try {
        return await use(folder);
    } finally {
        rmSync(folder, { recursive: true, force: true });
    }
}

/** Every picture of an index, by its entry: {width, height, rgba} of the whole surface. */
export function pictures(file, cwd) {
    return withFolder((folder) => {
        run(["render", file, "--all", "--background", "none", "-o", folder], cwd);
        const files = readdirSync(folder).filter((name) => name.endsWith(".png"));
        return new Map(files.map((name) => [Number.parseInt(name, 10), readPng(readFileSync(join(folder, name)))]));
    });
}

/** The pair of index and pictures that the demo draws. */
export function demoPair() {
    return withFolder((folder) => {
        execFileSync(makeVobsub, [join(folder, "movie.idx")]);
        return ["movie.idx", "movie.sub"].map((name) => ({ name, bytes: readFileSync(join(folder, name)) }));
    });
}
