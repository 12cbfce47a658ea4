// Atom sites filled into the fields of the records wwPDB writes for them.
#include "formats/mmcif_records.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string_view>

#include "base/text.h"

namespace quarnel {
namespace {

constexpr std::string_view kTextIdPool =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
constexpr char kLeftoverTextId = 'A';
constexpr size_t kNameWidth = 4;
constexpr size_t kResidueWidth = 3;
constexpr size_t kElementWidth = 2;
constexpr int kMaxChargeDigit = 9;

// A value as its %*.*f column text reads back.
double ReadBack(double value, int width, int decimals) {
  char text[64];
  std::snprintf(text, sizeof(text), "%*.*f", width, decimals, value);
  return AtofField(text);
}

int32_t Clamped(long value) {
  if (value > std::numeric_limits<int32_t>::max()) return std::numeric_limits<int32_t>::max();
  if (value < std::numeric_limits<int32_t>::min()) return std::numeric_limits<int32_t>::min();
  return static_cast<int32_t>(value);
}

template <size_t N>
void Put(char (&field)[N], const std::string& text) {
  std::memset(field, 0, N);
  std::memcpy(field, text.data(), std::min(text.size(), N - 1));
}

std::string LeftIn(const std::string& text, size_t width) {
  std::string field = text.substr(0, width);
  return field + std::string(width - field.size(), ' ');
}

std::string RightIn(const std::string& text, size_t width) {
  return text.size() < width ? std::string(width - text.size(), ' ') + text : text.substr(0, width);
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

// Why the site's atom cannot be a record; empty when it can.
std::string AtomProblem(const AtomSite& site, const std::string& chainId) {
  const std::string where =
      "chain " + chainId + " residue " + std::to_string(site.resnum) + " atom " + site.name;
  if (site.name.size() > kNameWidth) return where + ": atom name longer than 4 characters";
  if (site.residue.size() > kResidueWidth) return where + ": residue name longer than 3 characters";
  return std::string();
}

AtomRecord SiteRecord(const AtomSite& site, long serial, char chain) {
  AtomRecord record;
  record.kind = site.hetatm ? AtomRecord::kHetatm : AtomRecord::kAtom;
  record.serial = Clamped(serial);
  Put(record.name, LeftIn(PaddedName(site), kNameWidth));
  record.altloc = site.altloc;
  Put(record.resname, RightIn(site.residue, kResidueWidth));
  record.chain = chain;
  record.resnum = Clamped(site.resnum);
  record.icode = site.icode;
  record.x = ReadBack(site.x, 8, 3);
  record.y = ReadBack(site.y, 8, 3);
  record.z = ReadBack(site.z, 8, 3);
  record.occupancy = ReadBack(site.occupancy, 6, 2);
  record.bfactor = ReadBack(site.bfactor, 6, 2);
  Put(record.element, RightIn(site.element, kElementWidth));
  Put(record.charge, Charge(site.charge));
  return record;
}

// "TER", its serial, and the residue it closes, as wwPDB writes it.
AtomRecord TerRecord(const AtomSite& last, long serial, char chain) {
  AtomRecord record;
  record.kind = AtomRecord::kTer;
  record.serial = Clamped(serial);
  Put(record.resname, RightIn(last.residue, kResidueWidth));
  record.chain = chain;
  record.resnum = Clamped(last.resnum);
  record.icode = last.icode;
  return record;
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

MmcifRecords RecordsOfSites(const MmcifAtoms& atoms, const std::vector<char>& textIds) {
  MmcifRecords out;
  out.problems.resize(atoms.chains.size());
  out.records.reserve(atoms.sites.size() + atoms.chains.size() + 1);
  out.chainOf.reserve(out.records.capacity());
  long terCount = 0;
  long serial = 0;
  for (size_t i = 0; i < atoms.sites.size(); ++i) {
    const AtomSite& site = atoms.sites[i];
    const char chain = textIds[site.chain];
    serial = site.has_serial ? site.serial + terCount : serial + 1;
    out.records.push_back(SiteRecord(site, serial, chain));
    out.chainOf.push_back(static_cast<uint32_t>(site.chain));
    std::string& problem = out.problems[site.chain];
    if (!site.hetatm && problem.empty()) problem = AtomProblem(site, atoms.chains[site.chain].id);
    if (EndsPolymerRun(atoms.sites, i)) {
      ++serial;
      ++terCount;
      out.records.push_back(TerRecord(site, serial, chain));
      out.chainOf.push_back(static_cast<uint32_t>(site.chain));
    }
  }
  AtomRecord end;
  end.kind = AtomRecord::kEnd;
  out.records.push_back(end);
  out.chainOf.push_back(kNoChain);
  return out;
}

}  // namespace quarnel
