// Prints one table of what scripts/bench has measured, at most 110 columns wide.
//   node table.mjs FOLDER      its *.json are results; "failed.tsv" names parts that have none, with the reason
// A line: the case, the time of this program, its peer or floor in the same run with its time, the ratio, how many times
// the time grows when the work grows tenfold, and the aim with what came of it.
import { existsSync, readFileSync, readdirSync } from 'node:fs';

const folder = process.argv[2];
const failed = [];
if (existsSync(`${folder}/failed.tsv`))
    for (const row of readFileSync(`${folder}/failed.tsv`, 'utf8').trim().split('\n')) failed.push(row.split('\t'));

const UNIT = { ns: 1e-6, us: 1e-3, ms: 1, s: 1e3 };
const best = new Map(); // name -> the row of the best repetition
function take(row) {
    if (row.run_type !== 'iteration') return;
    if (row.error_occurred) {
        failed.push([row.name, row.error_message]);
        return;
    }
    const name = row.name.replace(/\/(iterations:\d+|manual_time|real_time|repeats:\d+)/g, '');
    row.ms = row.cpu_time * UNIT[row.time_unit];
    row.wall_ms = row.real_time * UNIT[row.time_unit];
    if (!best.has(name) || row.ms < best.get(name).ms) best.set(name, row);
}
for (const file of readdirSync(folder).filter((name) => name.endsWith('.json'))) {
    try {
        JSON.parse(readFileSync(`${folder}/${file}`, 'utf8')).benchmarks.forEach(take);
    } catch {
        // What ended early leaves half a file, and stands in failed.tsv.
        if (!failed.some(([part]) => `${part}.json` === file)) failed.push([file, 'FAILED: no results can be read']);
    }
}
const of = (name, what) => best.get(name)?.[what] ?? NaN;
const cpu = (name) => of(name, 'ms');
const wall = (name) => of(name, 'wall_ms');
const besides = (name) => of(name, 'besides_ms');
const tenfold = (name, work, measure = cpu) => measure(`${name}/${work}`) / measure(`${name}/${work / 10}`);

function show(ms) {
    if (Number.isNaN(ms)) return '-';
    for (const [unit, size] of [['s', 1e3], ['ms', 1], ['us', 1e-3]])
        if (ms >= size) return `${ms / size >= 100 ? (ms / size).toFixed(0) : (ms / size).toPrecision(2)} ${unit}`;
    return `${(ms * 1e6).toFixed(0)} ns`;
}
const times = (x) => (Number.isFinite(x) ? `${x < 0.1 ? x.toFixed(2) : x < 10 ? x.toPrecision(2) : x.toFixed(0)}x` : '-');
const megabytes = (mb) => (Number.isNaN(mb) ? '-' : `${mb < 10 ? mb.toFixed(1) : mb.toFixed(0)} MB`);

const lines = [];
const group = (text) => lines.push([text.toUpperCase(), '', '', '', '', '', '']);
// `growth` is for ten times the work; `aim` is a text and a truth.
function line(what, own, floorName = '', floor = NaN, growth = NaN, aim = '', met = undefined, form = show) {
    const unknown = Number.isNaN(own);
    const verdict = met === undefined ? '' : unknown ? ' -' : met ? ' met' : ' MISSED';
    lines.push([what, form(own), floorName, floorName ? form(floor) : '', floorName ? times(own / floor) : '',
        Number.isNaN(growth) ? '' : times(growth), aim + verdict]);
}
// With an aim below so many milliseconds; `linear` asks for no more than about that as well.
function below(what, own, limit, growth, floorName, floor, linear = false) {
    line(what, own, floorName, floor, growth, limit >= 1000 ? `${limit / 1000} s` : `${limit} ms`,
        own < limit && !(linear && growth >= 15));
}

group('the round, without a network');
line('split, 10,000 holders', cpu('split/10000'), '', NaN, tenfold('split', 10000), 'linear', tenfold('split', 10000) < 15);
below('split, 100,000 holders', cpu('split/100000'), 200, tenfold('split', 100000), '', NaN, true);
below('board redraw, 10,000 holders', cpu('board_redraw/10000'), 100, tenfold('board_redraw', 10000), 'files parsed',
    cpu('files_read_and_parsed/10000'));
line('  openings of its two files', of('board_redraw/10000', 'opens'), '', NaN, NaN, 'one each',
    of('board_redraw/10000', 'opens') === 2, String);
below('ledger of 100,000 rows: read', cpu('payouts_loaded/100000'), 1000, tenfold('payouts_loaded', 100000), 'file parsed',
    cpu('ledger_parsed/100000'));
below('ledger: 6 ranges, all tokens and 1', cpu('history_views/100000'), 1000, tenfold('history_views', 100000));
below('ledger: first append of a process', cpu('first_append/100000'), 50, tenfold('first_append', 100000), 'file read',
    cpu('ledger_read/100000'));
below('ledger: each later append', cpu('next_append/100000'), 50, tenfold('next_append', 100000));

group('besides its requests');
const run = 'pay_run/10000';
below('preview, 10,000 rows, 1,000 coins', besides('whole_preview/10000'), 1000,
    besides('whole_preview/10000') / besides('whole_preview/1000'), 'OpenSSL, 800',
    2 * cpu('bare_openssl_multiplications/400'));
