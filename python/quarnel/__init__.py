"""quarnel: protein chains split into structural domains.

    >>> import quarnel
    >>> result = quarnel.chop("2yex.pdb")
    >>> result.chopping
    '2-86,87-270'

Results are the command line's, value for value: ``result.tsv_row`` is the row
``quarnel --format tsv`` writes, ``result.to_dict()`` its ``--format json`` line.
"""

import json
import os

from ._quarnel import (Chopper, Cut, Domain, DomainBoundary, Error, Mode, Note, Options, Range,
                       ResidueDomain, ResidueId, Result)

__all__ = ["chop", "chop_all", "from_gemmi", "options", "Error", "Result", "Options", "Mode",
           "Domain", "Range", "ResidueId", "Cut", "DomainBoundary", "Note", "ResidueDomain"]

_HELPER = "quarnel-secondary"


def _dssp_helper():
    """The program that runs DSSP's library for the module: beside the package (pip), under
    <prefix>/libexec/quarnel (cmake --install), or in the build folder."""
    folder = os.path.dirname(os.path.abspath(__file__))
    for _ in range(6):
        for candidate in (os.path.join(folder, _HELPER),
                          os.path.join(folder, "libexec", "quarnel", _HELPER)):
            if os.access(candidate, os.X_OK):
                return candidate
        folder = os.path.dirname(folder)
    return ""


def options(mode="classic", **settings):
    """An Options of the given settings (the names of Options' fields); unknown names raise
    TypeError rather than being passed over."""
    result = Options()
    chosen = mode if isinstance(mode, Mode) else Mode.__members__.get(str(mode))
    if chosen is None:
        raise ValueError("mode must be 'classic' or 'cath', not %r" % (mode,))
    result.mode = chosen
    known = {name for name in dir(Options) if not name.startswith("_") and name != "mode"}
    for name, value in settings.items():
        if name not in known:
            raise TypeError("unknown option %r; options are: %s" % (name, ", ".join(sorted(known))))
        setattr(result, name, value)
    return result


# The chopper of the latest settings, kept for the next call: its DSSP helper keeps running
# between calls, which a loop of chop() over many files would otherwise start each time.
_latest = None


def _chopper(mode, settings):
    global _latest
    key = (str(mode), tuple(sorted(settings.items())))
    latest = _latest
    if latest is not None and latest[0] == key:
        return latest[1]
    chosen = options(mode, **settings)
    helper = _dssp_helper()
    if chosen.secondary_structure and not helper:
        error = Error("the DSSP helper %s is not installed beside the quarnel package; "
                      "reinstall quarnel, or pass secondary_structure=False" % _HELPER)
        error.status = 1
        raise error
    chopper = Chopper(chosen, helper)
    _latest = (key, chopper)
    return chopper


def _one(results, source):
    if len(results) == 1:
        return results[0]
    chains = ", ".join(result.chain or "(blank)" for result in results)
    raise ValueError("%s has %d protein chains (%s): name one with chain=, or use chop_all"
                     % (source, len(results), chains))


def chop(source, chain=None, mode="classic", name=None, **settings):
    """Splits one chain into domains and returns its Result.

    `source` is a path (PDB or mmCIF, gzip or not) or the file's bytes (then `name` stands for
    it in results). With several protein chains in the file, `chain` names the one to chop.
    Settings are Options' fields: min_plddt=70, secondary_structure=False, max_domains=2, ...
    Raises quarnel.Error (with .status, the command line's exit status) when the input cannot
    be read or the chain cannot be judged."""
    chopper = _chopper(mode, settings)
    if isinstance(source, (bytes, bytearray, memoryview)):
        label = name or "input"
        return _one(chopper.chop_bytes(bytes(source), label, chain or ""), label)
    path = os.fspath(source)
    return _one(chopper.chop_file(path, chain or ""), path)


def chop_all(paths, each_chain=True, jobs=0, mode="classic", **settings):
    """Every protein chain of every file or folder in `paths`, `jobs` files at once (0: one per
    core), in input order: the rows of a batch run. A chain or file that could not be judged is
    a Result whose .ok is False and whose .error says why. each_chain=False judges each file
    whole, as one chain."""
    if isinstance(paths, (str, bytes, os.PathLike)):
        paths = [paths]
    chopper = _chopper(mode, dict(settings, each_chain=each_chain))
    return chopper.chop_all([os.fspath(path) for path in paths], jobs)


def from_gemmi(structure, chain=None, mode="classic", **settings):
    """A chain of a gemmi.Structure (first model), chopped as its file would be."""
    document = structure.make_mmcif_document()
    return chop(document.as_string().encode(), chain=chain, mode=mode,
                name=(structure.name or "structure") + ".cif", **settings)


def _to_dict(result):
    """The command line's JSON line as a dict; for a chain not judged, its input, chain and
    error."""
    if not result.ok:
        return {"input": result.input, "chain": result.chain, "chain_id": result.entry,
                "error": result.error, "status": result.status}
    return json.loads(result.json_line)


Result.to_dict = _to_dict
