// A headless Chromium with the page in it, and a watch over everything that the page must not do.
import assert from "node:assert/strict";
import { pathToFileURL } from "node:url";
import { chromium } from "playwright-core";
import { page as pageFile } from "./places.mjs";

export const desktop = { viewport: { width: 1360, height: 850 } };
export const phone = { viewport: { width: 390, height: 844 }, deviceScaleFactor: 2, isMobile: true, hasTouch: true };

/** Requests that a page may make: itself, and what it holds. */
const isOwn = (url, address) => url.split("#")[0] === address || /^(blob|data|about):/.test(url);

export function launch() {
    const root = process.getuid?.() === 0 ? ["--no-sandbox"] : [];
    const executablePath = process.env.CHROMIUM || "/usr/bin/chromium";
    return chromium.launch({ executablePath, args: [...root, "--disable-dev-shm-usage"] });
}

/** What a page did that it must not do. */
class Watch {
    complaints = [];
    requests = [];

    async over(context, address) {
        await context.route("**/*", (route) => {
            if (isOwn(route.request().url(), address)) return route.continue();
            this.requests.push(route.request().url());
            return route.abort();
        });
        context.on("request", (request) => {
            if (!isOwn(request.url(), address)) this.requests.push(request.url());
        });
        context.on("console", (message) => {
            if (["error", "warning"].includes(message.type())) this.complaints.push(message.text());
        });
        context.on("weberror", (error) => this.complaints.push(String(error.error().stack)));
    }

    assertQuiet() {
        assert.deepEqual(this.requests, [], "the page asks for nothing");
        assert.deepEqual(this.complaints, [], "the console stays empty");
    }
}

/** Opens the page, lets `use` drive it, and sees that it asked for nothing and complained of nothing. */
export async function withPage(browser, options, use) {
    const { hash = "", file = pageFile, mayComplain = false, ...contextOptions } = options;
    const address = pathToFileURL(file).href;
    const context = await browser.newContext({ ...desktop, ...contextOptions });
    try {
        const watch = new Watch();
        await watch.over(context, address);
        const page = await context.newPage();
        await page.goto(address + hash);
        await use(page, watch);
        if (!mayComplain) watch.assertQuiet();
    } finally {
        await context.close();
    }
}

// The functions below that take `page` first run in the page by page.evaluate, which the policy does not hinder.

/** Drops files ({name, bytes}) all at once, and waits until each of them is settled. */
export async function drop(page, files, limitMs = 60_000) {
    const packed = files.map(({ name, bytes }) => ({ name, base64: Buffer.from(bytes).toString("base64") }));
    await page.evaluate(
        async ([packed, limitMs]) => {
            const transfer = new DataTransfer();
            for (const { name, base64 } of packed) {
                transfer.items.add(new File([Uint8Array.from(atob(base64), (unit) => unit.charCodeAt(0))], name));
            }
            document.body.dispatchEvent(new DragEvent("drop", { bubbles: true, cancelable: true, dataTransfer: transfer }));
            const end = performance.now() + limitMs;
            while (document.documentElement.dataset.state !== "ready") {
                if (performance.now() > end) throw new Error(`${packed.map(({ name }) => name)}: not settled in time`);
                await new Promise((wake) => setTimeout(wake, 4));
            }
        },
        [packed, limitMs],
    );
}

/** Lets go of a file of the disk over the page, as a hand does. */
export async function dropFromDisk(page, path) {
    const devtools = await page.context().newCDPSession(page);
    const data = { items: [], files: [path], dragOperationsMask: 1 };
    for (const type of ["dragEnter", "dragOver", "drop"]) {
        await devtools.send("Input.dispatchDragEvent", { type, x: 400, y: 300, data });
    }
}

/** Waits until `look`, which runs in the page, gives something true, and returns it. */
export async function until(page, look, argument, limitMs = 20_000) {
    const end = Date.now() + limitMs;
    for (;;) {
        const seen = await page.evaluate(look, argument);
        if (seen) return seen;
        assert.ok(Date.now() < end, `not seen in ${limitMs} ms: ${look}`);
        await page.waitForTimeout(20);
    }
}
