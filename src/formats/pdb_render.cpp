// Writing atom sites in the fixed columns of PDB ATOM, HETATM and TER records.
#include "formats/pdb_render.h"

#include <cctype>
#include <cstdio>
#include <string_view>

namespace quarnel {
namespace {

constexpr std::string_view kTextIdPool =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
constexpr char kLeftoverTextId = 'A';
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
constexpr int kMaxChargeDigit = 9;
constexpr int kBase36 = 36;

// Hybrid-36, as wwPDB and most programs extend a field past its decimal range: upper-case
// base-36 numbers that begin with a letter. Empty when the value does not fit even so.
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

std::string Fixed(double value, int width, int decimals) {
  char text[64];
  std::snprintf(text, sizeof(text), "%*.*f", width, decimals, value);
  return text;
}

// wwPDB aligns a name of fewer than four characters whose element has one letter in columns
// 14-16 (" CA " is an alpha carbon); a two-letter element begins in column 13 ("CA  " is a
// calcium ion), and so does every four-character name.
std::string PaddedName(const AtomSite& site) {
  if (site.name.size() >= kNameWidth) return site.name;
  char first = static_cast<char>(std::toupper(static_cast<unsigned char>(site.name[0])));
  // Without an element symbol, a name that begins with a letter is taken to begin with it.
  bool oneLetterElement = site.element.empty()
                              ? std::isalpha(static_cast<unsigned char>(first)) != 0
                              : site.element.size() == 1 && site.element[0] == first;
  return oneLetterElement ? " " + site.name : site.name;
}

std::string Charge(int charge) {
  if (charge == 0 || charge > kMaxChargeDigit || charge < -kMaxChargeDigit) return "  ";
  return std::string(1, static_cast<char>('0' + (charge > 0 ? charge : -charge))) +
         (charge > 0 ? '+' : '-');
}

// Builds one record from its fields; fields wider than their columns are checked by the caller.
struct RecordBuilder {
  std::string text;
  void Field(const std::string& value) { text += value; }
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
    return text + '\n';
  }
};

std::string SiteLabel(const AtomSite& site, const std::string& chainId) {
  return "chain " + chainId + " residue " + std::to_string(site.resnum) + " atom " + site.name;
}

// Why an ATOM record of the site cannot be read back by columns; empty when it can.
std::string AtomProblem(const AtomSite& site, const std::string& serial,
                        const std::string& chainId) {
  std::string where = SiteLabel(site, chainId);
  if (site.resnum < kMinResnum || site.resnum > kMaxResnum)
    return where + ": residue number outside -999..9999 does not fit the PDB columns";
  if (serial.empty()) return where + ": atom serial number does not fit the PDB columns";
  if (site.name.size() > kNameWidth) return where + ": atom name longer than 4 characters";
  if (site.residue.size() > kResidueWidth) return where + ": residue name longer than 3 characters";
  for (double coordinate : {site.x, site.y, site.z})
    if (Fixed(coordinate, kCoordinateWidth, kCoordinateDecimals).size() > kCoordinateWidth)
      return where + ": coordinate does not fit the PDB columns";
  for (double factor : {site.occupancy, site.bfactor})
    if (Fixed(factor, kFactorWidth, kFactorDecimals).size() > kFactorWidth)
      return where + ": occupancy or B-factor does not fit the PDB columns";
  return std::string();
}

std::string ResidueNumberField(long resnum) {
  std::string field = Hybrid36(resnum, kResnumWidth, kMinResnum, kMaxResnum);
  return field.empty() ? std::string(kResnumWidth, '*') : field;
}

std::string AtomRecord(const AtomSite& site, const std::string& serial, char chain) {
  RecordBuilder record;
  record.Left(site.hetatm ? "HETATM" : "ATOM", 6);
  record.Right(serial.empty() ? std::string(kSerialWidth, '*') : serial, kSerialWidth);
  record.Blank(1);
  record.Left(PaddedName(site), kNameWidth);
  record.Field(std::string(1, site.altloc));
  record.Right(site.residue, kResidueWidth);
  record.Blank(1);
  record.Field(std::string(1, chain));
  record.Field(ResidueNumberField(site.resnum));
  record.Field(std::string(1, site.icode));
  record.Blank(3);
  record.Field(Fixed(site.x, kCoordinateWidth, kCoordinateDecimals));
  record.Field(Fixed(site.y, kCoordinateWidth, kCoordinateDecimals));
  record.Field(Fixed(site.z, kCoordinateWidth, kCoordinateDecimals));
  record.Field(Fixed(site.occupancy, kFactorWidth, kFactorDecimals));
  record.Field(Fixed(site.bfactor, kFactorWidth, kFactorDecimals));
  record.Blank(10);
  record.Right(site.element, kElementWidth);
  record.Field(Charge(site.charge));
  return record.Finish();
}

// "TER", its serial, and the residue it closes, as wwPDB writes it.
std::string TerRecord(const AtomSite& last, const std::string& serial, char chain) {
  RecordBuilder record;
  record.Left("TER", 6);
  record.Right(serial.empty() ? std::string(kSerialWidth, '*') : serial, kSerialWidth);
  record.Blank(6);
  record.Right(last.residue, kResidueWidth);
  record.Blank(1);
  record.Field(std::string(1, chain));
  record.Field(ResidueNumberField(last.resnum));
  record.Field(std::string(1, last.icode));
  return record.Finish();
}

// A polymer chain ends where the next site leaves its polymer run (or the model ends).
bool EndsPolymerRun(const std::vector<AtomSite>& sites, size_t i) {
  const AtomSite& site = sites[i];
  if (!site.polymer) return false;
  if (i + 1 == sites.size()) return true;
  const AtomSite& next = sites[i + 1];
  return !next.polymer || next.chain != site.chain || next.subchain != site.subchain;
}

}  // namespace

