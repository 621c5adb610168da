// The other side: checks every case of ours with its own parser, interpreter and key derivation, then signs cases of
// its own. Exit status 1 if anything disagrees.
//   node verify.mjs PACKAGE_FOLDER OURS.jsonl THEIRS.jsonl SEED
import { createRequire } from 'node:module';
import { createHash } from 'node:crypto';
import { readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';

const [, , packageFolder, oursFile, theirsFile, seed] = process.argv;
const sdk = createRequire(join(packageFolder, 'package.json'))('@bsv/sdk');
const { Transaction, Spend, P2PKH, Script, LockingScript, HD, Mnemonic, BSM, Signature, PublicKey, PrivateKey,
    BigNumber, Hash, TransactionSignature, Utils } = sdk;

// ---- dice that fall the same way for a seed
let rolled = 0;
const randomBytes = (count) => {
    const bytes = [];
    while (bytes.length < count) bytes.push(...createHash('sha256').update(`${seed}/${rolled++}`).digest());
    return bytes.slice(0, count);
};
const roll = (below) => Number(BigInt('0x' + Buffer.from(randomBytes(8)).toString('hex')) % BigInt(below));
const pick = (list) => list[roll(list.length)];
const flipBit = (bytes, at) => bytes.map((byte, i) => (i === at ? byte ^ (1 << roll(8)) : byte));
const bytesOf = (text) => Utils.toArray(text, 'utf8');

const faults = [];
const counts = {};
const count = (what) => { counts[what] = (counts[what] ?? 0) + 1; };
function check(right, what, line) {
    if (!right) faults.push(`DISAGREE: ${what}: ${JSON.stringify(line).slice(0, 2000)}`);
}

// ---- ours
function spendOf(tx, index, coin, lockingScript) {
    const input = tx.inputs[index];
    return new Spend({
        sourceTXID: input.sourceTXID, sourceOutputIndex: input.sourceOutputIndex, sourceSatoshis: coin.sats,
        lockingScript, transactionVersion: tx.version, otherInputs: tx.inputs.filter((_, i) => i !== index),
        outputs: tx.outputs, inputIndex: index, unlockingScript: input.unlockingScript, inputSequence: input.sequence,
        lockTime: tx.lockTime,
    });
}
// The interpreter's word on every input.
function scriptsHold(tx, coins) {
    return coins.every((_, i) => {
        try {
            return spendOf(tx, i, coins[i], new P2PKH().lock(coins[i].address)).validate();
        } catch {
            return false;
        }
    });
}
function digestOf(tx, index, coin, cache) {
    const input = tx.inputs[index];
    return Utils.toHex(Hash.hash256(TransactionSignature.format({
        sourceTXID: input.sourceTXID, sourceOutputIndex: input.sourceOutputIndex, sourceSatoshis: coin.sats,
        transactionVersion: tx.version, otherInputs: tx.inputs.filter((_, i) => i !== index), outputs: tx.outputs,
        inputIndex: index, subscript: new P2PKH().lock(coin.address), inputSequence: input.sequence,
        lockTime: tx.lockTime, scope: 0x41, cache,
    })));
}
const varIntSize = (n) => (n < 253 ? 1 : n < 0x10000 ? 3 : 5);
function expectedOutputs(line) {
    const outputs = [[line.sats, new P2PKH().lock(line.dest).toHex()]];
    if (line.memo !== '') {
        const script = new Script().writeOpCode(0).writeOpCode(0x6a).writeBin(bytesOf(line.memo));
        outputs.push([0, script.toHex()]);
    }
    return outputs;
}
function checkTransaction(line) {
    const tx = Transaction.fromHex(line.raw);
    check(tx.toHex() === line.raw, 'bytes', line);
    check(tx.id('hex') === line.txid, 'transaction id', line);
    check(tx.version === 1 && tx.lockTime === 0, 'version or lock time', line);
    check(tx.inputs.length === line.coins.length, 'number of inputs', line);
    const cache = {};
    line.coins.forEach((coin, i) => {
        const input = tx.inputs[i];
        check(input.sourceTXID === coin.txid && input.sourceOutputIndex === coin.vout, `outpoint ${i}`, line);
        check(input.sequence === 0xffffffff, `sequence ${i}`, line);
        check(digestOf(tx, i, coin, cache) === coin.digest, `digest ${i}`, line);
    });
    check(scriptsHold(tx, line.coins), 'the interpreter refuses it', line);

    // Money: payment, memo and change as asked, and the rest is the fee.
    const wanted = expectedOutputs(line);
    const made = tx.outputs.map((output) => [output.satoshis, output.lockingScript.toHex()]);
    const change = made.length > wanted.length ? made.pop() : null;
    check(JSON.stringify(made) === JSON.stringify(wanted), 'outputs', line);
    const changeScript = new P2PKH().lock(line.change_address).toHex();
    check(change === null || (change[0] > 0 && change[1] === changeScript), 'change', line);
    const paid = tx.outputs.reduce((sum, output) => sum + output.satoshis, 0);
    const fee = line.coins.reduce((sum, coin) => sum + coin.sats, 0) - paid;
    const scriptSizes = tx.outputs.map((output) => output.lockingScript.toBinary().length);
    const size = 8 + varIntSize(tx.inputs.length) + 148 * tx.inputs.length + 1 +
        scriptSizes.reduce((sum, length) => sum + 8 + varIntSize(length) + length, 0);
    // Where change did not pay for its own output, the fee with that output goes to the miners.
    const most = Math.ceil((size + 34) / 10);
    check(fee * 1000 >= 100 * tx.toBinary().length, 'fee below the rate', line);
    check(change !== null ? fee === Math.ceil(size / 10) : fee >= Math.ceil(size / 10) && fee <= most, 'fee', line);
    check(change === null ? line.fee <= fee : line.fee === fee, 'fee as told', line);

    count('transactions accepted');
    count(change === null ? 'without change' : 'with change');
    if (change !== null && change[0] === 1) count('with a change of 1');
    if (line.sats === 1) count('paying 1');
    if (line.memo !== '') count('with a memo');
    if (tx.inputs.length > 252) count('with more than 252 inputs');
    checkDamaged(line);
}
// One bit is turned anywhere behind the number of inputs (a huge number there only takes time).
function checkDamaged(line) {
    const bytes = Utils.toArray(line.raw, 'hex');
    const first = 4 + varIntSize(line.coins.length);
    const damaged = flipBit(bytes, first + roll(bytes.length - first));
    let accepted = false;
    try {
        const tx = Transaction.fromBinary(damaged);
        accepted = tx.inputs.length === line.coins.length && tx.toHex() === Utils.toHex(damaged) &&
            scriptsHold(tx, line.coins);
    } catch {
        accepted = false;
    }
    check(!accepted, 'a damaged twin is accepted', line);
    count('damaged transactions refused');
}
function checkWallet(line) {
    check(Mnemonic.isValid(line.mnemonic), 'words', line);
    const root = HD.fromSeed(Mnemonic.fromString(line.mnemonic).toSeed());
    for (const row of [...line.keys, line.show]) {
        const node = root.derive(row.path);
        check(node.pubKey.toAddress() === row.address, row.path, line);
        if (row.priv !== undefined) {
            check(node.privKey.toHex().padStart(64, '0') === row.priv && node.pubKey.toString() === row.pub, row.path,
                line);
        }
        count('keys of wallets derived alike');
    }
}
function signatureHolds(line, bytes) {
    try {
        const signer = PublicKey.fromString(line.pub);
        const text = bytesOf(line.text);
        if (line.form === 'identity') {
            const half = (from) => new BigNumber(bytes.slice(from, from + 32));
            return BSM.verify(text, new Signature(half(0), half(32)), signer);
        }
        const signature = Signature.fromCompact(bytes);
        const recovered = signature.RecoverPublicKey(bytes[0] - 31, new BigNumber(BSM.magicHash(text)));
        return recovered.toString() === line.pub && BSM.verify(text, signature, signer);
    } catch {
        return false;
    }
}
function checkMessage(line) {
    const bytes = Utils.toArray(line.signature, 'base64');
    check(bytes.length === (line.form === 'identity' ? 64 : 65), 'length of a signature', line);
    check(signatureHolds(line, bytes), 'a signed message is refused', line);
    check(!signatureHolds(line, flipBit(bytes, roll(bytes.length))), 'a damaged signature is accepted', line);
    count('messages accepted, and refused when damaged');
}

// ---- theirs
const theirs = [];
const emit = (line) => theirs.push(JSON.stringify(line));
function newKey() {
    const key = new PrivateKey(randomBytes(32));
    const pub = key.toPublicKey();
    const address = pub.toAddress();
    return { key, pub: pub.toString(), address, script: new P2PKH().lock(address).toHex() };
}
// A pool, since a public key costs this implementation some milliseconds.
const pool = Array.from({ length: 40 }, newKey);

async function makeTransaction() {
    const tx = new Transaction();
    const coins = Array.from({ length: 1 + roll(pick([3, 12])) },
        () => ({ ...pick(pool), sats: 1000 + roll(2 ** (1 + roll(50))) }));
    for (const coin of coins) {
        tx.addInput({ sourceTXID: Utils.toHex(randomBytes(32)), sourceOutputIndex: roll(4), sequence: 0xffffffff,
            unlockingScriptTemplate: new P2PKH().unlock(coin.key, 'all', false, coin.sats,
                LockingScript.fromHex(coin.script)) });
    }
    const total = coins.reduce((sum, coin) => sum + coin.sats, 0);
    let left = total - 10 * coins.length - 100;
    for (let i = 1 + roll(4); i > 0; --i) {
        const sats = i === 1 && roll(2) === 0 ? left : roll(left) + (left > 0 ? 1 : 0);
        left -= sats;
        tx.addOutput({ satoshis: sats, lockingScript: LockingScript.fromHex(pick(pool).script) });
        if (left < 1) break;
    }
    if (roll(4) === 0) {
        tx.addOutput({ satoshis: 0,
            lockingScript: new LockingScript().writeOpCode(0).writeOpCode(0x6a).writeBin(randomBytes(1 + roll(300))) });
    }
    await tx.sign();
    for (const [i, coin] of coins.entries()) {
        const input = tx.inputs[i];
        coin.preimage = Utils.toHex(TransactionSignature.format({
            sourceTXID: input.sourceTXID, sourceOutputIndex: input.sourceOutputIndex, sourceSatoshis: coin.sats,
            transactionVersion: 1, otherInputs: tx.inputs.filter((_, j) => j !== i), outputs: tx.outputs,
            inputIndex: i, subscript: LockingScript.fromHex(coin.script), inputSequence: 0xffffffff, lockTime: 0,
            scope: 0x41 }));
    }
    const line = { kind: 'transaction', good: true, txid: tx.id('hex'), raw: tx.toHex(),
        coins: coins.map(({ key, ...shown }) => shown) };
    emit(line);
    const bytes = tx.toBinary();
    emit({ ...line, good: false, raw: Utils.toHex(flipBit(bytes, roll(bytes.length))) });
}
function makeMessage() {
    const { key, pub } = pick(pool);
    const text = randomBytes(pick([0, 1, 100, 252, 253, 1000])).map((byte) => String.fromCharCode(32 + byte % 95)).join('');
    const bytes = Utils.toArray(BSM.sign(bytesOf(text), key, 'base64'), 'base64');
    const line = { kind: 'message', good: true, text, pub, signature: Utils.toHex(bytes) };
    emit(line);
    emit({ ...line, good: false, signature: Utils.toHex(flipBit(bytes, roll(bytes.length))) });
}
function makeWords() {
    const words = Mnemonic.fromEntropy(randomBytes(16)).toString();
    emit({ kind: 'words', good: Mnemonic.isValid(words), mnemonic: words });
    const changed = words.split(' ');
    const other = Mnemonic.fromEntropy(randomBytes(16)).toString().split(' ');
    const at = roll(12);
    changed[at] = other[at];
    // One in sixteen of these has the right checksum by luck: the verdict is theirs.
    emit({ kind: 'words', good: Mnemonic.isValid(changed.join(' ')), mnemonic: changed.join(' ') });
}

const judges = { wallet: checkWallet, message: checkMessage, transaction: checkTransaction };
for (const text of readFileSync(oursFile, 'utf8').split('\n').filter((row) => row !== '')) {
    const line = JSON.parse(text);
    judges[line.kind](line);
}
for (let i = 0; i < 300; ++i) await makeTransaction();
for (let i = 0; i < 100; ++i) makeMessage();
for (let i = 0; i < 100; ++i) makeWords();
writeFileSync(theirsFile, theirs.join('\n') + '\n');

for (const [what, times] of Object.entries(counts)) console.log(`ours: ${times} ${what}`);
for (const shape of ['without change', 'with change', 'with a change of 1', 'paying 1', 'with a memo',
    'with more than 252 inputs']) {
    if (!counts[shape]) faults.push(`no transaction ${shape}: the cases are not random enough`);
}
faults.slice(0, 10).forEach((fault) => console.log(fault));
if (faults.length > 0) console.log(`${faults.length} disagreements`);
process.exit(faults.length > 0 ? 1 : 0);
