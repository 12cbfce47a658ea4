// quarnel._quarnel: the library's chopper and its plain values for Python. The chopping runs
// without the GIL, so Python threads chop at once; the package (python/quarnel) adds the
// functions users call.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "library/chopper_internal.h"
#include "quarnel/quarnel.h"

namespace py = pybind11;
using namespace quarnel;

namespace {

const char* KindName(Note::Kind kind) {
  switch (kind) {
    case Note::Kind::kSkipped: return "skipped";
    case Note::Kind::kLeftOut: return "left_out";
    case Note::Kind::kPredictedModel: return "predicted_model";
    case Note::Kind::kOther: break;
  }
  return "other";
}

py::array_t<int32_t> Labels(const Result& result) {
  py::array_t<int32_t> labels(static_cast<py::ssize_t>(result.labels.size()));
  auto out = labels.mutable_unchecked<1>();
  for (size_t k = 0; k < result.labels.size(); ++k) out(static_cast<py::ssize_t>(k)) = result.labels[k].domain;
  return labels;
}

std::string Insertion(const ResidueId& id) { return id.insertion == ' ' ? "" : std::string(1, id.insertion); }

void BindValues(py::module_& m) {
  py::enum_<Mode>(m, "Mode").value("classic", Mode::kClassic).value("cath", Mode::kCath);
  py::class_<ResidueId>(m, "ResidueId")
      .def_readonly("number", &ResidueId::number)
      .def_property_readonly("insertion", &Insertion)
      .def_property_readonly("label", &ResidueId::Label)
      .def("__repr__", [](const ResidueId& id) { return "ResidueId('" + id.Label() + "')"; });
  py::class_<Range>(m, "Range")
      .def_readonly("first", &Range::first)
      .def_readonly("last", &Range::last)
      .def("__repr__", [](const Range& r) { return "Range('" + r.first.Label() + "-" + r.last.Label() + "')"; });
  py::class_<Domain>(m, "Domain")
      .def_readonly("id", &Domain::id)
      .def_readonly("segments", &Domain::segments)
      .def_readonly("residues", &Domain::residues)
      .def_readonly("confidence", &Domain::confidence);
  py::class_<Cut>(m, "Cut")
      .def_readonly("parent", &Cut::parent)
      .def_readonly("new_domain", &Cut::new_domain)
      .def_readonly("parent_compactness", &Cut::parent_compactness)
      .def_readonly("new_compactness", &Cut::new_compactness)
      .def_readonly("parent_interaction", &Cut::parent_interaction)
      .def_readonly("new_interaction", &Cut::new_interaction)
      .def_readonly("interface", &Cut::interface);
  py::class_<DomainBoundary>(m, "DomainBoundary")
      .def_readonly("after", &DomainBoundary::after)
      .def_readonly("before", &DomainBoundary::before)
      .def_readonly("probability", &DomainBoundary::probability);
  py::class_<Note>(m, "Note")
      .def_property_readonly("kind", [](const Note& note) { return KindName(note.kind); })
      .def_readonly("text", &Note::text)
      .def("__repr__", [](const Note& note) { return std::string("Note(") + KindName(note.kind) + ": " + note.text + ")"; });
  py::class_<ResidueDomain>(m, "ResidueDomain")
      .def_readonly("residue", &ResidueDomain::residue)
      .def_readonly("name", &ResidueDomain::name)
      .def_readonly("domain", &ResidueDomain::domain);
}

void BindResult(py::module_& m) {
  py::class_<Result>(m, "Result")
      .def_readonly("input", &Result::input)
      .def_readonly("chain", &Result::chain)
      .def_readonly("entry", &Result::entry)
      .def_readonly("mode", &Result::mode)
      .def_readonly("error", &Result::error)
      .def_readonly("status", &Result::status)
      .def_property_readonly("ok", &Result::ok)
      .def_readonly("residues", &Result::residues)
      .def_readonly("sequence_md5", &Result::sequence_md5)
      .def_readonly("verdict", &Result::verdict)
      .def_readonly("domains", &Result::domains)
      .def_readonly("chopping", &Result::chopping)
      .def_readonly("confidence", &Result::confidence)
      .def_readonly("cuts", &Result::cuts)
      .def_readonly("boundaries", &Result::boundaries)
      .def_readonly("residue_domains", &Result::labels)
      .def_property_readonly("labels", &Labels)
      .def_readonly("notes", &Result::notes)
      .def_readonly("left_out", &Result::left_out)
      .def_readonly("seconds", &Result::seconds)
      .def_readonly("tsv_row", &Result::tsv_row)
      .def_readonly("json_line", &Result::json_line)
      .def("__repr__", [](const Result& r) {
        return "Result(" + r.entry + ": " + (r.ok() ? r.chopping : "error: " + r.error) + ")";
      });
}

void BindOptions(py::module_& m) {
  py::class_<Options>(m, "Options")
      .def(py::init<>())
      .def_readwrite("mode", &Options::mode)
      .def_readwrite("max_domains", &Options::max_domains)
      .def_readwrite("min_domain_size", &Options::min_domain_size)
      .def_readwrite("min_segment_residues", &Options::min_segment_residues)
      .def_readwrite("sample_points", &Options::sample_points)
      .def_readwrite("max_loop", &Options::max_loop)
      .def_readwrite("max_terminal", &Options::max_terminal)
      .def_readwrite("max_beta_passes", &Options::max_beta_passes)
      .def_readwrite("max_beta_pairs", &Options::max_beta_pairs)
      .def_readwrite("max_interface", &Options::max_interface)
      .def_readwrite("min_compactness", &Options::min_compactness)
      .def_readwrite("max_interaction", &Options::max_interaction)
      .def_readwrite("backbone_weight", &Options::backbone_weight)
      .def_readwrite("residue_separation", &Options::residue_separation)
      .def_readwrite("ca_contacts", &Options::ca_contacts)
      .def_readwrite("secondary_structure", &Options::secondary_structure)
      .def_readwrite("min_plddt", &Options::min_plddt)
      .def_readwrite("each_chain", &Options::each_chain)
      .def_readwrite("threads", &Options::threads);
}

// Atoms as tuples (hetatm, name, altloc, residue name, chain, number, insertion code, x, y, z,
// occupancy, B-factor, element): what a reader of any structure library can give cheaply.
using AtomTuple = std::tuple<bool, std::string, std::string, std::string, std::string, int, std::string, double,
                             double, double, double, double, std::string>;

char FirstOr(const std::string& text, char blank) { return text.empty() ? blank : text[0]; }

std::vector<PdbAtom> AtomsOf(const std::vector<AtomTuple>& tuples) {
  std::vector<PdbAtom> atoms;
  atoms.reserve(tuples.size());
  for (const AtomTuple& t : tuples) {
    PdbAtom atom;
    atom.hetatm = std::get<0>(t);
    atom.name = std::get<1>(t);
    atom.altloc = FirstOr(std::get<2>(t), ' ');
    atom.residue_name = std::get<3>(t);
    atom.chain = FirstOr(std::get<4>(t), ' ');
    atom.residue = ResidueId{std::get<5>(t), FirstOr(std::get<6>(t), ' ')};
    atom.x = std::get<7>(t);
    atom.y = std::get<8>(t);
    atom.z = std::get<9>(t);
    atom.occupancy = std::get<10>(t);
    atom.b_factor = std::get<11>(t);
    atom.element = std::get<12>(t);
    atoms.push_back(std::move(atom));
  }
  return atoms;
}

void BindChopper(py::module_& m) {
  using Release = py::call_guard<py::gil_scoped_release>;
  py::class_<Chopper>(m, "Chopper")
      .def(py::init([](const Options& options, const std::string& helper) {
             Chopper chopper(options);
             SetDsspHelper(chopper, helper);
             return chopper;
           }),
           py::arg("options"), py::arg("dssp_helper") = "")
      .def("chop_file", &Chopper::ChopFile, py::arg("path"), py::arg("chain") = "", Release())
      .def("chop_bytes", &Chopper::ChopBytes, py::arg("data"), py::arg("name"), py::arg("chain") = "", Release())
      .def("chop_all", &Chopper::ChopAll, py::arg("paths"), py::arg("jobs") = 0, Release())
      .def(
          "chop_atoms",
          [](const Chopper& chopper, const std::vector<AtomTuple>& tuples, const std::string& name) {
            const std::vector<PdbAtom> atoms = AtomsOf(tuples);
            py::gil_scoped_release release;
            return chopper.ChopAtoms(atoms, name);
          },
          py::arg("atoms"), py::arg("name"));
}

}  // namespace

PYBIND11_MODULE(_quarnel, m) {
  m.doc() = "quarnel's chopper: protein chains split into structural domains";
  // The exception type lives in the module, not in a static of ours: the translator finds it
  // there when a call fails.
  m.attr("Error") = py::reinterpret_steal<py::object>(
      PyErr_NewException("quarnel._quarnel.Error", PyExc_RuntimeError, nullptr));
  py::register_exception_translator([](std::exception_ptr thrown) {
    try {
      if (thrown) std::rethrow_exception(thrown);
    } catch (const Error& failure) {
      const py::object type = py::module_::import("quarnel._quarnel").attr("Error");
      py::object instance = type(failure.what());
      instance.attr("status") = failure.status();
      PyErr_SetObject(type.ptr(), instance.ptr());
    }
  });
  BindValues(m);
  BindResult(m);
  BindOptions(m);
  BindChopper(m);
}
