// PDB text read into atom records by the rules of quarnel's readers: 299-character pieces, each
// a record of its own; "ATOM  ", "HETATM", "TER" and "END" (END or ENDMDL) at the start of a
// piece; fields by their columns, numbers with atoi and atof. Reading stops at the first END.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "base/text.h"
#include "formats/atom_records.h"

namespace quarnel {

// The record a piece holds; its fields by column, its line the piece itself. False for a piece
// that is no atom, TER or END record.
bool ParsePdbRecord(std::string_view piece, AtomRecord& record);

// The records of text held in memory, up to and including the first END; their lines lie in
// the text, which the records keep.
AtomRecords ReadPdbRecords(std::shared_ptr<const std::string> text);

// The records a reader gives, as the classic reader meets them: a first piece of gzip data or
// an mmCIF data block before any residue's atom ends the reading as notPdb. The pieces are not
// kept: the records have no lines. False on a read error.
bool ReadPdbRecords(LineReader& reader, AtomRecords& records);

// PDB text read afresh, by the classic reader's rules, each time its records are asked for: the
// classic run's file (a FileSource), or text in memory read the same way. The lines are the
// caller's and must outlive this source.
class PdbLineRecords final : public RecordSource {
 public:
  explicit PdbLineRecords(const LineSource& lines) : lines_(lines) {}
  std::shared_ptr<const AtomRecords> Read() const override;
  const std::string& name() const override { return lines_.name(); }

 private:
  const LineSource& lines_;
};

}  // namespace quarnel
