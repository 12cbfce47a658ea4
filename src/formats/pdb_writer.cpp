// Writing records in the fixed columns of PDB ATOM, HETATM, TER and END records.
#include "formats/pdb_writer.h"

#include <cstdio>

namespace quarnel {
namespace {

constexpr size_t kRecordWidth = 80;
constexpr int kSerialWidth = 5;
constexpr int kResnumWidth = 4;
constexpr long kMinResnum = -999;
constexpr long kMaxResnum = 9999;
constexpr long kMinSerial = -9999;
constexpr long kMaxSerial = 99999;
constexpr size_t kNameWidth = 4;
constexpr size_t kResidueWidth = 3;
constexpr size_t kElementWidth = 2;
constexpr int kCoordinateWidth = 8;  // %8.3f
constexpr int kCoordinateDecimals = 3;
constexpr int kFactorWidth = 6;      // occupancy and B-factor, %6.2f
constexpr int kFactorDecimals = 2;
constexpr int kBase36 = 36;

std::string Fixed(double value, int width, int decimals) {
  char text[64];
  std::snprintf(text, sizeof(text), "%*.*f", width, decimals, value);
  return text;
}

// Builds one record from its fields, left to right.
struct RecordBuilder {
  std::string text;
  void Field(const std::string& value) { text += value; }
  void Char(char c) { text += c; }
  void Left(const std::string& value, size_t width) {
    text += value.substr(0, width);
    if (value.size() < width) text.append(width - value.size(), ' ');
  }
  void Right(const std::string& value, size_t width) {
    if (value.size() < width) text.append(width - value.size(), ' ');
    text += value.substr(0, width);
  }
  void Blank(size_t width) { text.append(width, ' '); }
  std::string Finish() {
    if (text.size() < kRecordWidth) text.append(kRecordWidth - text.size(), ' ');
    return text;
  }
};

std::string SerialField(long serial) {
  const std::string field = Hybrid36(serial, kSerialWidth, kMinSerial, kMaxSerial);
  return field.empty() ? std::string(kSerialWidth, '*') : field;
}

std::string ResidueNumberField(long resnum) {
  const std::string field = Hybrid36(resnum, kResnumWidth, kMinResnum, kMaxResnum);
  return field.empty() ? std::string(kResnumWidth, '*') : field;
}

std::string AtomColumns(const AtomRecord& r) {
  RecordBuilder record;
  record.Left(r.kind == AtomRecord::kHetatm ? "HETATM" : "ATOM", 6);
  record.Right(SerialField(r.serial), kSerialWidth);
  record.Blank(1);
  record.Left(r.name, kNameWidth);
  record.Char(r.altloc);
  record.Right(r.resname, kResidueWidth);
  record.Blank(1);
  record.Char(r.chain);
  record.Field(ResidueNumberField(r.resnum));
  record.Char(r.icode);
  record.Blank(3);
  for (double coordinate : {r.x, r.y, r.z}) record.Field(Fixed(coordinate, kCoordinateWidth, kCoordinateDecimals));
  record.Field(Fixed(r.occupancy, kFactorWidth, kFactorDecimals));
  record.Field(Fixed(r.bfactor, kFactorWidth, kFactorDecimals));
  record.Blank(10);
  record.Right(r.element, kElementWidth);
  record.Left(r.charge, 2);
  return record.Finish();
}

// "TER", its serial, and the residue it closes, as wwPDB writes it.
std::string TerColumns(const AtomRecord& r) {
  RecordBuilder record;
  record.Left("TER", 6);
  record.Right(SerialField(r.serial), kSerialWidth);
  record.Blank(6);
  record.Right(r.resname, kResidueWidth);
  record.Blank(1);
  record.Char(r.chain);
  record.Field(ResidueNumberField(r.resnum));
  record.Char(r.icode);
  return record.Finish();
}

std::string Columns(const AtomRecord& r) {
  RecordBuilder record;
  switch (r.kind) {
    case AtomRecord::kAtom:
    case AtomRecord::kHetatm: return AtomColumns(r);
    case AtomRecord::kTer: return TerColumns(r);
    case AtomRecord::kEnd: record.Field("END"); break;
    case AtomRecord::kEndModel: record.Field("ENDMDL"); break;
  }
  return record.Finish();
}

}  // namespace

std::string Hybrid36(long value, int width, long minDecimal, long maxDecimal) {
  char text[16];
  if (value >= minDecimal && value <= maxDecimal) {
    std::snprintf(text, sizeof(text), "%*ld", width, value);
    return text;
  }
  long firstLettered = 10;  // "A000" stands for maxDecimal + 1
  for (int i = 1; i < width; ++i) firstLettered *= kBase36;
  long code = value - (maxDecimal + 1) + firstLettered;
  long capacity = firstLettered / 10 * kBase36;
  if (value <= maxDecimal || code >= capacity) return std::string();
  std::string digits(static_cast<size_t>(width), '0');
  for (int i = width - 1; i >= 0; --i, code /= kBase36)
    digits[static_cast<size_t>(i)] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"[code % kBase36];
  return digits;
}

void AppendChainEnd(std::vector<AtomRecord>& records) {
  AtomRecord ter;
  ter.kind = AtomRecord::kTer;
  ter.line = kTerLine;
  records.push_back(ter);
  AtomRecord end;
  end.kind = AtomRecord::kEnd;
  end.line = kEndLine;
  records.push_back(end);
}

std::string PdbLine(const AtomRecord& record) {
  if (record.line.empty()) return Columns(record);
  std::string_view line = record.line;
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
  return std::string(line);
}

void AppendPdbRecord(std::string& out, const AtomRecord& record) {
  if (record.line.empty()) {
    out += Columns(record);
    out += '\n';
    return;
  }
  out.append(record.line);
  if (record.line.back() != '\n') out += '\n';
}

std::string PdbText(const std::vector<AtomRecord>& records) {
  std::string text;
  for (const AtomRecord& record : records) AppendPdbRecord(text, record);
  return text;
}

}  // namespace quarnel
