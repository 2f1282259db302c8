// What `vxsub report` writes: the page with files inside.
import assert from "node:assert/strict";
import { readFileSync, statSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { launch, until, withPage } from "./support/browser.mjs";
import { demoPair, run, withFolder } from "./support/native.mjs";
import { page as pageFile, root } from "./support/places.mjs";

let browser;
before(async () => (browser = await launch()));
after(() => browser.close());

/** Writes a report of files in `folder`, which takes `others` along; gives its path. */
function report(folder, names, others = []) {
    const path = join(folder, "report.html");
    const { status, errors } = run(["report", ...names, "-o", path, "--page", pageFile], folder);
    assert.equal(status, 0, errors);
    const size = (name) => statSync(join(folder, name)).size;
    const most = statSync(pageFile).size + 1.4 * [...names, ...others].reduce((sum, name) => sum + size(name), 0);
    assert.ok(statSync(path).size <= most + 200 * names.length, `${statSync(path).size} bytes`); // their names
    return path;
}

const settled = (page) => until(page, () => {
    const files = window.vxsubPage.session.files.value;
    const isSettled = document.documentElement.dataset.state === "ready" && window.vxsubPage.isComplete;
    return isSettled && files.map(({ name, state }) => `${name}: ${state}`);
});

test("a report has its files, and a link leads to an entry", () => withFolder(async (folder) => {
    for (const { name, bytes } of await demoPair()) writeFileSync(join(folder, name), bytes);
    const names = ["episode.srt", "script.ass"];
    for (const name of names) writeFileSync(join(folder, name), readFileSync(join(root, "examples/inspector", name)));
    const file = report(folder, [...names, "movie.idx"], ["movie.sub"]);
    const hash = "#file=script.ass&entry=1";
    await withPage(browser, { file, hash }, async (page) => {
        assert.deepEqual(await settled(page), ["episode.srt: opened", "script.ass: opened", "movie.idx: opened"]);
        const chosen = await until(page, () => {
            const { session, selection } = window.vxsubPage;
            return selection.entry.value === 1 && session.current.value.name;
        });
        assert.equal(chosen, "script.ass");
    });
}));

test("a block that is damaged is told, and the other files are there", () => withFolder(async (folder) => {
    for (const name of ["a.srt", "b.srt"]) writeFileSync(join(folder, name), "1\n00:00:01,000 --> 00:00:02,000\na\n");
    const file = report(folder, ["a.srt", "b.srt"]);
    const whole = readFileSync(file, "latin1");
    const damaged = whole.replace(/(data-name="a.srt">.{20})..../, "$1AAAA");
    assert.notEqual(damaged, whole);
    writeFileSync(file, damaged, "latin1");
    await withPage(browser, { file }, async (page) => {
        assert.deepEqual(await settled(page), ["b.srt: opened", "a.srt: refused"]);
        await page.getByRole("button", { name: /^a\.srt/ }).click();
        await until(page, () => document.querySelector("[role=alert]").innerText.includes("cannot be unpacked"));
    });
}));

test("a file of 300 KB makes a report of little more than the page", () => withFolder((folder) => {
    const start = (number) => `00:00:${String(number % 60).padStart(2, "0")},000`;
    const entry = (number) => `${number}\r\n${start(number)} --> 00:01:00,000\r\nEntry ${number}\r\n\r\n`;
    writeFileSync(join(folder, "long.srt"), Array.from({ length: 6000 }, (_, number) => entry(number)).join(""));
    const file = report(folder, ["long.srt"]);
    assert.ok(statSync(file).size - statSync(pageFile).size < 150e3);
}));
