"""The Python module against the command line: the same inputs and settings give the command
line's rows; threads give the same results; bad inputs and settings fail with a reason."""

import concurrent.futures
import json
import os
import subprocess
import sys
import tempfile
import unittest

import numpy

import quarnel

DATA = os.environ["QUARNEL_TEST_DATA"]
TOOL = os.environ["QUARNEL_TOOL"]


def data(name):
    return os.path.join(DATA, name)


def rows(text):
    """TSV rows without the record line and header, time column blanked."""
    kept = []
    for line in text.splitlines():
        if not line or line.startswith("#") or line.startswith("chain_id\t"):
            continue
        fields = line.split("\t")
        fields[6] = "T"
        kept.append("\t".join(fields))
    return kept


def tool(*args):
    return subprocess.run([TOOL, "--quiet", *args], capture_output=True, text=True,
                          env={k: v for k, v in os.environ.items() if k != "DSSP_PATH"})


def _chop_row(path):
    return quarnel.chop(path).tsv_row


# (command-line arguments, the same as keyword settings)
SETTINGS = [
    ([], {}),
    (["-noss"], {"secondary_structure": False}),
    (["--mode", "cath"], {"mode": "cath"}),
    (["-md", "3", "-ml", "25"], {"max_domains": 3, "min_domain_size": 25}),
    (["--min-plddt", "20"], {"min_plddt": 20.0}),
]
INPUTS = ["2yex.pdb", "1cuk.pdb", "1rmd_icode.pdb", "formats/2w83_c.cif", "formats/2w83_c.pdb.gz"]


class SameAsCommandLine(unittest.TestCase):
    def test_chop_gives_the_tsv_row(self):
        for args, settings in SETTINGS:
            for name in INPUTS:
                with self.subTest(args=args, input=name):
                    expected = rows(tool(*args, "--format", "tsv", data(name)).stdout)
                    self.assertEqual(rows(quarnel.chop(data(name), **settings).tsv_row), expected)

    def test_to_dict_is_the_json_line(self):
        line = tool("--format", "json", data("2yex.pdb")).stdout.splitlines()[1]
        expected = json.loads(line)
        got = quarnel.chop(data("2yex.pdb")).to_dict()
        for record in (expected, got):
            record.pop("time_sec")
        self.assertEqual(got, expected)

    def test_chop_all_is_the_batch_row_for_row(self):
        expected = rows(tool("--format", "tsv", DATA).stdout)
        results = quarnel.chop_all([DATA], jobs=2)
        self.assertEqual(rows("".join(r.tsv_row for r in results if r.ok)), expected)
        self.assertEqual(len(expected), sum(r.ok for r in results))

    def test_bytes_and_gemmi_structures_give_the_files_chopping(self):
        by_path = quarnel.chop(data("2yex.pdb"))
        with open(data("2yex.pdb"), "rb") as pdb:
            self.assertEqual(quarnel.chop(pdb.read(), name="2yex.pdb").tsv_row.split("\t")[:6],
                             by_path.tsv_row.split("\t")[:6])
        try:
            import gemmi
        except ImportError:
            self.skipTest("no gemmi module")
        from_gemmi = quarnel.from_gemmi(gemmi.read_structure(data("2yex.pdb")), chain="A")
        self.assertEqual(from_gemmi.chopping, by_path.chopping)
        self.assertEqual(from_gemmi.sequence_md5, by_path.sequence_md5)

    def test_forked_processes_give_the_same_results(self):
        # The parent's chopper, with its DSSP helper running, is inherited by every child.
        names = [data(name) for name in ["2yex.pdb", "1aki.pdb", "2efj.pdb", "1p3c.pdb", "1cuk.pdb", "1ubi.pdb"]]
        alone = [quarnel.chop(name).tsv_row for name in names]
        import multiprocessing
        with multiprocessing.get_context("fork").Pool(3) as pool:
            forked = pool.map(_chop_row, names * 2)
        self.assertEqual(rows("".join(forked)), rows("".join(alone * 2)))

    def test_threads_give_the_same_results(self):
        names = [data(name) for name in INPUTS + ["1aki.pdb", "2efj.pdb", "1p3c.pdb"]]
        alone = [quarnel.chop(name).tsv_row for name in names]
        with concurrent.futures.ThreadPoolExecutor(4) as pool:
            together = list(pool.map(lambda name: quarnel.chop(name).tsv_row, names))
        self.assertEqual(rows("".join(together)), rows("".join(alone)))


class Readme(unittest.TestCase):
    def test_the_python_example_prints_what_it_says(self):
        with open(os.path.join(os.environ["QUARNEL_SOURCE"], "README.md")) as readme:
            text = readme.read()
        section = text[text.index("## Use from Python"):]
        code = section.split("```python\n", 1)[1].split("```", 1)[0]
        printed = section.split("prints\n\n```\n", 1)[1].split("```", 1)[0]
        run = subprocess.run([sys.executable, "-c", code], cwd=DATA, capture_output=True, text=True)
        self.assertEqual(run.stderr, "")
        self.assertEqual(run.stdout, printed)


class Values(unittest.TestCase):
    def test_labels_follow_the_domains(self):
        result = quarnel.chop(data("2yex.pdb"))
        labels = result.labels
        self.assertIsInstance(labels, numpy.ndarray)
        self.assertEqual(labels.shape, (result.residues,))
        self.assertEqual([int((labels == k + 1).sum()) for k in range(len(result.domains))],
                         [domain.residues for domain in result.domains])
        first = result.residue_domains[0]
        self.assertEqual((first.residue.label, first.name, first.domain), ("2", "ALA", 1))
        self.assertEqual([d.id for d in result.domains], ["2yexA01", "2yexA02"])
        self.assertEqual(result.domains[1].segments[0].last.label, "270")

    def test_notes_have_kinds(self):
        result = quarnel.chop(data("2yex.pdb"), min_plddt=20.0)
        self.assertIn("left_out", [note.kind for note in result.notes])


class Failures(unittest.TestCase):
    def test_bad_inputs_and_settings(self):
        with tempfile.TemporaryDirectory() as folder:
            empty = os.path.join(folder, "empty.pdb")
            open(empty, "w").close()
            cases = [
                (lambda: quarnel.chop(os.path.join(folder, "missing.pdb")), quarnel.Error, 3),
                (lambda: quarnel.chop(empty), quarnel.Error, 3),
                (lambda: quarnel.chop(data("2yex.pdb"), chain="Q"), quarnel.Error, 3),
                (lambda: quarnel.chop(b"not a structure"), quarnel.Error, 3),
                (lambda: quarnel.chop(data("2yex.pdb"), mode="cath", max_domains=2), quarnel.Error, 2),
                (lambda: quarnel.chop(data("1isu.pdb")), ValueError, None),
                (lambda: quarnel.chop(data("2yex.pdb"), mode="fast"), ValueError, None),
                (lambda: quarnel.chop(data("2yex.pdb"), maxdomains=2), TypeError, None),
            ]
            for call, error, status in cases:
                with self.subTest(error=error, status=status), self.assertRaises(error) as raised:
                    call()
                if status is not None:
                    self.assertEqual(raised.exception.status, status)

    def test_a_file_that_fails_in_chop_all_is_a_result(self):
        results = quarnel.chop_all([data("2yex.pdb"), "/no/such/file.pdb"])
        self.assertEqual([r.ok for r in results], [True, False])
        self.assertIn("no such file", results[1].error)


if __name__ == "__main__":
    unittest.main()
