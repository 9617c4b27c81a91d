// The other side of benchmarks/compare/kit-speaking: milliseconds from the call to the first piece of sound, as one JSON array.
//   CONFERA_SANDBOX=... node first-sound.mjs SENTENCES

import { readFileSync } from 'node:fs';
import sdk from 'microsoft-cognitiveservices-speech-sdk';
import { startSandbox } from './sandbox.mjs';

const sentences = readFileSync(process.argv[2], 'utf8').trim().split('\n');
const sandbox = await startSandbox();
const times = [];
for (const sentence of sentences) {
    const called = performance.now();
    const config = sandbox.speechConfig();
    config.speechSynthesisVoiceName = 'en-US-AriaNeural';
    config.speechSynthesisOutputFormat = sdk.SpeechSynthesisOutputFormat.Raw16Khz16BitMonoPcm;
    const synthesizer = new sdk.SpeechSynthesizer(config, null);
    let first;
    synthesizer.synthesizing = () => { first ??= performance.now(); };
    await new Promise((resolve, reject) => synthesizer.speakTextAsync(sentence, resolve, reject));
    times.push(first - called);
    synthesizer.close();
}
console.log(JSON.stringify(times));
await sandbox.stop();
