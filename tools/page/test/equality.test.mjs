// Table, texts and pictures of the page are those of vxsub, film by film.
import assert from "node:assert/strict";
import { writeFileSync } from "node:fs";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { drop, launch, until, withPage } from "./support/browser.mjs";
import * as native from "./support/native.mjs";
import { allFilms } from "./support/samples.mjs";

let browser;
before(async () => (browser = await launch()));
after(() => browser.close());

/** vxsub's own command line inside the page, over the film's files. */
async function runInside(page, film, args) {
    const packed = film.files.map(({ name, bytes }) => ({ name, base64: bytes.toString("base64") }));
    const { status, output } = await page.evaluate(
        async ([packed, args]) => {
            const unpack = (base64) => Uint8Array.from(atob(base64), (unit) => unit.charCodeAt(0));
            const files = packed.map(({ name, base64 }) => ({ name, data: new Blob([unpack(base64)]) }));
            const { status, output } = await window.vxsubPage.engine.run(files, args);
            let text = "";
            for (const unit of output) text += String.fromCharCode(unit);
            return { status, output: btoa(text) };
        },
        [packed, args],
    );
    return { status, output: Buffer.from(output, "base64").toString() };
}

/** Every row of the table, collected by scrolling through it: [index, start, end, text]. */
function tableRows(page) {
    return page.evaluate(async () => {
        const frame = () => new Promise((wake) => requestAnimationFrame(wake));
        document.querySelector("[data-tab=entries]").click();
        const grid = document.querySelector("[role=grid]");
        const count = Number(grid.getAttribute("aria-rowcount")) - 1;
        const rows = new Map();
        for (const end = performance.now() + 60_000; rows.size < count && performance.now() < end; ) {
            for (const row of grid.querySelectorAll("[data-index]:not([hidden])")) {
                const text = row.querySelector(".text");
                if (text.classList.contains("is-coming")) continue;
                const cell = (name) => row.querySelector(`.${name}`).textContent;
                rows.set(Number(row.dataset.index), [cell("start"), cell("end"), text.textContent]);
            }
            const coming = grid.querySelector("[data-index]:not([hidden]) .is-coming");
            if (!coming) grid.scrollTop += grid.clientHeight / 2;
            await frame();
            await frame();
        }
        return [...rows].sort(([one], [other]) => one - other).map(([index, cells]) => [index, ...cells]);
    });
}

