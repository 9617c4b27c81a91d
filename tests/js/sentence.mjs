// Writes a sentence as the sandbox speaks it to standard output: 16 kHz, 16-bit, mono, without a header.
//   CONFERA_SANDBOX=... node sentence.mjs TEXT

import { speak, startSandbox } from './sandbox.mjs';

const sandbox = await startSandbox();
const { pcm } = await speak(sandbox.speechConfig(), 'en-US-AriaNeural', process.argv[2]);
process.stdout.write(pcm);
await sandbox.stop();
