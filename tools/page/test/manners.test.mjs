// What the page owes everyone: it asks for nothing, everybody can use it, and it is small.
import assert from "node:assert/strict";
import { once } from "node:events";
import { readFileSync, statSync } from "node:fs";
import { createServer } from "node:http";
import { createRequire } from "node:module";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { pathToFileURL } from "node:url";
import { desktop, drop, launch, phone, until, withPage } from "./support/browser.mjs";
import { demoPair } from "./support/native.mjs";
import { page as pageFile, root } from "./support/places.mjs";

const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");
const example = (name) => ({ name, bytes: readFileSync(join(root, "examples/inspector", name)) });

let browser;
before(async () => (browser = await launch()));
after(() => browser.close());

test("the page is at most 1.5 MB", () => {
    const { size } = statSync(pageFile);
    assert.ok(size <= 1.5e6, `${size} bytes`);
});

test("its policy lets nothing be loaded from anywhere", () => {
    const [, policy] = /Content-Security-Policy" content="([^"]*)"/.exec(readFileSync(pageFile, "utf8"));
    assert.match(policy, /default-src 'none'/);
    assert.match(policy, /connect-src 'none'/);
    assert.doesNotMatch(policy, /https?:|\*|'unsafe-inline'|'unsafe-eval'/);
});

test("neither the page nor a worker of it reaches anybody", async () => {
    const visits = [];
    const server = createServer((request, answer) => {
        visits.push(request.url);
        answer.end("");
    }).listen(0, "127.0.0.1");
    await once(server, "listening");
    const address = `http://127.0.0.1:${server.address().port}/`;
    const context = await browser.newContext();
    const page = await context.newPage();
    await page.goto(pathToFileURL(pageFile).href);
    await drop(page, [example("episode.srt")]);
    const ways = {
        fetch: (address) => fetch(address, { mode: "no-cors" }).then(() => "answered", () => "refused"),
        WebSocket: (address) => new Promise((told) => {
            try {
                const socket = new WebSocket(address.replace("http", "ws"));
                socket.onopen = () => told("answered");
                socket.onerror = () => told("refused");
            } catch {
                told("refused");
            }
        }),
        EventSource: (address) => new Promise((told) => {
            try {
                const source = new EventSource(address);
                source.onopen = () => told("answered");
                source.onerror = () => told("refused");
            } catch {
                told("refused");
            }
        }),
    };
    const inWorkers = {
        importScripts: (address) => {
            try {
                importScripts(address);
                return "answered";
            } catch {
                return "refused";
            }
        },
        import: (address) => import(address).then(() => "answered", () => "refused"),
    };
    const workers = page.workers();
    assert.ok(workers.length > 0, "the page has workers");
    const tries = [...Object.entries(ways).flatMap((way) => [page, ...workers].map((asker) => [asker, ...way])),
        ...Object.entries(inWorkers).flatMap((way) => workers.map((asker) => [asker, ...way]))];
    for (const [asker, way, ask] of tries) assert.equal(await asker.evaluate(ask, `${address}${way}`), "refused", way);
    await page.evaluate((address) => {
        navigator.sendBeacon(`${address}beacon`, "");
        new Image().src = `${address}picture`;
        for (const tag of ["iframe", "script", "video"]) {
            document.body.appendChild(document.createElement(tag)).src = `${address}${tag}`;
        }
        const link = document.head.appendChild(document.createElement("link"));
        Object.assign(link, { rel: "stylesheet", href: `${address}style` });
    }, address);
    await page.waitForTimeout(500);
    await context.close();
    assert.deepEqual(visits, []);
    await fetch(`${address}seen`);
    assert.deepEqual(visits, ["/seen"], "whoever comes is seen");
    server.close();
});

/** Drives the page through all that it shows, and gives `look` every state of it. */
async function everyState(page, look) {
    await look("empty");
    const letter = { name: "letter.srt", bytes: Buffer.from("Dear reader,\n") };
    await drop(page, [example("episode.srt"), ...(await demoPair()), letter]);
    await until(page, () => window.vxsubPage.session.files.value.every((item) => item.report));
    await page.evaluate(() => (document.querySelector("#log").open = true));
    for (const name of ["episode.srt", "movie.idx", "letter.srt"]) {
        await page.evaluate((name) => {
            const { session } = window.vxsubPage;
            session.current.value = session.files.value.find((item) => item.name === name);
        }, name);
        for (const tab of ["entries", "findings", "source", "pictures", "mend"]) {
            const isThere = await page.evaluate((tab) => {
                const button = document.querySelector(`[data-tab=${tab}]`);
                button.click();
                return !button.hidden;
            }, tab);
            if (!isThere) continue;
            await page.waitForTimeout(60);
            await look(`${name}, ${tab}`);
        }
    }
}

const devices = { "desktop, light": desktop, "desktop, dark": { ...desktop, colorScheme: "dark" }, phone };

for (const [kind, options] of Object.entries(devices)) {
    test(`axe has no serious finding: ${kind}`, () => withPage(browser, options, async (page) => {
        await page.evaluate(axe);
        await everyState(page, async (state) => {
            const found = await page.evaluate(async () => (await window.axe.run(document)).violations);
            const serious = found.filter(({ impact }) => ["serious", "critical"].includes(impact));
            const places = (nodes) => nodes.slice(0, 3).map(({ html }) => html.slice(0, 160)).join(" | ");
            const told = serious.map(({ id, nodes }) => `${id}: ${places(nodes)}`);
            assert.deepEqual(told, [], state);
        });
    }));
}

test("a phone's width is enough", () => withPage(browser, phone, (page) => everyState(page, async (state) => {
    const [content, window_] = await page.evaluate(() => [document.documentElement.scrollWidth, innerWidth]);
    assert.ok(content <= window_, `${state}: ${content} pixels wide on a screen of ${window_}`);
})));

test("the keyboard reaches everything", () => withPage(browser, {}, async (page) => {
    await drop(page, [example("episode.srt")]);
    const { length } = await page.evaluate(() => ({ length: window.vxsubPage.session.current.value.result.count }));
    const entry = () => page.evaluate(() => window.vxsubPage.selection.entry.value);
    await page.evaluate(() => document.querySelector("[role=grid]").focus());
    await page.keyboard.press("End");
    assert.equal(await entry(), length - 1);
    await page.keyboard.press("ArrowUp");
    assert.equal(await entry(), length - 2);
    await page.keyboard.press("/");
    await page.keyboard.type("previously");
    await until(page, () => document.querySelector("[role=grid]").getAttribute("aria-rowcount") === "2");
    const reached = new Set();
    for (let presses = 0; presses < 80; ++presses) {
        await page.keyboard.press("Tab");
        reached.add(await page.evaluate(() => document.activeElement.id || document.activeElement.ariaLabel));
    }
    for (const name of ["scrub", "tab-entries", "Open files", "Play time on the time line", "Play"]) {
        assert.ok(reached.has(name), `${name} is reached; ${[...reached].join(", ")}`);
    }
    await page.evaluate(() => document.activeElement.blur());
    await page.keyboard.press("2");
    await until(page, () => document.querySelector("[data-tab=findings]").getAttribute("aria-selected") === "true");
    await page.keyboard.press(" ");
    await until(page, () => window.vxsubPage.player.isPlaying.value);
}));

test("a mended copy is offered, and shows every entry", () => withPage(browser, { acceptDownloads: true }, async (page) => {
    await drop(page, [example("episode.srt")]);
    await page.click("[data-tab=mend]");
    await page.click("#panel-mend button[type=submit]");
    await until(page, () => document.querySelector("#panel-mend a[download]"));
    const [download] = await Promise.all([page.waitForEvent("download"), page.click("#panel-mend a[download]")]);
    assert.equal(download.suggestedFilename(), "episode.fixed.srt");
    const bytes = readFileSync(await download.path());
    await drop(page, [{ name: "episode.fixed.srt", bytes }]);
    const report = await until(page, () => window.vxsubPage.session.files.value.at(-1).report);
    assert.equal(report.status, 0);
    assert.equal(report.right, report.meant);
}));
