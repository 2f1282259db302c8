// Panels that the other tests do not look into: the bar of a large file, the log, the source, the settings, mending.
import assert from "node:assert/strict";
import { mkdirSync, readFileSync, rmSync } from "node:fs";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { drop, dropFromDisk, launch, until, withPage } from "./support/browser.mjs";
import { writeLong } from "./support/longFilm.mjs";
import { demoPair } from "./support/native.mjs";
import { results, root } from "./support/places.mjs";

const example = (name) => ({ name, bytes: readFileSync(join(root, "examples/inspector", name)) });
const long = join(results, "panels-long.srt");

let browser;
before(async () => {
    mkdirSync(results, { recursive: true });
    browser = await launch();
});
after(() => {
    rmSync(long, { force: true });
    return browser.close();
});

/** Notes how far the first file is said to be, and what its bar shows of that, frame by frame; by what is done to it. */
const watchBar = (page) => page.evaluate(() => {
    const watched = { opening: { told: [], shown: [] }, checking: { told: [], shown: [] }, searching: { told: [], shown: [] } };
    const noted = ({ state, report }) => watched[state !== "opened" ? "opening" : report ? "searching" : "checking"];
    window.vxsubPage.session.files.follow(([item]) => {
        if (item?.progress && item.progress !== noted(item).told.at(-1)) noted(item).told.push(item.progress);
    });
    const look = () => {
        const [item] = window.vxsubPage.session.files.value;
        const bar = document.querySelector("#files progress");
        const isNow = bar && item?.progress && Math.abs(bar.value - item.progress.done) < 1e-6;
        if (isNow) noted(item).shown.push([bar.value, bar.getAttribute("aria-valuetext"), bar.ariaLabel]);
        requestAnimationFrame(look);
    };
    look();
    window.watched = watched;
});

function assertAscends({ told, shown }, stages) {
    for (const values of [told.map(({ done }) => done), shown.map(([value]) => value)]) {
        assert.deepEqual(values, [...values].sort((one, other) => one - other), "the bar never goes back");
        assert.ok(values.every((value) => value >= 0 && value <= 1), `${values}`);
    }
    assert.ok(new Set(told.map(({ done }) => done)).size >= 3, `several values: ${JSON.stringify(told)}`);
    assert.deepEqual([...new Set(told.map(({ stage }) => stage))], stages);
    assert.ok(shown.every(([, words, label]) => /…$/.test(words) && label.startsWith("Progress of")), JSON.stringify(shown));
    return new Set(shown.map(([value]) => value)).size;
}

test("the bar of a large file says how far it is", (context) => withPage(browser, {}, async (page) => {
    writeLong(long);
    await watchBar(page);
    await dropFromDisk(page, long);
    await until(page, () => window.vxsubPage.session.files.value[0]?.report, undefined, 180_000);
    await page.fill("#search", "line 77777 ");
    await until(page, () => document.querySelector("[role=grid]").getAttribute("aria-rowcount") === "2", undefined, 60_000);
    const { opening, checking, searching } = await page.evaluate(() => window.watched);
    const states = [
        assertAscends(opening, ["reading", "scanning", "tables"]),
        assertAscends(checking, ["reading", "meaning", "scanning", "texts", "comparing"]),
        assertAscends(searching, ["searching"]),
    ];
    // a search may be over between two frames
    assert.ok(states[0] > 0 && states[1] > 0, `states of the bar: ${states.join(", ")}`);
    context.diagnostic(`states of the bar while the file is opened, checked, searched: ${states.join(", ")}`);
    await until(page, () => document.querySelector("#files progress") === null);
}));

test("the library's log is seen, also of a file that it refuses", () => withPage(browser, {}, async (page) => {
    const letter = { name: "letter.sub", bytes: Buffer.from("Dear reader,\n") };
    await drop(page, [example("film.sub"), letter, ...(await demoPair())]);
    const look = async (name) => {
        await page.evaluate((name) => {
            const { session } = window.vxsubPage;
            session.current.value = session.files.value.find((item) => item.name === name);
        }, name);
        return (text) => until(page, (text) => document.querySelector("#log").innerText.includes(text), text);
    };
    const ofFilm = await look("film.sub");
    await page.click("#log summary");
    await ofFilm("D/SubtitleParserSUB: SubtitleParserSUB::BeginParse - Try Subviewer 2.0");
    await ofFilm("D/SubtitleParserSubMicroDVD: SubtitleParserSubMicroDVD::ParserThread -> Finished : Tag num = 2, 1");
    await (await look("letter.sub"))("SubtitleParserSUB::BeginParse - Try MicroDVD");
    await (await look("movie.idx"))("we will not use these informations");
}));

