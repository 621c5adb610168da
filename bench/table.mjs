// Prints one table of what scripts/bench has measured.
//   node table.mjs RESULTS.json...
// A line: the case, the time of this program, that of its peer or floor in the same run, the ratio, how many times
// the time grows when the work grows tenfold, and the aim with "met" or "MISSED".
import { readFileSync } from 'node:fs';

const UNIT = { ns: 1e-6, us: 1e-3, ms: 1, s: 1e3 };
const best = new Map(); // name -> the row of the best repetition
const counter = (row, name) => row[name] ?? NaN;
for (const file of process.argv.slice(2)) {
    for (const row of JSON.parse(readFileSync(file, 'utf8')).benchmarks) {
        if (row.run_type !== 'iteration') continue;
        if (row.error_occurred) {
            console.error(`${row.name}: ${row.error_message}`);
            process.exitCode = 1;
            continue;
        }
        const name = row.name.replace(/\/(iterations:\d+|manual_time|real_time|repeats:\d+)/g, '');
        row.ms = row.cpu_time * UNIT[row.time_unit];
        row.wall_ms = row.real_time * UNIT[row.time_unit];
        if (!best.has(name) || row.ms < best.get(name).ms) best.set(name, row);
    }
}
const cpu = (name) => best.get(name)?.ms ?? NaN;
const wall = (name) => best.get(name)?.wall_ms ?? NaN;
const of = (name, what) => (best.has(name) ? counter(best.get(name), what) : NaN);
const besides = (name) => of(name, 'besides_ms');

const show = (ms) => (Number.isNaN(ms) ? '-' : ms < 0.01 ? `${(ms * 1e6).toFixed(0)} ns` : ms < 1 ?
    `${(ms * 1e3).toFixed(0)} us` : ms < 1e4 ? `${ms.toPrecision(3)} ms` : `${(ms / 1e3).toFixed(1)} s`);
const times = (x) => (Number.isFinite(x) ? `${x < 10 ? x.toPrecision(2) : x.toFixed(0)}x` : '-');

const lines = [];
// `growth` is for ten times the work; `aim` is a text and a truth.
function line(what, own, floorName, floor, growth, aimText = '', met = undefined) {
    const verdict = met === undefined || Number.isNaN(own) ? '' : met ? ': met' : ': MISSED';
    lines.push([what, show(own), floorName, floorName ? show(floor) : '', floorName ? times(own / floor) : '',
        times(growth), aimText + verdict]);
}
const tenfold = (name, work, measure = cpu) => measure(`${name}/${work}`) / measure(`${name}/${work / 10}`);

for (const n of [10000, 100000]) {
    const growth = tenfold('split', n);
    line(`split of ${n} holders, with its text`, cpu(`split/${n}`), '', NaN, growth, n === 100000 ? '200 ms, linear' : 'linear',
        growth < 15 && (n < 100000 || cpu(`split/${n}`) < 200));
}
line('preview of 10000 rows, 1000 coins on 400 addresses, besides the network', besides('whole_preview/10000'), '800 bare multiplications',
    2 * cpu('bare_openssl_multiplications/400'), besides('whole_preview/10000') / besides('whole_preview/1000'), '1 s',
    besides('whole_preview/10000') < 1000);
line(`  the same with its ${of('whole_preview/10000', 'requests')} requests, real time`, wall('whole_preview/10000'), 'as many bare requests',
    of('whole_preview/10000', 'requests') * wall('bare_get'), NaN);
for (const [kind, text] of [['without_names', 'without names'], ['with_names', 'with names']]) {
    const name = `snapshot/${kind}`;
    line(`snapshot of 10000 holders ${text}, besides its requests`, besides(`${name}/10000`), '', NaN, tenfold(name, 10000, besides),
        '500 ms, linear', besides(`${name}/10000`) < 500 && tenfold(name, 10000, besides) < 15);
    line(`  the same with its ${of(`${name}/10000`, 'requests')} requests, real time`, wall(`${name}/10000`),
        kind === 'with_names' ? 'as many bare TLS requests' : '', of(`${name}/10000`, 'requests') * wall('bare_tls_get'),
        tenfold(name, 10000, wall));
}
line('board redraw: 10000 holders, 10000 ledger rows, 1000 notes', cpu('board_redraw/10000'), 'both files read and parsed',
    cpu('files_read_and_parsed/10000'), tenfold('board_redraw', 10000), '100 ms', cpu('board_redraw/10000') < 100);
