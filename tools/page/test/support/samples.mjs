// The films that the page is tried with: our own, and those of the folder SAMPLES.
import { readdirSync, readFileSync, statSync } from "node:fs";
import { basename, dirname, extname, join } from "node:path";
import { demoPair } from "./native.mjs";
import { root } from "./places.mjs";

const endings = [".srt", ".ass", ".ssa", ".smi", ".sami", ".txt", ".sub", ".idx"];

function filesBelow(folder) {
    return readdirSync(folder).sort().flatMap((name) => {
        const path = join(folder, name);
        return statSync(path).isDirectory() ? filesBelow(path) : [path];
    });
}

const isFilm = (path) => endings.includes(extname(path).toLowerCase());

/** Paths of all subtitle files. */
export const filmFilesBelow = (folder) => filesBelow(folder).filter(isFilm);

const read = (path) => ({ name: basename(path), bytes: readFileSync(path) });

/** A film is what is dropped together: {label, files}; the first file is the one that vxsub is given. */
export function filmsBelow(folder) {
    const paths = filmFilesBelow(folder);
    const pictures = (index) => index.replace(/\.idx$/, ".sub");
    const taken = new Set(paths.filter((path) => path.endsWith(".idx")).map(pictures));
    return paths.filter((path) => !taken.has(path)).map((path) => ({
        label: join(basename(dirname(path)), basename(path)),
        files: (path.endsWith(".idx") ? [path, pictures(path)] : [path]).filter((each) => paths.includes(each)).map(read),
    }));
}

export const ownFolders = ["tests/meant/files", "examples"].map((folder) => join(root, folder));

async function ownFilms() {
    return [...ownFolders.flatMap(filmsBelow), { label: "demo/movie.idx", files: await demoPair() }];
}

export async function allFilms() {
    const { SAMPLES } = process.env;
    return [...(await ownFilms()), ...(SAMPLES ? filmsBelow(SAMPLES) : [])];
}

/** The seeds of the fuzz targets, as files of their format. */
export function seeds() {
    const dialects = { sv10: "sub", sv20: "sub", microdvd: "sub", dvb: "sub" };
    const formats = { srt: "srt", ssa: "ssa", smi: "smi", txt: "txt", sub: "sub", idx: "idx", ...dialects };
    return Object.entries(formats).flatMap(([target, ending]) => {
        const name = (path) => `${target}-${basename(path).slice(0, 12)}.${ending}`;
        return filesBelow(join(root, "fuzz/corpus", target)).map((path) => ({ ...read(path), name: name(path) }));
    });
}
