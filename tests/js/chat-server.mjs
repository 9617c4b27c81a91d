// The chat's socket by another library: a CONNECT proxy that leads to a WebSocket server over TLS, at one port. The
// token of a login says what the server does next; the second time, it sends one message.
//   stdin: a line {"certificate", "key", "sentences"}; its end ends the program
//   stdout: the port, then a line for everything that happens

import { createServer as createProxy } from 'node:http';
import { createServer } from 'node:https';
import { createInterface } from 'node:readline';
import { WebSocketServer } from 'ws';

const say = line => process.stdout.write(`${line}\n`);

const message = text => Buffer.from(JSON.stringify(
    { event: 'chatMessage', data: { _id: 'm', threadId: 'T', createdBy: 'peer', messageComponent: { text } } }));
const sendText = (socket, bytes) => socket.send(bytes, { binary: false });

function serve({ certificate, key, sentences }) {
    const plays = {
        /// A byte a frame, and a ping in the middle.
        pieces(socket) {
            for (const bytes of sentences.map(message)) {
                for (let i = 0; i < bytes.length; ++i) {
                    socket.send(bytes.subarray(i, i + 1), { binary: false, fin: i + 1 === bytes.length });
                    if (i === bytes.length >> 1)
                        socket.ping('beat');
                }
            }
        },
        size(socket, bytes) { sendText(socket, message('x'.repeat(bytes - message('').length))); },
        reset(socket) { socket.carrier.resetAndDestroy(); },
    };

    const carriers = new Map(); // the TCP sockets beneath TLS, by their ports
    const played = new Set();
    const tls = createServer({ cert: certificate, key });
    new WebSocketServer({ server: tls, path: '/ws' }).on('connection', (socket, request) => {
        socket.carrier = carriers.get(request.socket.remotePort);
        socket.on('error', () => { });
        socket.on('pong', data => say(`pong ${data}`));
        socket.on('close', code => say(`closed ${code}`));
        socket.on('message', (bytes, isBinary) => {
            const { event, data } = JSON.parse(bytes);
            say([isBinary ? 'binary' : 'text', event, data.originalEvent ?? data.token].join(' '));
            if (event !== 'login')
                return;
            const [play, argument] = data.token.split(' ');
            if (played.has(data.token))
                sendText(socket, message('again'));
            else
                plays[play](socket, argument);
            played.add(data.token);
        });
    });
    const proxy = createProxy().on('connect', (request, carrier) => {
        carrier.on('error', () => { });
        carrier.write('HTTP/1.1 200 Connection established\r\n\r\n');
        carriers.set(carrier.remotePort, carrier);
        tls.emit('connection', carrier);
    });
    proxy.listen(0, '127.0.0.1', () => say(proxy.address().port));
}

createInterface(process.stdin)
    .once('line', line => serve(JSON.parse(line)))
    .once('close', () => process.exit());
