// Bundles the page into one HTML file that asks for nothing: node build.mjs MODULE.js OUT.html
// MODULE.js is what Emscripten made; its .wasm lies beside it.
import { createHash } from "node:crypto";
import { mkdir, readFile, writeFile } from "node:fs/promises";
import { dirname, join, resolve } from "node:path";
import { fileURLToPath } from "node:url";
import { deflateSync } from "node:zlib";
import { build } from "esbuild";

const here = dirname(fileURLToPath(import.meta.url));

async function bundle(entry, options) {
    const result = await build({
        absWorkingDir: here,
        entryPoints: [entry],
        bundle: true,
        minify: true,
        charset: "utf8",
        target: "es2021",
        legalComments: "none", // notices() names them
        metafile: true,
        write: false,
        outdir: "out",
        logLevel: "warning",
        ...options,
    });
    const text = (suffix) => result.outputFiles.find((file) => file.path.endsWith(suffix))?.text ?? "";
    return { script: text(".js").trim(), style: text(".css").trim(), inputs: Object.keys(result.metafile.inputs) };
}

// The packages whose code is in the bundles, each with its licence.
async function notices(inputs) {
    const names = inputs.map((path) => /node_modules\/((?:@[^/]+\/)?[^/]+)\//.exec(path)?.[1]).filter(Boolean);
    const parts = [...new Set(names)].sort().map(async (name) => {
        const folder = join(here, "node_modules", name);
        const { version, license } = JSON.parse(await readFile(join(folder, "package.json"), "utf8"));
        const texts = ["LICENSE", "LICENSE.md", "LICENSE.txt", "license"].map((file) =>
            readFile(join(folder, file), "utf8").catch(() => ""));
        const text = (await Promise.all(texts)).find((each) => each);
        if (!text) throw new Error(`${name} says nothing of its licence`);
        return `${name} ${version} (${license})\n\n${text.trim()}\n`;
    });
    return (await Promise.all(parts)).join(`\n${"-".repeat(72)}\n\n`);
}

// Text that stands in an element whose end the browser looks for: only that end must not occur.
function inside(element, text) {
    const end = new RegExp(`</(?=${element})|<!--`, "gi");
    return text.replace(end, (found) => (found === "<!--" ? "\\x3c!--" : "<\\/"));
}

function hash(text) {
    return `'sha256-${createHash("sha256").update(text).digest("base64")}'`;
}

function dataBlock(id, type, text) {
    return `<script type="${type}" id="${id}">${text}</script>`;
}

// Nothing may be loaded but what the page holds: its one script, its styles, its worker, pictures that it drew.
function policy(script, style) {
    return [
        "default-src 'none'",
        `script-src ${hash(script)} 'wasm-unsafe-eval'`,
        `style-src ${hash(style)}`,
        "worker-src blob:",
        "img-src blob: data:",
        "connect-src 'none'",
        "base-uri 'none'",
        "form-action 'none'",
    ].join("; ");
}

// The page's own words, for what is there before its script runs.
async function words() {
    const { script } = await bundle("src/texts.ts", { format: "esm" });
    const { texts } = await import(`data:text/javascript;base64,${Buffer.from(script).toString("base64")}`);
    return texts;
}

async function page(module) {
    const { language, title, noScript } = await words();
    const worker = await bundle("src/engine/worker.ts", {
        format: "iife",
        alias: { "vxsubtitle-module": module },
        define: { "import.meta.url": '""' },
        external: ["module", "fs", "path", "crypto", "url", "node:*"],
        logOverride: { "commonjs-variable-in-esm": "silent" }, // Emscripten's file asks what kind of module it is
    });
    const main = await bundle("src/main.ts", { format: "esm" });
    const wasm = deflateSync(await readFile(module.replace(/\.m?js$/, ".wasm")), { level: 9 }).toString("base64");
    const script = inside("script", main.script);
    const style = inside("style", main.style);
    const parts = {
        language,
        title,
        noScript,
        policy: policy(script, style),
        style,
        script,
        blocks: [
            dataBlock("worker", "text/plain", inside("script", worker.script)),
            dataBlock("wasm", "application/octet-stream+deflate", wasm),
            dataBlock("notices", "text/plain", inside("script", await notices([...main.inputs, ...worker.inputs]))),
        ].join("\n"),
    };
    const frame = await readFile(join(here, "index.html"), "utf8");
    return frame.replace(/\{\{(\w+)\}\}/g, (_, name) => parts[name]);
}

const [module, out] = process.argv.slice(2);
if (!module || !out) {
    console.error("build: node build.mjs MODULE.js OUT.html");
    process.exit(2);
}
const html = await page(resolve(module));
await mkdir(dirname(resolve(out)), { recursive: true });
await writeFile(out, html);
