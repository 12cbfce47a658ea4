#!/usr/bin/env bash
# Installs what is missing, builds quarnel and splits one real structure into domains.
# Usage: bash scripts/demo.sh [file.pdb]   (default: the bundled two-domain structure 2yex)
set -euo pipefail

# shellcheck source=scripts/setup.sh
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
setup_release_build quarnel

structure=${1:-$QUARNEL_ROOT/tests/data/2yex.pdb}
[[ -f $structure ]] || { echo "demo: no structure file $structure" >&2; exit 1; }
structure=$(cd "$(dirname "$structure")" && pwd)/$(basename "$structure")

# quarnel writes its DSSP output and dssp.log into the working directory, and names the DSSP
# output after the input path up to its first '.': the run happens in a scratch folder on a
# copy named without directories, so the repository stays clean.
work=$(mktemp -d "${TMPDIR:-/tmp}/quarnel-demo.XXXXXX")
trap 'rm -rf -- "$work"' EXIT
name=$(basename "$structure")
cp -- "$structure" "$work/$name"

# quarnel pastes DSSP_PATH into a shell command as it stands, so a folder with blanks in its
# name has to arrive quoted.
adapter=$QUARNEL_ROOT/tools/quarnel-dssp
DSSP_PATH=$(shell_quote "$adapter")
export DSSP_PATH

setup_say "quarnel $name"
echo "fields: entry, residues, domains, then each domain's residue ranges in parentheses"
cd "$work"
status=0
"$QUARNEL_BUILD_DIR/quarnel" "$name" || status=$?
if ((status != 0)); then
  echo "demo: quarnel ended with status $status" >&2
  [[ ! -s dssp.log ]] || { echo "demo: dssp.log says:" >&2; cat dssp.log >&2; }
  exit "$status"
fi
