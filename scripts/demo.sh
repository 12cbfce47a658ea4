#!/usr/bin/env bash
# Installs what is missing, builds quarnel and splits one real structure into domains.
# Usage: bash scripts/demo.sh [structure file]   (default: the bundled two-domain structure 2yex)
set -euo pipefail

# shellcheck source=scripts/setup.sh
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
setup_release_build quarnel

structure=${1:-$QUARNEL_ROOT/tests/data/2yex.pdb}
[[ -f $structure ]] || { echo "demo: no structure file $structure" >&2; exit 1; }

# --dssp builtin: secondary structure from the DSSP library built into quarnel, so that nothing
# needs setting up and nothing is written in the working folder. Run beside the file, so that
# the table's input column shows its name as given.
cd "$(dirname "$structure")"
name=$(basename "$structure")
setup_say "quarnel --dssp builtin $name"
echo "fields: entry, residues, domains, then each domain's residue ranges in parentheses"
"$QUARNEL_BUILD_DIR/quarnel" --dssp builtin "$name"
setup_say "the same as a table (--format tsv)"
"$QUARNEL_BUILD_DIR/quarnel" --dssp builtin --format tsv "$name"