test("the source shows lines, line ends, marks and the chosen entry's bytes", () => withPage(browser, {}, async (page) => {
    const text = "\ufeff1\r\n00:00:01,000 --> 00:00:02,000\r\nfirst \u200bone\r\n\r\n2\n00:00:03,000 --> 00:00:04,000\nsecond\u00e4\n";
    await drop(page, [{ name: "a.srt", bytes: Buffer.from(text) }]);
    await page.evaluate(() => (window.vxsubPage.selection.tab.value = "source"));
    const lines = () => [...document.querySelectorAll(".source-line:not([hidden])")]
        .map((row) => [...row.children].map((part) => part.textContent));
    await until(page, () => document.querySelectorAll(".source-line:not([hidden]) .ending").length >= 7
        && document.querySelector(".source-line .code").textContent !== "");
    const shown = (await page.evaluate(lines)).sort(([one], [other]) => one - other);
    assert.deepEqual(shown.slice(0, 3), [
        ["1", "BOM1", "CR LF"],
        ["2", "00:00:01,000 --> 00:00:02,000", "CR LF"],
        ["3", "first ZWSPone", "CR LF"],
    ]);
    assert.deepEqual(shown[4], ["5", "2", "LF"]);
    await page.evaluate(() => window.vxsubPage.selection.choose(1));
    const marked = await until(page, () => {
        const marks = [...document.querySelectorAll(".source-line:not([hidden]) mark")].map((mark) => mark.textContent);
        return marks.join("").includes("second") && marks;
    });
    assert.deepEqual(marked.filter(Boolean), ["second\u00e4"]);
    await page.evaluate(() => window.vxsubPage.selection.showLine(6));
    await until(page, () => document.querySelector(".source-line.is-aim .number")?.textContent === "6");
    const facts = await page.textContent(".source-facts");
    assert.match(facts, /UTF-8 · 7 lines · .*UTF-8 byte-order mark/);
}));

/** Fills in the dialog and applies it; says whether it was taken. */
async function settle(page, fields) {
    await page.evaluate(() => [...document.querySelectorAll(".page-head button")].find((button) =>
        button.ariaLabel?.startsWith("Television settings")).click());
    for (const [label, value] of Object.entries(fields)) await page.getByLabel(label, { exact: true }).fill(value);
    await page.getByRole("button", { name: "Apply" }).click();
    const isTaken = await page.evaluate(() => document.querySelector("dialog[open]") === null);
    if (!isTaken) await page.keyboard.press("Escape");
    return isTaken;
}

test("settings are taken from their least to their largest, and no others", () => withPage(browser, {}, async (page) => {
    await drop(page, [example("film.sub"), ...(await demoPair())]);
    const rate = "Frames a second";
    const size = (width, height) => ({ "Width in pixels": width, "Height in pixels": height });
    for (const wrong of [{ [rate]: "0.5" }, { [rate]: "1000" }, { [rate]: "-25" }, size("15", "16"), size("4097", "16"), size("", "16")])
        assert.equal(await settle(page, wrong), false, JSON.stringify(wrong));
    const settings = () => page.evaluate(() => window.vxsubPage.session.settings.value);
    const state = () => until(page, () => document.documentElement.dataset.state === "ready"
        && window.vxsubPage.session.files.value.map(({ state }) => state));
    for (const [frames, width, height] of [["1", "16", "16"], ["999.999", "4096", "4096"], ["23.976", "16", "4096"]]) {
        assert.equal(await settle(page, { [rate]: frames, ...size(width, height) }), true);
        const { framesPerSecond, surfaceWidth, surfaceHeight } = await settings();
        assert.deepEqual([framesPerSecond, surfaceWidth, surfaceHeight].map(String), [frames, width, height]);
        assert.deepEqual(await state(), ["opened", "opened"]);
    }
}));

test("a mended index is opened with its pictures", () => withPage(browser, {}, async (page) => {
    await drop(page, await demoPair());
    await page.click("[data-tab=mend]");
    await page.click("#panel-mend button[type=submit]");
    await until(page, () => document.querySelector("#panel-mend a[download]"));
    await page.click("#panel-mend .offers button");
    const copy = await until(page, () => {
        const item = window.vxsubPage.session.files.value[1];
        return document.documentElement.dataset.state === "ready" && item && [item.name, item.state, item.result.count];
    });
    assert.deepEqual(copy, ["movie.fixed.idx", "opened", 8]);
}));
