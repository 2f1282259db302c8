// How fast the page is. A machine with other work to do gets several tries.
import assert from "node:assert/strict";
import { mkdirSync, rmSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { launch, until, withPage } from "./support/browser.mjs";
import { results } from "./support/places.mjs";

const tries = 3;
const mostTries = 10;
const long = join(results, "long.srt");

let browser;
let entries;
before(async () => {
    mkdirSync(results, { recursive: true });
    entries = writeLong();
    browser = await launch();
});
after(() => {
    rmSync(long);
    return browser.close();
});

/** The best of a few measurements, or of some more while none is good enough: a busy machine is not busy for ever. */
async function best(better, isEnough, measure) {
    let found = await measure();
    for (let count = 1; count < tries || (count < mostTries && !isEnough(found)); ++count) {
        found = better(found, await measure());
    }
    return found;
}

test("the empty page is painted within 500 ms", async (context) => {
    const measure = async () => {
        let time;
        await withPage(browser, {}, async (page) => {
            time = await until(page, () => performance.getEntriesByName("first-contentful-paint")[0]?.startTime);
        });
        return time;
    };
    const time = await best(Math.min, (time) => time < 500, measure);
    context.diagnostic(`first paint after ${Math.round(time)} ms`);
    assert.ok(time < 500, `${time} ms`);
});

/** Writes 32 MiB of SubRip; gives the number of its entries. */
function writeLong() {
    const pad = (number, digits) => String(number).padStart(digits, "0");
    const part = (ms, unit, most) => pad(Math.floor(ms / unit) % most, 2);
    const clock = (ms) => `${part(ms, 3600000, 100)}:${part(ms, 60000, 60)}:${part(ms, 1000, 60)},${pad(ms % 1000, 3)}`;
    const entries = [];
    for (let size = 0; size < 32 << 20; size += entries.at(-1).length) {
        const [number, start] = [entries.length, entries.length * 700];
        const times = `${clock(start)} --> ${clock(start + 600)}`;
        entries.push(`${number + 1}\r\n${times}\r\nLine ${number} of a very long film\r\n\r\n`);
    }
    writeFileSync(long, entries.join(""));
    return entries.length;
}

/** Lets go of a file over the page as a hand does, and gives the milliseconds until its table is shown. */
async function dropLong(page) {
    await page.evaluate(() => {
        const isShown = () => {
            const text = document.querySelector("[role=grid] [data-index='0'] .text");
            return text && text.textContent.startsWith("Line 0 of") && !text.classList.contains("is-coming");
        };
        const drop = async () => {
            const start = performance.now();
            while (!isShown()) await new Promise((wake) => requestAnimationFrame(wake));
            window.shownAfter = performance.now() - start;
        };
        document.addEventListener("drop", () => void drop(), { capture: true });
    });
    const devtools = await page.context().newCDPSession(page);
    const data = { items: [], files: [long], dragOperationsMask: 1 };
    for (const type of ["dragEnter", "dragOver", "drop"]) {
        await devtools.send("Input.dispatchDragEvent", { type, x: 400, y: 300, data });
    }
    return until(page, () => window.shownAfter, undefined, 60_000);
}

/** Frames a second while `act`, called with the share of the way, runs in each of them for two seconds. */
function framesWhile(page, act) {
    return page.evaluate(async (source) => {
        const act = window.vxsubPage.testActs[source];
        const frame = () => new Promise((wake) => requestAnimationFrame(wake));
        const start = await frame();
        let frames = 0;
        let last = start;
        let longest = 0;
        while (last - start < 2000) {
            act((last - start) / 2000);
            const now = await frame();
            longest = Math.max(longest, now - last);
            last = now;
            frames += 1;
        }
        return { rate: (frames * 1000) / (last - start), longest };
    }, act);
}

test("32 MiB: scrolling and scrubbing stay above 30 frames a second", (context) => withPage(browser, {}, async (page) => {
    assert.ok(entries > 400_000);
    await dropLong(page);
    await page.evaluate(() => {
        const grid = document.querySelector("[role=grid]");
        const scrub = document.querySelector("#scrub");
        window.vxsubPage.testActs = {
            leap: (share) => (grid.scrollTop = share * grid.scrollHeight),
            roll: (share) => (grid.scrollTop = 1e5 + share * 6000),
            scrub: (share) => {
                scrub.value = String(share * Number(scrub.max));
                scrub.dispatchEvent(new Event("input", { bubbles: true }));
            },
        };
    });
    for (const act of ["leap", "roll", "scrub"]) {
        const faster = (one, other) => (one.rate > other.rate ? one : other);
        const { rate, longest } = await best(faster, ({ rate }) => rate >= 30, () => framesWhile(page, act));
        context.diagnostic(`${act}: ${rate.toFixed(1)} frames a second, the longest ${Math.round(longest)} ms`);
        assert.ok(rate >= 30, `${act}: ${rate} frames a second`);
    }
    const playing = await page.evaluate(() => window.vxsubPage.player.moment.value?.shown);
    assert.ok(playing > 0, "the time was moved");
}));

test("32 MiB: the table is shown within 3 s of the drop", async (context) => {
    const measure = async () => {
        let time;
        await withPage(browser, {}, async (page) => (time = await dropLong(page)));
        return time;
    };
    const time = await best(Math.min, (time) => time < 3000, measure);
    context.diagnostic(`shown after ${Math.round(time)} ms`);
    assert.ok(time < 3000, `${time} ms`);
});
