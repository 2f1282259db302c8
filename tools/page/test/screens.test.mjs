// Pictures of the page, for people: build/page-test/*.png.
import { readFileSync } from "node:fs";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { desktop, drop, launch, phone, until, withPage } from "./support/browser.mjs";
import { demoPair } from "./support/native.mjs";
import { results, root } from "./support/places.mjs";

const example = (name) => ({ name, bytes: readFileSync(join(root, "examples/inspector", name)) });
const demo = { name: "demo.srt", bytes: readFileSync(join(root, "examples/demo.srt")) };

let browser;
before(async () => (browser = await launch()));
after(() => browser.close());

const dark = { ...desktop, colorScheme: "dark" };
const letter = { name: "letter.srt", bytes: Buffer.from("Dear reader,\n\nall is well here.\n") };
const examples = ["episode.srt", "russian.srt", "script.ass"].map(example);
const several = async () => [demo, ...examples, ...(await demoPair())];

/** name of the picture: [device, what is dropped, which of it is looked at, its tab] */
const screens = {
    "empty": [desktop, () => []],
    "empty-phone": [phone, () => []],
    "desktop-light": [desktop, several, "demo.srt", "entries"],
    "desktop-dark": [dark, several, "demo.srt", "entries"],
    "phone": [phone, several, "episode.srt", "entries"],
    "phone-findings": [phone, several, "episode.srt", "findings"],
    "vobsub": [desktop, demoPair, "movie.idx", "pictures"],
    "vobsub-dark": [dark, demoPair, "movie.idx", "entries"],
    "findings": [desktop, several, "episode.srt", "findings"],
    "source": [dark, several, "episode.srt", "source"],
    "log": [desktop, () => [demo, example("film.sub")], "film.sub", "entries"],
    "mend": [desktop, several, "episode.srt", "mend"],
    "broken": [desktop, () => [demo, letter], "letter.srt", "findings"],
};

async function prepare(page, name, tab) {
    await until(page, () => window.vxsubPage.session.files.value.every((item) => item.report));
    await page.evaluate(([name, tab]) => {
        const { session, player, selection } = window.vxsubPage;
        session.current.value = session.files.value.find((item) => item.name === name);
        selection.tab.value = tab;
        const { result } = session.current.value;
        if (result.kind !== "opened") return;
        selection.choose(Math.min(1, result.count - 1));
        player.seek(result.starts[Math.min(1, result.count - 1)] + 1);
    }, [name, tab]);
    if (tab === "mend") {
        await page.click("#panel-mend button[type=submit]");
        await until(page, () => document.querySelector("#panel-mend a[download]"));
    }
    if (name === "film.sub") {
        await page.click("#log summary");
        await page.locator("#log").scrollIntoViewIfNeeded();
    }
    await page.waitForTimeout(400);
}

for (const [name, [device, files, shown, tab]] of Object.entries(screens)) {
    test(`a picture of it: ${name}`, () => withPage(browser, device, async (page) => {
        const dropped = await files();
        if (dropped.length > 0) await drop(page, dropped);
        if (shown) await prepare(page, shown, tab);
        await page.screenshot({ path: join(results, `${name}.png`) });
        if (device === phone) await page.screenshot({ path: join(results, `${name}-whole.png`), fullPage: true });
    }));
}
