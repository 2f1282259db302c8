// Where things lie.
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";

export const here = dirname(dirname(fileURLToPath(import.meta.url)));
export const root = dirname(dirname(dirname(here)));
export const page = process.env.PAGE || join(root, "build/page/vxsub.html");
export const vxsub = process.env.VXSUB || join(root, "build/release/vxsub");
export const makeVobsub = process.env.MAKE_VOBSUB || join(root, "build/release/tools/samples/make_vobsub");
/** Pictures of the page, and what the tests write. */
export const results = join(root, "build/page-test");