line('400 receive addresses', cpu('addresses_derived/400'), '400 OpenSSL multiplications', cpu('bare_openssl_multiplications/400'),
    tenfold('addresses_derived', 400), 'ratio 1.2', cpu('addresses_derived/400') < 1.2 * cpu('bare_openssl_multiplications/400'));
line('', cpu('addresses_derived/400'), '400 of libsecp256k1', cpu('bare_secp256k1_multiplications/400'), NaN);
line('', cpu('addresses_derived/400'), '@bsv/sdk', cpu('peer_addresses_derived/400'), tenfold('peer_addresses_derived', 400));
line('first look-up of a key, recv 1000 in all accounts', cpu('first_key_look_up/1000'), '6006 OpenSSL multiplications',
    cpu('bare_openssl_multiplications/6006'), tenfold('first_key_look_up', 1000), 'as the order demands');
line('each later look-up', cpu('later_key_look_up/1000'), '', NaN, tenfold('later_key_look_up', 1000), 'constant',
    tenfold('later_key_look_up', 1000) < 2);
for (const n of [1, 10, 100, 1000, 5000]) {
    const own = cpu(`built_and_signed/${n}`);
    const bare = cpu(`bare_openssl_signatures/${n}`);
    const peer = cpu(`peer_built_and_signed/${n}`);
    line(`build and sign, ${n} inputs`, own, `${n} OpenSSL signatures`, bare,
        n >= 10 && n <= 1000 ? tenfold('built_and_signed', n) : NaN, 'ratio 1.3', own < 1.3 * bare);
    if (!Number.isNaN(peer)) line('', own, '@bsv/sdk', peer, n >= 10 ? tenfold('peer_built_and_signed', n) : NaN,
        'a tenth', own * 10 <= peer);
    if (n === 1000) line('', own, '1000 of libsecp256k1', cpu('bare_secp256k1_signatures/1000'), NaN);
}
const run = 'pay_run/10000';
line('one send, behind 20000 spent coins and 10000 ledger rows, besides its 2 requests', of(run, 'first_ms'), '', NaN, NaN, '25 ms',
    of(run, 'first_ms') < 25);
line('  the ten-thousandth send', of(run, 'last_ms'), 'the first sends', of(run, 'first_ms'), NaN, 'ratio 2',
    of(run, 'last_ms') < 2 * of(run, 'first_ms'));
line(`pay run of 10000 holders, ${of(run, 'requests')} requests, real time`, wall(run), 'as many bare requests',
    of(run, 'requests') / 2 * (wall('bare_get') + wall('bare_tls_get')), tenfold('pay_run', 10000, wall), 'completes', !Number.isNaN(wall(run)));
line(`  memory grown by ${of(run, 'grown_mb').toFixed?.(1)} MB to ${of(run, 'resident_mb').toFixed?.(0)} MB`, NaN, '', NaN, NaN, 'flat');
line('sweep of 2000 ordinals on 40 addresses, caches warm, besides its requests', besides('sweep/2000'), '', NaN, tenfold('sweep', 2000, besides));
line(`  the same with its ${of('sweep/2000', 'requests')} requests, real time`, wall('sweep/2000'), 'its slowest request',
    of('sweep/2000', 'slowest_ms'), tenfold('sweep', 2000, wall));
line('100000 ledger rows: load_payouts', cpu('payouts_loaded/100000'), 'the file parsed', cpu('ledger_parsed/100000'),
    tenfold('payouts_loaded', 100000), '1 s', cpu('payouts_loaded/100000') < 1000);
line('  all ranges, all tokens and one', cpu('history_views/100000'), '', NaN, tenfold('history_views', 100000), '1 s',
    cpu('history_views/100000') < 1000);
line('  first append of a process', cpu('first_append/100000'), 'the file read', cpu('ledger_read/100000'), tenfold('first_append', 100000),
    '50 ms', cpu('first_append/100000') < 50);
line('  each later append', cpu('next_append/100000'), '', NaN, tenfold('next_append', 100000), '50 ms', cpu('next_append/100000') < 50);
const head = ['case', 'this program', 'peer or floor', 'its time', 'ratio', 'work x10', 'aim'];
const width = head.map((text, i) => Math.max(text.length, ...lines.map((cells) => cells[i].length)));
const print = (cells) => console.log(`| ${cells.map((cell, i) => cell.padEnd(width[i])).join(' | ')} |`);
print(head);
print(width.map((w) => '-'.repeat(w)));
lines.forEach(print);
