// Where things lie.
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";

/** The project; bundled tests lie elsewhere and are told. */
export const root = process.env.VXSUB_ROOT || join(dirname(fileURLToPath(import.meta.url)), "../../../..");
export const here = join(root, "tools/page/test");
/** What Emscripten made: a script, and its .wasm beside it. */
export const module = process.env.MODULE || join(root, "build/web/vxsubtitle.js");
export const page = process.env.PAGE || join(root, "build/page/vxsub.html");
export const vxsub = process.env.VXSUB || join(root, "build/release/vxsub");
export const makeVobsub = process.env.MAKE_VOBSUB || join(root, "build/release/tools/samples/make_vobsub");
/** Pictures of the page, and what the tests write. */
export const results = join(root, "build/page-test");
