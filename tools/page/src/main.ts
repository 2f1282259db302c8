/// Where the page begins.

import './style/page.css';

import { notices, startWorker, wasmModule } from './embedded';
import { createEngine } from './engine/client';
import type { FileIn } from './engine/types';
import { DeepLinks } from './session/DeepLinks';
import { embeddedFiles } from './session/embeddedFiles';
import { texts } from './texts';
import { App } from './view/App';

const engine = createEngine({ wasm: wasmModule, startWorker });
const app = new App(engine, notices());

/// For tests, and for whoever likes to look behind the page.
const { session, player, selection } = app;
const open = (files: FileIn[]): Promise<void> => session.add(files);
const face = { engine, session, player, selection, open, isComplete: false };
Object.assign(window, { vxsubPage: face });

async function openEmbedded(): Promise<void> {
    const links = new DeepLinks(session, player, selection);
    const { files, damaged } = await embeddedFiles();
    if (files.length > 0) await session.add(files);
    for (const name of damaged) session.addUnreadable(name, texts.files.damaged);
    links.start();
    face.isComplete = true; // all that the page holds is listed
}

void openEmbedded();
