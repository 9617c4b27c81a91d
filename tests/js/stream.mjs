// The other side of benchmarks/compare/kit-recognition: streams a raw file at the speed of sound and prints the cost as JSON.
//   CONFERA_SANDBOX=... node stream.mjs FILE.pcm

import { readFileSync } from 'node:fs';
import sdk from 'microsoft-cognitiveservices-speech-sdk';
import { startSandbox } from './sandbox.mjs';

const pcm = readFileSync(process.argv[2]);
const sandbox = await startSandbox();
const before = process.cpuUsage();
const config = sandbox.speechConfig();
config.speechRecognitionLanguage = 'en-US';
config.enableDictation();
const stream = sdk.AudioInputStream.createPushStream();
const recogniser = new sdk.SpeechRecognizer(config, sdk.AudioConfig.fromStreamInput(stream));
let phrases = 0;
let lastByte;
let lastResult = performance.now();
recogniser.recognized = (_, event) => {
    phrases += event.result.text ? 1 : 0;
    lastResult = performance.now();
};
const over = new Promise(resolve => { recogniser.canceled = resolve; });
recogniser.startContinuousRecognitionAsync();
let offset = 0;
const pace = setInterval(() => {
    const piece = pcm.subarray(offset, offset += 3200);
    if (piece.length)
        stream.write(piece.buffer.slice(piece.byteOffset, piece.byteOffset + piece.length));
    else {
        lastByte = performance.now();
        stream.close();
        clearInterval(pace);
    }
}, 100);
await over;
const { user, system } = process.cpuUsage(before);
const { maxRSS } = process.resourceUsage();
console.log(JSON.stringify({
    phrases,
    cpuMs: Math.round((user + system) / 1000),
    peakMiB: Math.round(maxRSS / 1024),
    lastResultMs: lastResult - lastByte,
}));
recogniser.close();
await sandbox.stop();
