// Bounds of time on machines that are slower than the one they were set for, or have other work to do.
import assert from "node:assert/strict";

/** Milliseconds that `work` takes on the machine that the bounds were set for, when it has nothing else to do. */
const usual = 100;
const mostTries = 5;
/** However slow the machine is, a bound is stretched no further. */
const mostSlowness = 5;

/** Some work of a fixed size, in the page. */
function work() {
    const start = performance.now();
    let state = 1;
    for (let i = 0; i < 5e7; ++i) state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
    return performance.now() - start + (state & 0);
}

/** How many times longer than usual this machine takes just now; at least 1. */
async function slowness(browser) {
    const page = await browser.newPage();
    try {
        return Math.min(mostSlowness, Math.max(1, (await page.evaluate(work)) / usual));
    } finally {
        await page.close();
    }
}

const rounded = (number) => Number(number.toFixed(number < 10 ? 2 : 0));

/**
 * Measures until a figure is good, a few times at most: `isGood(figure, slowness)` is told how slow the machine was
 * meanwhile. Says what was measured.
 */
export async function measureUntilGood({ browser, context, what, unit, measure, isGood }) {
    const tried = [];
    for (let tries = 0; tries < mostTries; ++tries) {
        const before = await slowness(browser);
        const figure = await measure();
        const slow = Math.max(before, await slowness(browser));
        tried.push(`${rounded(figure)} ${unit} on a machine ${rounded(slow)} times as slow as usual`);
        if (!isGood(figure, slow)) continue;
        context.diagnostic(`${what}: ${tried.join("; ")}`);
        return figure;
    }
    return assert.fail(`${what}: ${tried.join("; ")}`);
}
