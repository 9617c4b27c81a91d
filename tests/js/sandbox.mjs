// Starts confera-sandbox on ports of its own and points the speech client at it.

import { spawn } from 'node:child_process';
import { readFileSync } from 'node:fs';
import { mkdtemp, rm } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import tls from 'node:tls';
import sdk from 'microsoft-cognitiveservices-speech-sdk';

export const key = 'key-of-the-judge';
export const region = 'westeurope';

export async function startSandbox() {
    const program = process.env.CONFERA_SANDBOX;
    if (!program)
        throw new Error('CONFERA_SANDBOX does not name the program');
    const data = await mkdtemp(join(tmpdir(), 'confera-judge-'));
    const child = spawn(program, ['--data', data, '--speech-key', key, '--stop-with-parent'],
        { stdio: ['pipe', 'pipe', 'inherit'] });
    const exited = new Promise(resolve => child.once('exit', resolve));
    const line = await Promise.race([
        new Promise(resolve => createInterface(child.stdout).once('line', resolve)),
        new Promise((_, reject) => child.once('error', reject)),
        exited.then(code => { throw new Error(`confera-sandbox ended with ${code}`); }),
    ]);
    const ready = JSON.parse(line);
    trust(readFileSync(ready.ca, 'utf8'));
    return {
        speechConfig(subscriptionKey = key) {
            const config = sdk.SpeechConfig.fromSubscription(subscriptionKey, region);
            config.setProxy('127.0.0.1', ready.proxy);
            return config;
        },
        async stop() {
            child.stdin.end();
            await exited;
            await rm(data, { recursive: true });
        },
    };
}

// The client has no setting for it, and NODE_EXTRA_CA_CERTS is read before there is an authority.
function trust(authority) {
    const create = tls.createSecureContext;
    tls.createSecureContext = options => {
        const context = create(options);
        context.context.addCACert(authority);
        return context;
    };
}

/// 16 kHz mono PCM of `text`, without a header; rejects with the client's own words.
export async function speak(config, voice, text) {
    config.speechSynthesisVoiceName = voice;
    config.speechSynthesisOutputFormat = sdk.SpeechSynthesisOutputFormat.Raw16Khz16BitMonoPcm;
    const synthesizer = new sdk.SpeechSynthesizer(config, null);
    const pieces = [];
    synthesizer.synthesizing = (_, event) => pieces.push(event.result.audioData.byteLength);
    try {
        const result = await new Promise((resolve, reject) => synthesizer.speakTextAsync(text, resolve, reject));
        if (result.reason !== sdk.ResultReason.SynthesizingAudioCompleted) {
            throw Object.assign(new Error(result.errorDetails),
                { code: sdk.CancellationDetails.fromResult(result).ErrorCode });
        }
        return { pcm: Buffer.from(result.audioData), duration: result.audioDuration, pieces };
    } finally {
        synthesizer.close();
    }
}

/// Recognises all of `pcm` in one stream, dictation switched on; resolves with what the client reported.
export async function recognise(config, language, pcm) {
    config.speechRecognitionLanguage = language;
    config.enableDictation();
    const stream = sdk.AudioInputStream.createPushStream();
    const recogniser = new sdk.SpeechRecognizer(config, sdk.AudioConfig.fromStreamInput(stream));
    const report = { phrases: [], hypotheses: [], noMatches: 0, canceled: null };
    recogniser.recognizing = (_, event) => report.hypotheses.push(event.result.text);
    recogniser.recognized = (_, { result }) => {
        if (result.reason === sdk.ResultReason.RecognizedSpeech)
            report.phrases.push({ text: result.text, offset: result.offset / 1e7, duration: result.duration / 1e7 });
        else
            ++report.noMatches;
    };
    recogniser.canceled = (_, event) => {
        report.canceled = { reason: event.reason, code: event.errorCode, details: event.errorDetails };
        if (event.reason === sdk.CancellationReason.Error)
            finish();
    };
    let finish;
    const finished = new Promise(resolve => { finish = resolve; });
    recogniser.sessionStopped = () => finish();
    await new Promise((resolve, reject) => recogniser.startContinuousRecognitionAsync(resolve, reject))
        .catch(() => { });  // reported as a cancellation as well
    stream.write(pcm.buffer.slice(pcm.byteOffset, pcm.byteOffset + pcm.byteLength));
    stream.close();
    await finished;
    await new Promise(resolve => recogniser.close(resolve, resolve));
    return report;
}