std::vector<char> AssignTextIds(const std::vector<std::string>& ids, bool& unique) {
  std::string taken;
  for (const std::string& id : ids)
    if (id.size() == 1) taken += id[0];
  std::vector<char> textIds;
  unique = true;
  size_t next = 0;
  for (const std::string& id : ids) {
    if (id.size() <= 1) {
      textIds.push_back(id.empty() ? ' ' : id[0]);
      continue;
    }
    while (next < kTextIdPool.size() && taken.find(kTextIdPool[next]) != std::string::npos)
      ++next;
    if (next == kTextIdPool.size()) {
      unique = false;
      textIds.push_back(kLeftoverTextId);
      continue;
    }
    taken += kTextIdPool[next];
    textIds.push_back(kTextIdPool[next]);
  }
  return textIds;
}

PdbRendering RenderPdbRecords(const MmcifAtoms& atoms, const std::vector<char>& textIds) {
  PdbRendering rendering;
  rendering.atoms.resize(atoms.chains.size());
  rendering.problems.resize(atoms.chains.size());
  long terCount = 0;
  long serial = 0;
  for (size_t i = 0; i < atoms.sites.size(); ++i) {
    const AtomSite& site = atoms.sites[i];
    char chain = textIds[site.chain];
    serial = site.has_serial ? site.serial + terCount : serial + 1;
    std::string serialField = Hybrid36(serial, kSerialWidth, kMinSerial, kMaxSerial);
    std::string record = AtomRecord(site, serialField, chain);
    rendering.records += record;
    if (!site.hetatm) {
      std::string& problem = rendering.problems[site.chain];
      if (problem.empty()) problem = AtomProblem(site, serialField, atoms.chains[site.chain].id);
      rendering.atoms[site.chain] += record;
    }
    if (EndsPolymerRun(atoms.sites, i)) {
      ++serial;
      ++terCount;
      rendering.records +=
          TerRecord(site, Hybrid36(serial, kSerialWidth, kMinSerial, kMaxSerial), chain);
    }
  }
  RecordBuilder end;
  end.Field("END");
  rendering.records += end.Finish();
  return rendering;
}

}  // namespace quarnel
