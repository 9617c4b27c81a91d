import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import sdk from 'microsoft-cognitiveservices-speech-sdk';

import { recognise, speak, startSandbox } from './sandbox.mjs';

const limit = { timeout: 120_000 };
const silence = seconds => Buffer.alloc(32000 * seconds);

let sandbox;
before(async () => { sandbox = await startSandbox(); });
after(async () => { await sandbox?.stop(); });

for (const { voice, language, sentences } of [
    { voice: 'en-US-AriaNeural', language: 'en-US', sentences: ['Good morning.', 'What is your name?'] },
    { voice: 'hi-IN-SwaraNeural', language: 'hi-IN', sentences: ['सुप्रभात।', 'आपका नाम क्या है?'] },
]) {
    test(`two sentences of ${language} are dictated in one stream`, limit, async () => {
        const spoken = [];
        for (const sentence of sentences)
            spoken.push((await speak(sandbox.speechConfig(), voice, sentence)).pcm);
        const pcm = Buffer.concat([silence(0.5), spoken[0], silence(1.5), spoken[1], silence(1)]);
        const secondFrom = 0.5 + spoken[0].length / 32000 + 1.5;

        const report = await recognise(sandbox.speechConfig(), language, pcm);

        assert.deepEqual(report.phrases.map(phrase => phrase.text), sentences);
        const [first, second] = report.phrases;
        const seconds = pcm.length / 32000;
        assert.ok(Math.abs(first.offset - 0.5) < 0.3, `first at ${first.offset}`);
        assert.ok(Math.abs(second.offset - secondFrom) < 0.3, `second at ${second.offset}, spoken at ${secondFrom}`);
        assert.ok(second.duration > 0.3 && second.offset + second.duration < seconds, `takes ${second.duration}`);
        assert.ok(report.hypotheses.length >= 2);
        assert.equal(report.noMatches, 0);
        assert.equal(report.canceled.reason, sdk.CancellationReason.EndOfStream);
    });
}

for (const [voice, text] of [
    ['en-US-AriaNeural', 'Fish & chips, "please".'],
    ['en-IN-NeerjaNeural', 'Good morning.'],
    ['gu-IN-DhwaniNeural', 'તમે કેમ છો?'],
    ['te-IN-ShrutiNeural', 'శుభోదయం.'],
]) {
    test(`${voice} speaks in pieces`, limit, async () => {
        const { pcm, duration, pieces } = await speak(sandbox.speechConfig(), voice, text);
        assert.ok(pieces.length > 3);
        assert.ok(pcm.some(byte => byte !== 0));
        assert.equal(duration, pcm.length / 2 * 625);
    });
}

test('a wrong key is refused by both services', limit, async () => {
    const report = await recognise(sandbox.speechConfig('wrong'), 'en-US', silence(1));
    assert.equal(report.canceled.reason, sdk.CancellationReason.Error);
    assert.equal(report.canceled.code, sdk.CancellationErrorCode.ConnectionFailure);
    assert.match(report.canceled.details, /Unexpected server response: 401/);
    await assert.rejects(speak(sandbox.speechConfig('wrong'), 'en-US-AriaNeural', 'Hello.'),
        /Unexpected server response: 401/);
});

test('an unknown voice is refused by name', limit, async () => {
    await assert.rejects(speak(sandbox.speechConfig(), 'xx-XX-NobodyNeural', 'Hello.'),
        { message: 'Unsupported voice xx-XX-NobodyNeural. websocket error code: 1007',
          code: sdk.CancellationErrorCode.BadRequestParameters });
});
