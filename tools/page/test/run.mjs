// Runs the page's tests: node run.mjs. Tests of single parts are TypeScript and bundled first; those of the whole page
// drive a browser, one after another, so that they do not measure each other.
import { spawnSync } from "node:child_process";
import { mkdirSync, readdirSync, rmSync } from "node:fs";
import { join, resolve } from "node:path";
import { build } from "esbuild";
import { here, module, results, root } from "./support/places.mjs";

const units = join(root, "build/page-test/units");

async function bundleUnits() {
    const sources = readdirSync(here).filter((name) => name.endsWith(".test.ts"));
    rmSync(units, { recursive: true, force: true });
    await build({
        absWorkingDir: here,
        entryPoints: sources,
        outdir: units,
        bundle: true,
        platform: "node",
        format: "esm",
        alias: { "vxsubtitle-module": module },
        logOverride: { "commonjs-variable-in-esm": "silent" },
        external: ["fs", "path"],
        outExtension: { ".js": ".mjs" },
        sourcemap: "inline",
        logLevel: "warning",
    });
    return sources.map((name) => join(units, name.replace(/\.ts$/, ".mjs")));
}

mkdirSync(results, { recursive: true });
const wanted = process.argv.slice(2);
const browserTests = readdirSync(here).filter((name) => name.endsWith(".test.mjs")).map((name) => join(here, name));
const files = [...(await bundleUnits()), ...browserTests].filter((file) => wanted.length === 0 || wanted.some((word) => file.includes(word)));
if (files.length === 0) throw new Error(`no test is called ${wanted.join(" ")}`);
const options = ["--enable-source-maps", "--test", "--test-concurrency=1", "--test-reporter=spec"];
const samples = process.env.SAMPLES && resolve(process.env.SAMPLES);
const env = { ...process.env, VXSUB_ROOT: root, ...(samples && { SAMPLES: samples }) };
process.exit(spawnSync(process.execPath, [...options, ...files], { stdio: "inherit", env }).status ?? 1);
