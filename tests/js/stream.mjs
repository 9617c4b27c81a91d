// The other side of benchmarks/compare/recognition: streams a raw file at the speed of sound and prints the cost.
//   CONFERA_SANDBOX=... node stream.mjs FILE.pcm

import { readFileSync } from 'node:fs';
import sdk from 'microsoft-cognitiveservices-speech-sdk';
import { startSandbox } from './sandbox.mjs';

const pcm = readFileSync(process.argv[2]);
const sandbox = await startSandbox();
const config = sandbox.speechConfig();
config.speechRecognitionLanguage = 'en-US';
config.enableDictation();
const stream = sdk.AudioInputStream.createPushStream();
const recogniser = new sdk.SpeechRecognizer(config, sdk.AudioConfig.fromStreamInput(stream));
let phrases = 0;
recogniser.recognized = (_, event) => { phrases += event.result.text ? 1 : 0; };
const over = new Promise(resolve => { recogniser.canceled = resolve; });
recogniser.startContinuousRecognitionAsync();
let offset = 0;
const pace = setInterval(() => {
    const piece = pcm.subarray(offset, offset += 3200);
    if (piece.length)
        stream.write(piece.buffer.slice(piece.byteOffset, piece.byteOffset + piece.length));
    else {
        stream.close();
        clearInterval(pace);
    }
}, 100);
await over;
const { user, system } = process.cpuUsage();
const { maxRSS } = process.resourceUsage();
console.log(`vendor's JavaScript client: ${phrases} phrases, CPU ${Math.round((user + system) / 1000)} ms, `
    + `peak memory ${Math.round(maxRSS / 1024)} MiB`);
recogniser.close();
await sandbox.stop();
