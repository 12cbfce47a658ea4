#!/usr/bin/env bash
# Structural checks of the tool, run as a CTest:
#  1. no file under src/<layer>/ includes a header of a higher layer, in the order
#     base < formats < structure < secondary < contacts < partition < output < confidence < cath <
#     run < report < app < library < cli, python;
#  2. sizes: no file of src/ over 500 lines (src/cath/model_tables.h is data the training script
#     writes, not code), src/cli/ under 800 lines in all (the command line stays a thin program
#     over the libraries), no function over 60 lines;
#  3. the built tool holds no writable data of ours (.data, .bss and their thread-local kin): a
#     run's state belongs in its run context, never in the process. Nor do our constant tables
#     need relocating at load (.data.rel.ro, writable until relocated: tables of pointers); only
#     the vtables and typeinfo the compiler puts there are fine, and so is what the libraries we
#     use keep.
# Usage: scripts/check_layers.sh <src folder> <quarnel binary>. Prints every offence; status 1
# when there is one, 2 on bad usage.
set -euo pipefail

src=${1:?usage: check_layers.sh <src folder> <quarnel binary>}
binary=${2:?usage: check_layers.sh <src folder> <quarnel binary>}
[[ -d $src && -x $binary ]] || { echo "check_layers.sh: no folder $src or no program $binary" >&2; exit 2; }

layers=(base formats structure secondary contacts partition output confidence cath run report app library cli python)
declare -A rank
for i in "${!layers[@]}"; do rank[${layers[$i]}]=$i; done

offences=0
for dir in "$src"/*/; do
  layer=$(basename "$dir")
  if [[ -z ${rank[$layer]+set} ]]; then
    echo "layers: src/$layer is not a known layer; add it to scripts/check_layers.sh"
    offences=$((offences + 1))
    continue
  fi
  # Lines such as: #include "partition/flow.h"
  while IFS=: read -r file number included; do
    [[ -n ${rank[$included]+set} ]] || continue
    if ((rank[$included] > rank[$layer])); then
      echo "layers: ${file#"$src"/}:$number includes a header of $included, above $layer"
      offences=$((offences + 1))
    fi
  done < <(grep -HnoE '^[[:space:]]*#[[:space:]]*include[[:space:]]*"[a-z_]+/' -r "$dir" |
    sed -E 's/^([^:]*):([0-9]*):.*"([a-z_]+)\/$/\1:\2:\3/')
done

# Sizes. A function is a line at column 0 that begins a declaration (not a namespace, type or
# table) up to its closing brace alone at column 0.
readonly kMaxFileLines=500 kMaxCliLines=800 kMaxFunctionLines=60
while read -r lines file; do
  [[ $file == total || $file == */cath/model_tables.h ]] && continue
  if ((lines > kMaxFileLines)); then
    echo "sizes: ${file#"$src"/} has $lines lines (at most $kMaxFileLines)"
    offences=$((offences + 1))
  fi
done < <(find "$src" -name '*.cpp' -o -name '*.h' | sort | xargs wc -l)
cli_lines=$(cat "$src"/cli/*.cpp "$src"/cli/*.h | wc -l)
if ((cli_lines >= kMaxCliLines)); then
  echo "sizes: src/cli/ has $cli_lines lines (under $kMaxCliLines)"
  offences=$((offences + 1))
fi
while IFS= read -r long; do
  [[ -z $long ]] && continue
  echo "sizes: $long"
  offences=$((offences + 1))
done < <(find "$src" -name '*.cpp' -o -name '*.h' | sort | while read -r file; do
  awk -v max="$kMaxFunctionLines" -v file="${file#"$src"/}" '
    /^(namespace|struct|class|enum|union|using|typedef|extern|template|constexpr|inline constexpr|static_assert|#)/ { next }
    /^[A-Za-z_].*;[[:space:]]*(\/\/.*)?$/ { next }
    /^[A-Za-z_]/ { if (start == 0) { start = FNR; name = $0 }; next }
    /^}[[:space:]]*$/ { if (start > 0 && FNR - start + 1 > max) print file ":" start ": " FNR - start + 1 " lines: " name; start = 0; next }
    /^}/ { start = 0 }' "$file"
done)

# Local symbols follow the FILE symbol of their source; globals are told by their namespace.
ours=$(find "$src" -name '*.cpp' -printf '%f\n' | sort -u | tr '\n' ' ')
writable=$(objdump -t -C "$binary" | awk -v ours=" $ours" '
  $0 ~ /[[:space:]]df[[:space:]]\*ABS\*/ { file = $NF; next }
  $0 ~ /[[:space:]]\.(data|data\.rel\.ro|bss|tdata|tbss)[[:space:]]/ {
    name = $0; sub(/^.*[[:space:]]\.(data|data\.rel\.ro|bss|tdata|tbss)[[:space:]]+[0-9a-f]+[[:space:]]+/, "", name)
    if (name ~ /^(vtable|typeinfo|typeinfo name|VTT|construction vtable) for /) next
    local = substr($0, 18, 1) == "l"
    # std::__ioinit is the standard streams initialiser that <iostream> puts in every file
    # including it (here through libcifpp'"'"'s headers), not data of ours.
    if (name ~ /^std::__ioinit$/) next
    if (name ~ /quarnel::/ || (local && index(ours, " " file " ") > 0)) print "state: " name (local ? " (" file ")" : "")
  }')
if [[ -n $writable ]]; then
  echo "$writable"
  offences=$((offences + $(wc -l <<<"$writable")))
fi

if ((offences > 0)); then
  echo "check_layers.sh: $offences offence(s)"
  exit 1
fi
echo "check_layers.sh: layers in order, sizes within bounds, no writable data of ours in $(basename "$binary")"
