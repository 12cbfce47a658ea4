// Atom records: what the fixed columns of a PDB ATOM, HETATM, TER, END or ENDMDL record give.
// PDB text yields them by the piece, column and atoi/atof rules of quarnel's readers; mmCIF
// yields them through gemmi with every field equal to what its column would read back, so that
// every reader of records sees one structure the same way whatever file it came in.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quarnel {

struct AtomRecord {
  enum Kind : uint8_t { kAtom, kHetatm, kTer, kEnd, kEndModel };

  Kind kind = kAtom;
  char name[5] = {};     // 13-16 as written: " CA ", "HB12"; shorter when the line is
  char altloc = ' ';     // 17
  char resname[4] = {};  // 18-20: "ALA", " DA"
  char chain = ' ';      // 22
  char icode = ' ';      // 27
  char element[3] = {};  // 77-78: " C", "FE"
  char charge[3] = {};   // 79-80: "2+"
  int32_t serial = 0;    // 7-11
  // 23-26. A number past the four columns (an mmCIF chain of more than 9,999 residues) is kept
  // whole: there are no columns to read it back from.
  int32_t resnum = 0;
  double x = 0.0, y = 0.0, z = 0.0;  // 31-38, 39-46, 47-54 (%8.3f)
  double occupancy = 0.0;            // 55-60 (%6.2f)
  double bfactor = 0.0;              // 61-66 (%6.2f)
  // The piece of PDB text the record was read from, line end included, so that a copy of a PDB
  // file's record is the record as written (old files keep text past column 72); empty for a
  // record filled from mmCIF, which is written in wwPDB's columns.
  std::string_view line;

  bool IsEnd() const { return kind == kEnd || kind == kEndModel; }
  // Column 14 'H': a hydrogen, which quarnel's readers pass over. A four-character name such
  // as HG21 starts in column 13 and has its second letter there.
  bool IsHydrogen() const { return name[0] != '\0' && name[1] == 'H'; }
};

// Records in file order, and what keeps their lines alive.
struct AtomRecords {
  std::vector<AtomRecord> records;
  std::shared_ptr<const std::string> text;  // the PDB text their lines lie in; null when none
  // Text that is not PDB, as the classic reader recognises it: "gzip-compressed" or "an mmCIF
  // file"; the records then stop where it was recognised.
  std::string notPdb;
};

// Records that can be read any number of times: a file read again each time (the classic
// run's second reading of its file), or records held in memory.
class RecordSource {
 public:
  virtual ~RecordSource() = default;
  // The records; nullptr when they cannot be read (a file that does not open, an I/O error).
  virtual std::shared_ptr<const AtomRecords> Read() const = 0;
  // The name messages give them (a file name).
  virtual const std::string& name() const = 0;
};

class HeldRecords final : public RecordSource {
 public:
  HeldRecords(std::string name, AtomRecords records)
      : name_(std::move(name)), records_(std::make_shared<const AtomRecords>(std::move(records))) {}
  std::shared_ptr<const AtomRecords> Read() const override { return records_; }
  const std::string& name() const override { return name_; }
  const AtomRecords& records() const { return *records_; }

 private:
  std::string name_;
  std::shared_ptr<const AtomRecords> records_;
};

// The residues quarnel's reader builds from the records, one record at a time: ATOM records up
// to the first END or ENDMDL, hydrogens left out, a new residue wherever the residue number or
// the insertion code changes.
class ReaderResidues {
 public:
  // Whether the reader takes the record into a residue (callers stop at the first end record).
  static bool Read(const AtomRecord& record) { return record.kind == AtomRecord::kAtom && !record.IsHydrogen(); }
  // Whether a record the reader takes begins a residue; counts it when it does.
  bool Begins(const AtomRecord& record) {
    if (count_ != 0 && record.resnum == resnum_ && record.icode == icode_) return false;
    ++count_;
    resnum_ = record.resnum;
    icode_ = record.icode;
    return true;
  }
  int count() const { return count_; }

 private:
  int count_ = 0;
  int32_t resnum_ = 0;
  char icode_ = ' ';
};

int CountReaderResidues(const std::vector<AtomRecord>& records);

}  // namespace quarnel
