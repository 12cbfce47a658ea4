// Reading PDB records by their columns.
#include "formats/pdb_records.h"

#include <cstring>
#include <new>

#include "base/memory.h"

namespace quarnel {
namespace {

// An ATOM record that holds coordinates runs to column 54 at least, and a typical one to column
// 80: room for the records of a text is reserved from its size, and its pages asked for at once.
constexpr size_t kTypicalRecord = 81;
constexpr size_t kClosingRecords = 64;

template <size_t N>
void CopyField(std::string_view field, char (&to)[N]) {
  std::memset(to, 0, N);
  field.copy(to, N - 1);  // an empty field may have no storage at all
}

bool RecordKind(std::string_view piece, AtomRecord::Kind& kind) {
  if (StartsWith(piece, "ATOM  ")) kind = AtomRecord::kAtom;
  else if (StartsWith(piece, "HETATM")) kind = AtomRecord::kHetatm;
  else if (StartsWith(piece, "ENDMDL")) kind = AtomRecord::kEndModel;
  else if (StartsWith(piece, "END")) kind = AtomRecord::kEnd;
  else if (StartsWith(piece, "TER")) kind = AtomRecord::kTer;
  else return false;
  return true;
}

void Reserve(AtomRecords& records, size_t bytes) {
  try {
    const size_t expected = bytes / kTypicalRecord + kClosingRecords;
    records.records.reserve(expected);
    PrefaultForWriting(records.records.data(), expected * sizeof(AtomRecord));
  } catch (const std::bad_alloc&) {
    // Room is only a saving; the array grows as it must.
  }
}

bool LooksGzipped(std::string_view piece) {
  return piece.size() >= 2 && static_cast<unsigned char>(piece[0]) == 0x1f &&
         static_cast<unsigned char>(piece[1]) == 0x8b;
}

// The classic reader's refusals and its end: false when the reading stops at this piece.
class ClassicReading {
 public:
  explicit ClassicReading(AtomRecords& records) : records_(records) {}

  bool Take(std::string_view piece, bool keepLine) {
    // Structures often arrive gzip-compressed or as mmCIF. Read by PDB columns, the first holds
    // no ATOM record and the second's atom_site rows, which also begin with "ATOM", give
    // nonsense residues: either would make a report that looks real. An mmCIF file opens with
    // its data block, before any ATOM record.
    if (first_ && LooksGzipped(piece)) return Refuse("gzip-compressed");
    first_ = false;
    if (!residueSeen_ && StartsWith(piece, "data_")) return Refuse("an mmCIF file");
    AtomRecord record;
    if (!ParsePdbRecord(piece, record)) return true;
    if (!keepLine) record.line = std::string_view();
    records_.records.push_back(record);
    residueSeen_ = residueSeen_ || (record.kind == AtomRecord::kAtom && !record.IsHydrogen());
    return !record.IsEnd();
  }

 private:
  bool Refuse(const char* what) {
    records_.notPdb = what;
    return false;
  }

  AtomRecords& records_;
  bool first_ = true;
  bool residueSeen_ = false;
};

}  // namespace

bool ParsePdbRecord(std::string_view piece, AtomRecord& record) {
  if (!RecordKind(piece, record.kind)) return false;
  record.line = piece;
  if (record.IsEnd()) return true;
  record.serial = AtoiField(ColumnsView(piece, 7, 11));      // serial
  CopyField(ColumnsView(piece, 13, 16), record.name);        // name
  record.altloc = Column(piece, 17);                     // altLoc
  CopyField(ColumnsView(piece, 18, 20), record.resname);     // resName
  record.chain = Column(piece, 22);                      // chainID
  record.resnum = AtoiField(ColumnsView(piece, 23, 26));     // resSeq
  record.icode = Column(piece, 27);                      // iCode
  record.x = AtofField(ColumnsView(piece, 31, 38));          // x
  record.y = AtofField(ColumnsView(piece, 39, 46));          // y
  record.z = AtofField(ColumnsView(piece, 47, 54));          // z
  record.occupancy = AtofField(ColumnsView(piece, 55, 60));  // occupancy
  record.bfactor = AtofField(ColumnsView(piece, 61, 66));    // tempFactor
  CopyField(ColumnsView(piece, 77, 78), record.element);     // element
  CopyField(ColumnsView(piece, 79, 80), record.charge);      // charge
  return true;
}

AtomRecords ReadPdbRecords(std::shared_ptr<const std::string> text) {
  AtomRecords records;
  records.text = std::move(text);
  Reserve(records, records.text->size());
  ForEachPiece(*records.text, [&records](std::string_view piece) {
    AtomRecord record;
    if (!ParsePdbRecord(piece, record)) return true;
    records.records.push_back(record);
    return !record.IsEnd();
  });
  return records;
}

bool ReadPdbRecords(LineReader& reader, AtomRecords& records) {
  Reserve(records, reader.SizeHint());
  ClassicReading reading(records);
  std::string piece;
  while (reader.Next(piece))
    if (!reading.Take(piece, false)) break;
  // Text refused as not PDB is refused whatever follows it.
  return !records.notPdb.empty() || !reader.Failed();
}

std::shared_ptr<const AtomRecords> PdbLineRecords::Read() const {
  std::unique_ptr<LineReader> reader = lines_.Open();
  if (reader == nullptr) return nullptr;
  auto records = std::make_shared<AtomRecords>();
  if (!ReadPdbRecords(*reader, *records)) return nullptr;
  return records;
}

int CountReaderResidues(const std::vector<AtomRecord>& records) {
  ReaderResidues residues;
  for (const AtomRecord& record : records) {
    if (record.IsEnd()) break;
    if (ReaderResidues::Read(record)) residues.Begins(record);
  }
  return residues.count();
}

}  // namespace quarnel
