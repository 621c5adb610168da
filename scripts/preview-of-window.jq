# Puts together what the windows show of a frozen preview: who is paid what (the preview's list), to which address (the
# board's rows in the market, in the same order), and the figures of the text behind "Copy".
def lines: split("\n") | map(select(. != "") | split("\t"));
def sats: gsub("[^0-9]"; "") | tonumber;
def figure($name): capture($name + ": (?<n>[0-9.]+)").n;

($board | lines | map(select(.[3] == "in-market"))) as $market
| ($rows | lines) as $shown
| if ($market | map(.[0:2])) != ($shown | map(.[0:2])) then error("the board and the preview list others") else . end
| {pot: ($text | figure("Pot") | sats),
   remainder: ($text | figure("Remainder after pro-rata") | sats),
   skips: ($text | figure("Dust / no-dest skips") | tonumber),
   rows: [range($shown | length) as $i
       | {name: $shown[$i][0], lots: $shown[$i][1], dest: $market[$i][2], skip: ($shown[$i][2] == "skip"),
          sats: (if $shown[$i][2] == "skip" then 0 else ($shown[$i][2] | sats) end)}]}
