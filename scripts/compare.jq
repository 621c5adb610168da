# Compares one pay run: what the preview froze, what the ledger noted, what the chain took. Any difference is an error.
def check(condition; text): if condition then . else error(text) end;

($chain[0].transactions[$before:]) as $sent
| ($chain[0].transactions | map({key: .txid, value: .}) | from_entries) as $by_txid
| ($preview[0].rows | map(select(.skip | not))) as $due
| ([{name: "app fee", dest: $world[0].fee_address, sats: 1000000}] + ($due | map({name, dest, sats}))) as $owed
| $ledger[0].entries as $noted
| check($pay[0].stopped == false; "the pay run stopped")
| check(($owed | length) == ($noted | length); "the ledger has \($noted | length) rows, \($owed | length) are owed")
| check(($owed | length) == ($sent | length); "the chain took \($sent | length) transactions, \($owed | length) are owed")
| check(($pay[0].txids | unique | length) == ($owed | length); "the transactions are not one a payment")
| [range($owed | length) as $i
    | $owed[$i] as $row | $noted[$i] as $entry | $pay[0].txids[$i] as $txid | $by_txid[$txid] as $tx
    | check($entry.txid == $txid; "the ledger has another transaction for \($row.name)")
    | check($entry.sats == $row.sats and $entry.dest == $row.dest; "the ledger has another payment for \($row.name)")
    | check($tx != null; "the chain does not have \($txid)")
    | check($tx.height > 0; "\($txid) is not mined")
    | check($tx.outputs[0].sats == $row.sats; "\($txid) pays another amount")
    | check($tx.outputs[0].address == $row.dest; "\($txid) pays another address")
    | "\($row.sats) sats to \($row.dest)  \($row.name)  \($txid)"] as $lines
| ($owed | map(.sats) | add) as $paid
| ($due | map(.sats) | add // 0) as $to_holders
| check($to_holders + $preview[0].remainder == $preview[0].pot; "payments and remainder are not the pot")
| $lines[],
  "",
  "confirmed on the chain: \($sent | length) transactions, \($paid) sats",
  "to holders: \($to_holders) sats of a pot of \($preview[0].pot), remainder \($preview[0].remainder), skips \($preview[0].skips)"
