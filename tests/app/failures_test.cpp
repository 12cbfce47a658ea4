// What real pipelines meet, one row per case: a setup in a scratch folder, the command, then the
// exit status, standard output (times masked), standard error and every file left in the folder
// (hidden ones too: a temporary file left behind is a fault). Setups and commands are shell
// text: $DATA is the test data folder, $Q the built quarnel. A full disk is stood in for by a
// file size limit (the writes fail with EFBIG, as with ENOSPC); an unreadable folder, where
// the tests run as root, by a quarnel without the capabilities that let root read anything.
#include <gtest/gtest.h>

#include <regex>

#include "support.h"

namespace quarnel::test {
namespace {

struct FailureRow {
  const char* name;
  const char* setup;
  const char* command;
  int status;
  const char* out;
  const char* err;
  const char* left;
};

// 2yex as mmCIF with the multi-character chain id "xy": atom_site rows made from its ATOM lines.
#define TO_MMCIF_XY                                                                                  \
  "tr -d '\\r' < $DATA/2yex.pdb | awk 'BEGIN { print \"data_t\\nloop_\"; n = split(\"group_PDB id "  \
  "type_symbol label_atom_id label_alt_id label_comp_id auth_asym_id auth_seq_id pdbx_PDB_ins_code "   \
  "Cartn_x Cartn_y Cartn_z occupancy B_iso_or_equiv\", t); for (i = 1; i <= n; i++) print "            \
  "\"_atom_site.\" t[i] } /^ATOM  / { a = substr($0, 13, 4); gsub(/ /, \"\", a); l = substr($0, 17, "  \
  "1); c = substr($0, 27, 1); e = substr($0, 77, 2); gsub(/ /, \"\", e); print \"ATOM\", "              \
  "substr($0, 7, 5) + 0, e, a, (l == \" \" ? \".\" : l), substr($0, 18, 3), \"xy\", substr($0, 23, "   \
  "4) + 0, (c == \" \" ? \"?\" : c), substr($0, 31, 8) + 0, substr($0, 39, 8) + 0, substr($0, 47, 8) " \
  "+ 0, substr($0, 55, 6) + 0, substr($0, 61, 6) + 0 }' > xy.cif"

// The first rows of a results file of 1crn (as in/1crn.pdb) made with -noss, as a run killed
// after it wrote them leaves them.
#define TSV_OPENING "# quarnel 1.0.0 results; options: -noss\n" \
  "chain_id\tsequence_md5\tnres\tndom\tchopping\tconfidence\ttime_sec\tverdict\tinput\tchain\tdomain_confidences\tmode\tboundaries\n"

const char kSlowDssp[] = "printf '#!/bin/sh\\nsleep 30\\n' > slow-dssp && chmod +x slow-dssp && mkdir t";

const FailureRow kRows[] = {
    // ---- results that cannot be written ----
    {"full disk: the results stop at the last complete row, a line says why",
     "mkdir in && cp $DATA/1rmd.pdb $DATA/2yex.pdb $DATA/1isu.pdb in/",
     "(trap '' XFSZ; ulimit -f 1; $Q -noss --format tsv --out r.tsv in); echo status $? rows $(grep -c 'classic.NULL$' r.tsv) "
     "last $(tail -c 1 r.tsv | tr '\\n' N)",
     0, "status 6 rows 3 last N\n", "quarnel: cannot write r.tsv: File too large\n", "in/ in/1isu.pdb in/1rmd.pdb in/2yex.pdb r.tsv"},
    {"full disk under --svg: the chain has no row, no half picture is left",
     "cp $DATA/2yex.pdb .", "(trap '' XFSZ; ulimit -f 16; $Q -noss --format tsv --out r.tsv --svg svg 2yex.pdb); "
     "echo status $? rows $(grep -c 'classic.NULL$' r.tsv)",
     0, "status 6 rows 0\n", "quarnel: cannot write svg/2yexA.svg: File too large\n", "2yex.pdb r.tsv svg/"},
    {"standard output that cannot be written", "cp $DATA/1crn.pdb .", "$Q -noss --format tsv 1crn.pdb > /dev/full",
     6, "", "quarnel: cannot write standard output: No space left on device\n", "1crn.pdb"},
    // ---- results files are the user's ----
    {"--out naming an input", "cp $DATA/1crn.pdb .", "$Q -noss --format tsv --out 1crn.pdb 1crn.pdb; echo status $?; cmp 1crn.pdb $DATA/1crn.pdb",
     0, "status 2\n", "quarnel: --out 1crn.pdb is 1crn.pdb, which this run reads\n"
     "quarnel: results never overwrite an input: name another file for them\n", "1crn.pdb"},
    {"--resume onto a file that holds no results", "cp $DATA/1crn.pdb . && cp $DATA/1isu.pdb .",
     "$Q -noss --format tsv --out 1isu.pdb --resume 1crn.pdb; echo status $?; cmp 1isu.pdb $DATA/1isu.pdb", 0, "status 2\n",
     "quarnel: 1isu.pdb holds no quarnel results; --resume appends only to tsv results made with the same options\n"
     "quarnel: write to another file, or leave out --resume to start this one afresh\n", "1crn.pdb 1isu.pdb"},
    {"--resume with another format", "cp $DATA/1crn.pdb . && printf '" TSV_OPENING "' > r.tsv",
     "$Q -noss --format json --out r.tsv --resume 1crn.pdb", 2, "",
     "quarnel: r.tsv holds TSV results; --resume appends only to json results made with the same options\n"
     "quarnel: write to another file, or leave out --resume to start this one afresh\n", "1crn.pdb r.tsv"},
    {"--resume with other options", "cp $DATA/1crn.pdb . && printf '" TSV_OPENING "' > r.tsv",
     "$Q -noss -md 2 --format tsv --out r.tsv --resume 1crn.pdb", 2, "",
     "quarnel: r.tsv holds results made with options -noss; this run's are -md 2 -noss\n"
     "quarnel: resume with the options the file was made with, or write to another file\n", "1crn.pdb r.tsv"},
    {"--resume with TSV onto residue rows", "cp $DATA/1crn.pdb . && $Q -noss --format residues --out r.tsv 1crn.pdb",
     "$Q -noss --format tsv --out r.tsv --resume 1crn.pdb", 2, "",
     "quarnel: r.tsv holds residue rows; --resume appends only to tsv results made with the same options\n"
     "quarnel: write to another file, or leave out --resume to start this one afresh\n", "1crn.pdb r.tsv"},
    {"residue rows killed within a chain: the chain before is kept, the one cut short written again whole",
     "mkdir in && cp $DATA/1crn.pdb $DATA/1rmd.pdb in/ && $Q -noss --format residues in > whole.tsv && "
     "head -n 60 whole.tsv | sed '4s/1$/kept/' > r.tsv && printf '1rmdA\\tA\\t11' >> r.tsv",
     "$Q -noss --format residues --out r.tsv --resume in; sed -n 4p r.tsv | cut -f5; "
     "sed 4s/kept$/1/ r.tsv | cmp - whole.tsv && echo same",
     0, "kept\nsame\n", "", "in/ in/1crn.pdb in/1rmd.pdb r.tsv whole.tsv"},
    {"a second run on the same file waits for the first", "cp $DATA/1crn.pdb . && printf '" TSV_OPENING "' > r.tsv",
     "flock r.tsv sleep 1 & sleep 0.3; $Q -noss --format tsv --out r.tsv --resume 1crn.pdb; cut -f1,4,5,9,10 r.tsv | tail -1",
     0, "1crnA\t1\t1-46\t1crn.pdb\tA\n",
     "quarnel: r.tsv is being written by another quarnel run; waiting for it to end\n", "1crn.pdb r.tsv"},
    {"two inputs of one base name keep both rows, resumed too",
     "mkdir a b && cp $DATA/1crn.pdb a/x.pdb && cp $DATA/1crn.pdb b/x.pdb && printf '" TSV_OPENING
     "xA\\tc6a0deb50c4f69619d193f0fde0517c2\\t46\\t1\\t1-46\\tNULL\\t0.001\\ttoo short\\ta/x.pdb\\tA\\tNULL\\tclassic\\n' > r.tsv",
     "$Q -noss --format tsv --out r.tsv --resume a/x.pdb b/x.pdb --svg svg && cut -f1,9,10 r.tsv | tail -2",
     0, "xA\ta/x.pdb\tA\nxA\tb/x.pdb\tA\n", "", "a/ a/x.pdb b/ b/x.pdb r.tsv svg/ svg/b_x.pdbA.svg"},
    // ---- chains ----
    {"a lower-case chain: what the chain renamed to A gives",
     "tr -d '\\r' < $DATA/2yex.pdb | sed 's/^\\(ATOM  .\\{15\\}\\)A/\\1a/' > low.pdb",
     "$Q -noss --chain a low.pdb && $Q -noss -pdbpath $DATA/ 2yexA", 0,
     "lowa\t269\t2\t (2-86) (87-270)\n2yexA\t269\t2\t (2-86) (87-270)\n", "", "2yexa.pdb low.pdb"},
    {"a chain id of two characters in mmCIF", TO_MMCIF_XY, "$Q -noss --chain xy xy.cif", 0,
     "xyxy\t269\t2\t (2-86) (87-270)\n", "", "xy.cif"},
    {"a multi-chain file in a batch: each chain judged", "cp $DATA/1isu.pdb .", "$Q -noss --format classic 1isu.pdb", 0,
     "1isuA\t62\t1\n1isuB\t62\t1\n", "", "1isu.pdb"},
    {"--min-plddt counts residues, not ANISOU records",
     "awk '{ print } /^ATOM/ { print \"ANISOU\" substr($0, 7, 22) \"    1000    2000    3000      0      0      0\" }' "
     "$DATA/1crn.pdb > an.pdb", "$Q -noss --min-plddt 5 an.pdb", 0, "anA\t28\t1\n",
     "quarnel: anA: left out 18 of 46 residues below pLDDT 5\n", "an.pdb"},
    {"--min-plddt in residue rows: the residues left out in their place, in no domain",
     "awk '/^ATOM/ { r = substr($0, 23, 4) + 0; printf \"%s%6.2f%s\\n\", substr($0, 1, 60), "
     "((r >= 20 && r <= 25) || r > 44 ? 30 : 90), substr($0, 67) } !/^ATOM/' $DATA/1crn.pdb > model.pdb",
     "$Q -noss --min-plddt 70 --format residues model.pdb > r.tsv; sed -n 3p r.tsv; awk -F'\\t' 'NR > 3 { "
     "if ($5 != l) { if (NR > 4) print f \"-\" p \":\" l; f = $3; l = $5 } p = $3 } END { print f \"-\" p \":\" l }' r.tsv",
     0, "# chain_id modelA\tinput model.pdb\tchain A\tresidues 46\n1-19:1\n20-25:0\n26-44:1\n45-46:0\n",
     "quarnel: modelA: left out 8 of 46 residues below pLDDT 70\n", "model.pdb r.tsv"},
    {"superposed copies are refused before the engine starts",
     "(grep ^ATOM $DATA/1crn.pdb; grep ^ATOM $DATA/1crn.pdb; grep ^ATOM $DATA/1crn.pdb) > three.pdb",
     "$Q -noss three.pdb three.pdb", 3, "",
     "quarnel: three.pdb chain A: refused: 92 of its 138 residues lie on another residue (CA atoms within 0.5 A): "
     "superposed copies of a chain, such as models without MODEL records; split them into models or files\n"
     "quarnel: three.pdb chain A: refused: 92 of its 138 residues lie on another residue (CA atoms within 0.5 A): "
     "superposed copies of a chain, such as models without MODEL records; split them into models or files\n"
     "quarnel: 2 of 2 chains failed\n", "three.pdb"},
    // ---- inputs ----
    {"an unreadable folder is reported", "mkdir -p in/closed && cp $DATA/1crn.pdb in/ && chmod 000 in/closed",
     "if [ $(id -u) = 0 ]; then D='setpriv --bounding-set=-dac_override,-dac_read_search'; fi; "
     "$D $Q -noss --format classic in 2>&1 >/dev/null | grep -c 'cannot read the folder: Permission denied'; chmod 755 in/closed",
     0, "1\n", "", "in/ in/1crn.pdb in/closed/"},
    {"-- ends the options", "cp $DATA/1crn.pdb ./-noss", "$Q -noss -- -noss", 0, "-nossA\t46\t1\n", "", "-noss"},
    {"- reads standard input", "", "$Q -noss --format classic - < $DATA/1crn.pdb", 0, "stdinA\t46\t1\n", "", ""},
    {"an mmCIF file without a coordinate column",
     "printf 'data_x\\nloop_\\n_atom_site.group_PDB\\n_atom_site.id\\n_atom_site.label_atom_id\\n"
     "_atom_site.label_comp_id\\n_atom_site.auth_asym_id\\n_atom_site.auth_seq_id\\n_atom_site.Cartn_x\\n"
     "_atom_site.Cartn_y\\nATOM 1 CA GLY A 1 1.0 2.0\\n' > noz.cif", "$Q -noss noz.cif", 3, "",
     "quarnel: noz.cif: unreadable mmCIF: its atom table has no _atom_site.Cartn_z column: atoms without "
     "coordinates cannot be placed\nquarnel: 1 of 1 chain failed\n", "noz.cif"},
    {"an mmCIF file without chain ids: one blank chain", TO_MMCIF_XY " && grep -v auth_asym_id xy.cif | sed 's/ xy / /' > nochain.cif",
     "$Q -noss --format classic nochain.cif", 0, "nochain\t269\t2\t (2-86) (87-270)\n", "", "nochain.cif xy.cif"},
    {"lines ending in CR alone, batch", "tr '\\n' '\\r' < $DATA/1crn.pdb > cr.pdb", "$Q -noss --chain A cr.pdb", 3, "",
     "quarnel: cr.pdb: its lines end with CR alone (old Mac OS line ends), which read as one long line: "
     "convert them first (tr '\\r' '\\n')\nquarnel: 1 of 1 chain failed\n", "cr.pdb"},
    {"lines ending in CR alone, classic: the designed failure and a hint", "tr '\\n' '\\r' < $DATA/1crn.pdb > cr.pdb",
     "$Q -noss cr.pdb", 100, "",
     "Missing sidechain atoms for cr.pdb\n(2 atoms in 2 residues), Quit!\n"
     "quarnel: cr.pdb ends its lines with CR alone (old Mac OS line ends), which reads as one long line: "
     "convert them first (tr '\\r' '\\n')\n", "cr.pdb"},
    {"B-factors like pLDDT: a note; --quiet keeps stderr to failures",
     "awk '/^ATOM/ { printf \"%s%6.2f%s\\n\", substr($0, 1, 60), 50 + substr($0, 23, 4) % 40, substr($0, 67) } "
     "!/^ATOM/' $DATA/1crn.pdb > model.pdb", "$Q -noss model.pdb model.pdb --quiet; $Q -noss model.pdb model.pdb",
     0, "modelA\t46\t1\nmodelA\t46\t1\nmodelA\t46\t1\nmodelA\t46\t1\n",
     "quarnel: model.pdb: its B-factors look like pLDDT (a predicted model): --min-plddt 70 leaves disordered "
     "residues out of the domains\nquarnel: model.pdb: its B-factors look like pLDDT (a predicted model): "
     "--min-plddt 70 leaves disordered residues out of the domains\n", "model.pdb"},
    // ---- classic runs side by side ----
    {"classic runs sharing a chain copy give the serial results", "cp $DATA/2yex.pdb .",
     "for m in 20 25 30 35 40 45 50 55; do $Q -noss -ml $m 2yexA > s$m & done; wait; "
     "for m in 20 25 30 35 40 45 50 55; do $Q -noss -ml $m 2yexA | cmp -s - s$m || echo differs $m; done",
     0, "", "", "2yex.pdb 2yexa.pdb s20 s25 s30 s35 s40 s45 s50 s55"},
    {"classic runs sharing one DSSP file (./x.pdb and ./y.pdb both write .dssp)",
     "cp $DATA/1rmd.pdb x.pdb && cp $DATA/1rmd.pdb y.pdb && cp $DATA/1rmd.dssp stored.dssp && "
     "printf '#!/bin/sh\\nsleep 0.3\\ncat stored.dssp\\n' > fake-dssp && chmod +x fake-dssp",
     "export DSSP_PATH=./fake-dssp; $Q -md 3 ./x.pdb > a & $Q -md 3 ./y.pdb > b & wait; cat a b", 0,
     "\t116\t3\t (34-76) (1-33;77-87) (88-116)\n\t116\t3\t (34-76) (1-33;77-87) (88-116)\n", "",
     "a b dssp.log fake-dssp stored.dssp x.pdb y.pdb"},
    // ---- stopping ----
    {"SIGTERM during a batch: its temporary folder removed, status 128 + 15", kSlowDssp,
     "cp $DATA/1crn.pdb c.pdb; TMPDIR=$PWD/t DSSP_PATH=$PWD/slow-dssp $Q --format classic c.pdb & sleep 0.5; "
     "ls t | grep -c quarnel; kill -TERM $!; { wait $!; echo status $?; } 2>/dev/null",
     0, "1\nstatus 143\n", "", "c.pdb slow-dssp t/"},
};

// Times differ from run to run: the TSV's time_sec column and JSON's "time_sec" become T.
std::string Masked(const std::string& text) {
  static const std::regex tsvTime("^((?:[^\t\n]*\t){6})[0-9.]+(\t(?:[^\t\n]*\t){4}[^\t\n]*)$",
                                  std::regex::multiline);
  static const std::regex jsonTime("\"time_sec\":[0-9.]+");
  return std::regex_replace(std::regex_replace(text, tsvTime, "$1T$2"), jsonTime, "\"time_sec\":T");
}

// Every name under the folder, hidden ones too, sorted; a folder's name ends in '/'.
std::string Everything(const std::string& folder) {
  const std::string list = folder + ".list";
  std::system(("cd " + Quote(folder) + " && find . -mindepth 1 \\( -type d -printf '%P/\\n' \\) -o -printf '%P\\n' "
               "| LC_ALL=C sort | tr '\\n' ' ' > " + Quote(list)).c_str());
  std::string names = ReadFile(list);
  std::remove(list.c_str());
  if (!names.empty()) names.pop_back();
  return names;
}

TEST(Failures, Table) {
  const std::string tool = Setting("QUARNEL_BIN", QUARNEL_TOOL);
  for (const FailureRow& row : kRows) {
    SCOPED_TRACE(row.name);
    Scratch scratch;
    const std::string environment = "cd " + Quote(scratch.path()) + " && unset DSSP_PATH && export DATA=" +
                                    Quote(DataFile("").substr(0, DataFile("").size() - 1)) + " Q=" + Quote(tool) + "; ";
    ASSERT_EQ(std::system((environment + row.setup).c_str()), 0);
    const std::string out = scratch.path() + ".out", err = scratch.path() + ".err";
    const int status = std::system((environment + "( " + row.command + " ) >" + Quote(out) + " 2>" + Quote(err)).c_str());
    EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, row.status);
    EXPECT_EQ(Masked(ReadFile(out)), row.out);
    EXPECT_EQ(ReadFile(err), row.err);
    EXPECT_EQ(Everything(scratch.path()), row.left);
    std::remove(out.c_str());
    std::remove(err.c_str());
  }
}

}  // namespace
}  // namespace quarnel::test
