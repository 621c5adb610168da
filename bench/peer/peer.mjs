// The peer: addresses derived, and one send built and signed, by another implementation.
//   node peer.mjs PACKAGE_FOLDER > RESULTS.json
// Prints processor times in the form of the other measurements; of each, the best of a few.
import { createRequire } from 'node:module';
import { join } from 'node:path';

const sdk = createRequire(join(process.argv[2], 'package.json'))('@bsv/sdk');
const { Transaction, P2PKH, HD, Mnemonic, PrivateKey } = sdk;

const results = [];
async function measure(name, times, work) {
    let best = Infinity;
    for (let i = 0; i < times; ++i) {
        const begin = process.cpuUsage();
        await work();
        const took = process.cpuUsage(begin);
        best = Math.min(best, (took.user + took.system) / 1000);
    }
    results.push({ name, run_type: 'iteration', cpu_time: best, real_time: best, time_unit: 'ms' });
}

const words = 'abandon abandon abandon abandon abandon abandon abandon abandon abandon abandon abandon about';
const chain = HD.fromSeed(new Mnemonic(words).toSeed()).derive("m/44'/236'/1'/0");
for (const count of [40, 400]) {
    await measure(`peer_addresses_derived/${count}`, count > 100 ? 1 : 2, () => {
        for (let i = 1; i <= count; ++i) chain.deriveChild(i).privKey.toPublicKey().toAddress();
    });
}

const key = new PrivateKey(1234567);
const script = new P2PKH().lock(key.toPublicKey().toAddress());
async function buildAndSign(count) {
    const tx = new Transaction();
    for (let i = 0; i < count; ++i) {
        tx.addInput({
            sourceTXID: i.toString(16).padStart(64, 'a'), sourceOutputIndex: i % 7,
            unlockingScriptTemplate: new P2PKH().unlock(key, 'all', false, 10000, script),
        });
    }
    tx.addOutput({ lockingScript: script, satoshis: count * 9000 });
    await tx.sign();
    return tx.id('hex');
}
await buildAndSign(20);
for (const count of [1, 10, 100, 1000]) {
    await measure(`peer_built_and_signed/${count}`, count > 100 ? 1 : 3, () => buildAndSign(count));
}
console.log(JSON.stringify({ benchmarks: results }));