for (const [kind, text] of [['without_names', 'no names'], ['with_names', 'names']])
    below(`snapshot, 10,000 holders, ${text}`, besides(`snapshot/${kind}/10000`), 500,
        tenfold(`snapshot/${kind}`, 10000, besides), '', NaN, true);
below('first of 10,000 sends', of(run, 'first_ms'), 25, NaN);
line('last of 10,000 sends', of(run, 'last_ms'), 'the first', of(run, 'first_ms'), NaN, '2x',
    of(run, 'last_ms') < 2 * of(run, 'first_ms'));
line('sweep, 2,000 ordinals, caches warm', besides('sweep/2000'), '', NaN, tenfold('sweep', 2000, besides));

group('with its requests, real time');
function whole(what, name, floorName, floor, growth, aim, met) {
    const requests = of(name, 'requests');
    line(`${what}, ${Number.isNaN(requests) ? '-' : requests.toLocaleString('en')} requests`, wall(name), floorName,
        requests * floor, growth, aim, met);
}
whole('preview', 'whole_preview/10000', 'bare requests', wall('bare_get'), tenfold('whole_preview', 10000, wall),
    'one refresh', of('whole_preview/10000', 'requests') <= of('whole_preview/1000', 'requests'));
whole('snapshot', 'snapshot/without_names/10000', 'bare requests', wall('bare_get'),
    tenfold('snapshot/without_names', 10000, wall));
whole('snapshot', 'snapshot/with_names/10000', 'TLS requests', wall('bare_tls_get'),
    tenfold('snapshot/with_names', 10000, wall));
whole('pay run', run, 'bare, half TLS', (wall('bare_get') + wall('bare_tls_get')) / 2, tenfold('pay_run', 10000, wall));
line('  memory after it', of(run, 'resident_mb'), 'after 100 sends', of(run, 'resident_mb') - of(run, 'grown_mb'), NaN,
    'flat', of(run, 'grown_mb') < 20, megabytes);
line('  its peak memory', of(run, 'peak_mb'), 'after 100 sends', of(run, 'resident_mb') - of(run, 'grown_mb'), NaN, 'flat',
    of(run, 'peak_mb') - of(run, 'resident_mb') + of(run, 'grown_mb') < 20, megabytes);
whole('sweep', 'sweep/2000', 'bare requests', wall('bare_get'), tenfold('sweep', 2000, wall));
line('', wall('sweep/2000'), 'slowest request', of('sweep/2000', 'slowest_ms'));

group('keys and signing');
const keys = cpu('addresses_derived/400');
line('400 receive addresses', keys, 'OpenSSL', cpu('bare_openssl_multiplications/400'), tenfold('addresses_derived', 400),
    '1.2x', keys < 1.2 * cpu('bare_openssl_multiplications/400'));
line('', keys, 'libsecp256k1', cpu('bare_secp256k1_multiplications/400'));
line('', keys, '@bsv/sdk', cpu('peer_addresses_derived/400'));
line('first look-up of a key, recv 1,000', cpu('first_key_look_up/1000'), 'OpenSSL, 6,006',
    cpu('bare_openssl_multiplications/6006'), tenfold('first_key_look_up', 1000));
line('each later look-up', cpu('later_key_look_up/1000'), '', NaN, tenfold('later_key_look_up', 1000), 'flat',
    tenfold('later_key_look_up', 1000) < 2);
for (const n of [1, 10, 100, 1000, 5000]) {
    const own = cpu(`built_and_signed/${n}`);
    const bare = cpu(`bare_openssl_signatures/${n}`);
    line(`build and sign, ${n.toLocaleString('en')} input${n > 1 ? 's' : ''}`, own, 'OpenSSL', bare,
        n === 1 ? NaN : n === 5000 ? 2 * own / cpu('built_and_signed/1000') : tenfold('built_and_signed', n), '1.3x', own < 1.3 * bare);
    const peer = cpu(`peer_built_and_signed/${n}`);
    if (!Number.isNaN(peer)) line('', own, '@bsv/sdk', peer, NaN, '0.1x', own * 10 <= peer);
    if (n === 1000) line('', own, 'libsecp256k1', cpu('bare_secp256k1_signatures/1000'));
}

group('window program on Wine, real time');
const [shell, bare] = ['window_start', 'bare_window_start'];
line('start to the painted window', wall(shell), 'bare window', wall(bare));
line('memory at rest', of(shell, 'resident_mb'), 'bare window', of(bare, 'resident_mb'), NaN, '', undefined, megabytes);
line('size of the file', of(shell, 'bytes') / 1e6, 'bare window', of(bare, 'bytes') / 1e6, NaN, '', undefined, megabytes);

const head = ['case', 'program', 'peer or floor', 'its', 'ratio', 'x10', 'aim'];
const width = head.map((text, i) => Math.max(text.length, ...lines.map((cells) => cells[i].length)));
const print = (cells) => console.log(`| ${cells.map((cell, i) => cell.padEnd(width[i])).join(' | ')} |`);
print(head);
print(width.map((w) => '-'.repeat(w)));
lines.forEach(print);
// What gave no time, over the whole width.
const whole_width = width.reduce((sum, w) => sum + w + 3, -3);
for (const [part, words] of failed) console.log(`| ${`${part}: ${words}`.slice(0, whole_width).padEnd(whole_width)} |`);
if (failed.some(([, words]) => !words.startsWith('skipped'))) process.exitCode = 1;