/** The same of what `vxsub list` prints. */
function listedRows(listing) {
    const row = /^ *(\d+) .*?(\d\d+:\d\d:\d\d,\d{3}) --> (the next|\S+)(?: {2}(.*))?$/; // no blanks at a line's end
    return listing.split("\n").map((line) => row.exec(line)).filter(Boolean)
        .map(([, index, start, end, text = ""]) => [Number(index), start, end, text.replace(/^\((no )?picture .*/, "(picture)")]);
}

/** What the engine answers for the file that is looked at: as in `vxsub list --json --raw`. */
function entries(page) {
    return page.evaluate(async () => {
        const { engine, session } = window.vxsubPage;
        const { id, count, starts, ends } = session.current.value.result;
        const all = [];
        for (let index = 0; index < count; ++index) {
            const { text, units } = await engine.entry(id, index);
            const end = ends[index] === 0xffffffff ? null : ends[index];
            all.push({ index, start: starts[index], end, text, units: [...units] });
        }
        return all;
    });
}

function moment(page, time) {
    return page.evaluate(async (time) => {
        const { engine, session } = window.vxsubPage;
        const { shown, why } = await engine.at(session.current.value.result.id, 0, time);
        return { shown, why };
    }, time);
}

/** The pixels that the engine hands out, laid on an empty surface. */
async function surface(page, index) {
    const picture = await page.evaluate(async (index) => {
        const { engine, session } = window.vxsubPage;
        const { rgba, ...rest } = await engine.picture(session.current.value.result.id, index);
        let text = "";
        for (let at = 0; at < rgba.length; at += 8192) text += String.fromCharCode(...rgba.subarray(at, at + 8192));
        return { ...rest, base64: btoa(text) };
    }, index);
    const pixels = Buffer.from(picture.base64, "base64");
    const whole = Buffer.alloc(picture.surfaceWidth * picture.surfaceHeight * 4);
    for (let y = 0; y < picture.height; ++y) {
        const to = ((picture.top + y) * picture.surfaceWidth + picture.left) * 4;
        pixels.copy(whole, to, y * picture.width * 4, (y + 1) * picture.width * 4);
    }
    return { width: picture.surfaceWidth, height: picture.surfaceHeight, rgba: whole, why: picture.why };
}

/** What is seen of a surface: pixels that let all through have no colour. */
function seen({ width, height, rgba }) {
    const copy = Buffer.from(rgba);
    for (let at = 0; at < copy.length; at += 4) {
        if (copy[at + 3] === 0) copy.fill(0, at, at + 4);
    }
    return { width, height, rgba: copy };
}

async function compareTexts(page, listed) {
    const expected = listed.entries.map(({ index, start, end, text, units }) => ({ index, start, end, text, units }));
    assert.deepEqual(await entries(page), expected, "texts and units");
}

async function compareMoments(page, name, folder, listed) {
    const chosen = [0, listed.entries.length >> 1, listed.entries.length - 1].map((place) => listed.entries[place]);
    for (const time of new Set(chosen.flatMap(({ start, end }) => [start, end ?? start + 1]))) {
        const answer = native.json(["at", name, String(time), "--json"], folder);
        const { shown, why } = await moment(page, time);
        assert.deepEqual([shown, why], [answer.entry?.index ?? -1, answer.why ?? ""], `at ${time} ms`);
    }
}

async function comparePictures(page, drawn, count) {
    for (let index = 0; index < count; ++index) {
        const ours = await surface(page, index);
        const theirs = drawn.get(index);
        if (!theirs) assert.notEqual(ours.why, "", `picture ${index} is not seen`);
        else assert.ok(Buffer.compare(seen(ours).rgba, seen(theirs).rgba) === 0, `picture ${index}`);
    }
}

/** What the screen shows once it has come to a play time: the entry, its text, and of pictures the canvas. */
async function stageAt(page, time) {
    await page.evaluate((time) => window.vxsubPage.player.seek(time), time);
    return until(page, async (time) => {
        const { player, session } = window.vxsubPage;
        const [stage, canvas] = [document.querySelector("#stage"), document.querySelector("#stage canvas")];
        const { moment } = player;
        if (moment.value?.time !== Math.floor(player.time.value) || player.time.value !== time) return null;
        const shown = stage.dataset.shown === "" ? null : Number(stage.dataset.shown);
        if (shown !== (moment.value.shown < 0 ? null : moment.value.shown)) return null;
        const text = stage.innerText;
        if (shown === null || !session.current.value.result.isPictures) return { shown, text };
        if (canvas.hidden || canvas.dataset.entry !== String(shown)) return null; // to be drawn yet
        const { width, height } = canvas;
        const copy = new OffscreenCanvas(width, height).getContext("2d", { willReadFrequently: true });
        copy.drawImage(canvas, 0, 0);
        const pixels = copy.getImageData(0, 0, width, height).data;
        let bytes = "";
        for (let at = 0; at < pixels.length; at += 8192) bytes += String.fromCharCode(...pixels.subarray(at, at + 8192));
        return { shown, text, width, height, base64: btoa(bytes) };
    }, time);
}

/** A canvas keeps the colours of what nothing is seen through; of the rest it rounds them. */
function sameOnCanvas(canvas, drawn) {
    for (let at = 0; at < drawn.length; at += 4) {
        const most = drawn[at + 3] === 255 ? 0 : drawn[at + 3] === 0 ? 255 : Math.ceil(255 / drawn[at + 3]);
        if (canvas[at + 3] !== drawn[at + 3]) return false;
        for (let k = 0; k < 3; ++k) if (Math.abs(canvas[at + k] - drawn[at + k]) > most) return false;
    }
    return canvas.length === drawn.length;
}

/** The screen shows what vxsub shows at that time; `pictures` are those that vxsub draws. */
async function compareStage(page, name, folder, { entries }, told, pictures) {
    for (const { start } of new Set([entries[0], entries[entries.length >> 1], entries.at(-1)])) {
        const length = await page.evaluate(() => window.vxsubPage.player.length.value);
        if (start > length) continue; // as with an end before the start
        const { shown, text, width, height, base64 } = await stageAt(page, start);
        const answer = native.json(["at", name, String(start), "--json", ...told], folder);
        assert.equal(shown, answer.entry?.index ?? null, `the entry on the screen at ${start} ms`);
        const plain = (words) => words.replace(/\s+/g, " ").trim();
        if (!base64) {
            const [, ...lines] = native.run(["at", name, String(start), ...told], folder).output.toString().split("\n");
            const words = answer.entry ? plain(lines.join(" ")) : "";
            assert.equal(plain(text), words === "(no text)" ? "" : words, `the text on the screen at ${start} ms`);
            continue;
        }
        const drawn = pictures.get(shown);
        const expected = drawn?.rgba ?? Buffer.alloc(width * height * 4);
        assert.ok(sameOnCanvas(Buffer.from(base64, "base64"), expected), `the picture on the screen at ${start} ms`);
    }
}

/** The page's guess of a code page is its own: where it differs, both are told what vxsub took. */
async function agree(page, film, name, folder) {
    const { texts } = native.json(["info", name, "--json"], folder);
    if (!texts) return []; // pictures
    const inside = JSON.parse((await runInside(page, film, ["info", name, "--json"])).output).texts;
    if (inside.encoding === texts.encoding) return [];
    return ["--native", texts.encoding];
}

/** Looks at the film that was dropped last, with the code page that is told. */
function lookAt(page, codePage) {
    return page.evaluate(async (codePage) => {
        const { session } = window.vxsubPage;
        session.current.value = session.files.value.at(-1);
        if (codePage !== session.settings.value.codePage) await session.apply({ ...session.settings.value, codePage });
    }, codePage);
}

/** Compares a film that is open; says how. */
async function compareFilm(page, film, folder) {
    const { name } = film.files[0];
    const told = await agree(page, film, name, folder);
    const args = ["list", name, "--json", "--raw", ...told];
    const listing = native.run(args, folder).output.toString();
    assert.equal((await runInside(page, film, args)).output, listing, "the listing");
    await lookAt(page, told[1] ?? "");
    const rows = listedRows(native.run(["list", name, ...told], folder).output.toString());
    assert.deepEqual(await tableRows(page), rows, "the table");
    const listed = JSON.parse(listing);
    if (listed.entries.length === 0) return "no entries";
    if (listed.entries[0].units) await compareTexts(page, listed);
    const pictures = listed.entries[0].units ? null : await native.pictures(name, folder);
    if (pictures) await comparePictures(page, pictures, listed.entries.length);
    await compareStage(page, name, folder, listed, told, pictures);
    await compareMoments(page, name, folder, listed);
    return told.length > 0 ? `both are told ${told[1]}` : "";
}

async function tryFilm(page, film, folder) {
    for (const { name, bytes } of film.files) writeFileSync(join(folder, name), bytes);
    await drop(page, film.files);
    const kind = await page.evaluate(() => window.vxsubPage.session.files.value.at(-1).state);
    const isShown = native.run(["list", film.files[0].name], folder).status === 0;
    assert.equal(kind, isShown ? "opened" : "refused");
    const how = isShown ? await compareFilm(page, film, folder) : kind;
    await page.evaluate(() => window.vxsubPage.session.remove(window.vxsubPage.session.files.value.at(-1)));
    return how;
}

test("every film is as vxsub shows it", (all) => withPage(browser, {}, async (page) => {
    const films = await allFilms();
    assert.ok(films.length > 20, `${films.length} films`);
    for (const film of films) {
        await all.test(film.label, (one) => native.withFolder(async (folder) => {
            const how = await tryFilm(page, film, folder);
            if (how) one.diagnostic(`${film.label}: ${how}`);
        }));
    }
}));
