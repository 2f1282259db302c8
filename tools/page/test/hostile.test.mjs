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

/** What is dropped at once: one file, or both halves of a pair under one name. */
async function hostileDrops() {
    const chance = new Chance(14);
    const films = (await allFilms()).map(({ files }) => files);
    const pairs = films.filter(({ length }) => length === 2);
    const groups = [...seeds().map((seed) => [seed]), ...films].filter((files) =>
        files.every(({ bytes }) => bytes.length < 1 << 18));
    const sources = groups.flat();
    return Array.from({ length: count }, (_, number) => {
        const from = number % 5 === 0 ? pairs : groups;
        return from[chance.below(from.length)].map(({ name, bytes }) => ({
            name: `${number}-${name}`,
            bytes: chance.below(4) === 0 ? bytes : mutated(bytes, chance, sources),
        }));
    });
}

/** Looks at the newest file from all sides: table, pictures, source, the screen at its end, a search. */
const lookAt = (page) => page.evaluate(async () => {
    const { session, selection, player } = window.vxsubPage;
    const item = session.files.value.at(-1);
    session.current.value = item;
    const count = item.state === "opened" ? item.result.count : 0;
    const isPictures = count > 0 && item.result.isPictures;
    for (const tab of ["source", isPictures ? "pictures" : "entries"]) {
        selection.tab.value = tab;
        for (const index of [0, count >> 1, count - 1]) if (index >= 0 && index < count) selection.choose(index);
    }
    player.seek(player.length.value);
    await session.ask(item, (engine, id) => engine.source(id, 1, 64));
    if (count > 0) await session.ask(item, async (engine, id) => {
        await engine.entry(id, 0);
        return isPictures ? engine.picture(id, count - 1) : engine.search(id, "a");
    });
    return isPictures;
});

/** The texts of a file as the engine gives them now. */
const textsOf = (page, name) => page.evaluate(async (name) => {
    const { engine, session } = window.vxsubPage;
    const { result } = session.files.value.find((item) => item.name === name);
    return engine.texts(result.id, 0, result.count);
}, name);

const states = (page) => page.evaluate(() => window.vxsubPage.session.files.value.map(({ name, state }) => [name, state]));

test(`${count} times mutated files, one drop after another`, (context) => withPage(browser, {}, async (page) => {
    await drop(page, [good]);
    const before = await textsOf(page, "good.ass");
    const drops = await hostileDrops();
    const start = Date.now();
    let drawn = 0;
    for (let first = 0; first < drops.length; first += batch) {
        for (const files of drops.slice(first, first + batch)) {
            await drop(page, files, 30_000);
            drawn += await lookAt(page);
        }
        assert.deepEqual(await textsOf(page, "good.ass"), before, `after ${drops[first][0].name}`);
    }
    context.diagnostic(`${drawn} of them pairs with pictures`);
    assert.ok(drawn > count / 50, "pairs are opened, and their pictures asked for");
    context.diagnostic(`${count} drops in ${Math.round((Date.now() - start) / 1000)} s`);
    const all = await states(page);
    const countOf = (kind) => all.filter(([, state]) => state === kind).length;
    context.diagnostic(["opened", "refused", "lonely", "broken"].map((kind) => `${kind}: ${countOf(kind)}`).join(", "));
    assert.equal(all.filter(([, state]) => ["waiting", "opening"].includes(state)).length, 0, "every file is settled");
    assert.ok(all.length > count * 0.9, `${all.length} files are listed`);
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
        const workers = page.workers();
        for (const worker of workers) await worker.evaluate(act);
        while (page.workers().some((worker) => workers.includes(worker))) await page.waitForTimeout(20);
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
