// Nothing that is dropped takes the page down, and files that came before stay.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { drop, launch, until, withPage } from "./support/browser.mjs";
import { Chance, mutated } from "./support/mutations.mjs";
import { root } from "./support/places.mjs";
import { allFilms, seeds } from "./support/samples.mjs";

const count = Number(process.env.COUNT || 1000);
const batch = 50;
const good = { name: "good.ass", bytes: readFileSync(join(root, "examples/inspector/script.ass")) };

let browser;
before(async () => (browser = await launch()));
after(() => browser.close());

async function hostileFiles() {
    const chance = new Chance(14);
    const films = (await allFilms()).flatMap(({ files }) => files);
    const sources = [...seeds(), ...films].filter(({ bytes }) => bytes.length < 1 << 18);
    return Array.from({ length: count }, (_, number) => {
        const source = sources[chance.below(sources.length)];
        return { name: `${number}-${source.name}`, bytes: mutated(source.bytes, chance, sources) };
    });
}

/** The texts of a file as the engine gives them now. */
const textsOf = (page, name) => page.evaluate(async (name) => {
    const { engine, session } = window.vxsubPage;
    const { result } = session.files.value.find((item) => item.name === name);
    return engine.texts(result.id, 0, result.count);
}, name);

const states = (page) => page.evaluate(() => window.vxsubPage.session.files.value.map(({ name, state }) => [name, state]));

test(`${count} mutated files one after another`, (context) => withPage(browser, {}, async (page) => {
    await drop(page, [good]);
    const before = await textsOf(page, "good.ass");
    const files = await hostileFiles();
    const start = Date.now();
    for (let first = 0; first < files.length; first += batch) {
        for (const file of files.slice(first, first + batch)) await drop(page, [file], 30_000);
        assert.deepEqual(await textsOf(page, "good.ass"), before, `after ${files[first].name}`);
    }
    context.diagnostic(`${count} files in ${Math.round((Date.now() - start) / 1000)} s`);
    const all = await states(page);
    const countOf = (kind) => all.filter(([, state]) => state === kind).length;
    context.diagnostic(["opened", "refused", "lonely", "broken"].map((kind) => `${kind}: ${countOf(kind)}`).join(", "));
    assert.equal(all.filter(([, state]) => ["waiting", "opening"].includes(state)).length, 0, "every file is settled");
    assert.ok(all.length > count * 0.9, `${all.length} files are listed`); // halves of pairs find each other
    assert.equal(countOf("broken"), 0, "no file broke the worker");
}));

const harms = {
    "throws": () => setTimeout(() => { throw new Error("out of order"); }),
    "ends": () => close(),
};

for (const [harm, act] of Object.entries(harms)) {
    test(`a worker that ${harm} is replaced`, () => withPage(browser, { mayComplain: true }, async (page, watch) => {
        await drop(page, [good]);
        const before = await textsOf(page, "good.ass");
        await until(page, () => window.vxsubPage.session.files.value.every((item) => item.report));
        for (const worker of page.workers()) await worker.evaluate(act);
        await page.waitForTimeout(100);
        await page.evaluate(() => window.vxsubPage.engine.vocabulary().catch(() => null));
        await drop(page, [{ ...good, name: "later.ass" }]);
        const again = await until(page, async () => {
            const { engine, session } = window.vxsubPage;
            const item = session.files.value.find(({ name }) => name === "later.ass");
            return item.state === "opened" && engine.texts(item.result.id, 0, item.result.count).catch(() => null);
        });
        assert.deepEqual(again, before);
        assert.deepEqual(await textsOf(page, "good.ass"), before, "the file from before");
        assert.deepEqual(watch.requests, []);
    }));
}
