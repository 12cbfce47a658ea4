// Research probe of the accuracy mode: for each "file<TAB>chain" line on standard input, the
// whole candidate tree of the chain (every node searched down to the smallest size) with the
// features of every cut, as one JSON line. Options: -ml n, -ms x, -mg x, -mi x, -mt x, -sp n
// change the candidate criteria; -j n chains at once.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <mutex>
#include <string>
#include <vector>

#include "base/text.h"
#include "base/workers.h"
#include "cath/candidates.h"
#include "cath/cut_features.h"
#include "contacts/contacts.h"
#include "formats/structure_file.h"
#include "secondary/dssp_source.h"
#include "structure/dssp_reader.h"

using namespace quarnel;

namespace {

std::string Escape(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  return out;
}

std::string ResidueName(const Residue& r) {
  std::string name = std::to_string(r.resnum);
  if (r.icode != ' ' && r.icode != '\0') name += r.icode;
  return name;
}

std::string Ranges(const std::vector<int32_t>& members) {
  std::string out = "[";
  size_t k = 0;
  while (k < members.size()) {
    size_t end = k;
    while (end + 1 < members.size() && members[end + 1] == members[end] + 1) ++end;
    if (out.size() > 1) out += ",";
    out += "[" + std::to_string(members[k]) + "," + std::to_string(members[end]) + "]";
    k = end + 1;
  }
  return out + "]";
}

bool gDumpContacts = false;

std::string ProbeChain(const DsspLibrary& library, const Params& params, const Params& loose,
                       const std::string& path, const std::string& wanted) {
  const auto started = std::chrono::steady_clock::now();
  const StructureFile file(path);
  std::string id;
  for (const ChainInfo& chain : file.chains())
    if (chain.id == wanted) id = chain.id;
  if (id.empty())
    for (const ChainInfo& chain : file.chains())
      if (chain.id.size() == wanted.size() &&
          std::equal(chain.id.begin(), chain.id.end(), wanted.begin(),
                     [](char a, char b) { return std::toupper(a) == std::toupper(b); }))
        id = chain.id;
  if (id.empty()) throw std::runtime_error("no chain " + wanted);
  const std::string text = file.ChainText(id);
  const TextSource lines(path, text);
  Structure structure = ReadStructure(lines);
  ContactMap contacts = CalcContacts(structure, params);
  SetSecondaryStructureDefaults(structure.residues);
  std::vector<Message> messages;
  if (params.FlagSS == 1) {
    BuiltinDssp dssp(library, path);
    std::unique_ptr<LineSource> output = dssp.DsspOutput(structure, messages);
    const SecondaryStructure table = ReadDsspTable(*output, structure.residues);
    ApplySecondaryStructure(table, structure.residues, contacts);
  }
  RunContext context;
  const std::vector<CandidateNode> nodes = SearchCandidates(structure, contacts, loose, context);
  const ChainView view(structure, contacts, params);
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();

  std::string out = "{\"file\":\"" + Escape(path) + "\",\"chain\":\"" + Escape(wanted) +
                    "\",\"seconds\":" + Format("%.4f", seconds) + ",\"residues\":[";
  for (int32_t i = 0; i < structure.size(); ++i) {
    if (i > 0) out += ",";
    out += "\"" + ResidueName(structure.residues[static_cast<size_t>(i)]) + "\"";
  }
  out += "],\"ss\":\"";
  for (const Residue& r : structure.residues) out += r.ss;
  out += "\"";
  if (gDumpContacts) {
    out += ",\"ca\":[";
    for (int32_t i = 0; i < structure.size(); ++i) {
      const Residue& r = structure.residues[static_cast<size_t>(i)];
      out += Format("%s[%.2f,%.2f,%.2f,%d,%.2f]", i > 0 ? "," : "", r.ca[0], r.ca[1], r.ca[2], r.natoms,
                    view.bScore[static_cast<size_t>(i)]);
    }
    out += "],\"contacts\":[";
    bool first = true;
    for (int32_t i = 0; i < structure.size(); ++i) {
      for (const ContactEntry* e = contacts.begin(i); e != contacts.end(i); ++e) {
        if (e->partner <= i || e->partner - i <= params.ResSep) continue;
        if (e->count == 0 && e->weight == 0) continue;
        out += Format("%s[%d,%d,%d,%d]", first ? "" : ",", i, e->partner, e->count, e->weight);
        first = false;
      }
    }
    out += "]";
  }
  out += ",\"feature_names\":[";
  for (size_t j = 0; j < kCutFeatureCount; ++j) out += Format("%s\"%s\"", j > 0 ? "," : "", kCutFeatureNames[j]);
  out += "],\"nodes\":[";
  for (size_t k = 0; k < nodes.size(); ++k) {
    const CandidateNode& node = nodes[k];
    if (k > 0) out += ",";
    out += Format("{\"parent\":%d,\"depth\":%d,\"cut\":%s,\"children\":[%d,%d],\"residues\":",
                  node.parent, node.depth, node.hasCut() ? "true" : "false", node.children[0],
                  node.children[1]);
    out += Ranges(node.residues);
    if (node.hasCut()) {
      const CutFeatures f = FeaturesOfCut(view, node, node.cuts[0]);
      out += ",\"features\":[";
      for (size_t j = 0; j < f.size(); ++j) out += (j > 0 ? "," : "") + Format("%.9g", f[j]);
      out += "],\"alternatives\":[";
      for (size_t c = 0; c < node.cuts.size(); ++c) {
        const CutFeatures g = FeaturesOfCut(view, node, node.cuts[c]);
        out += std::string(c > 0 ? "," : "") + "{\"side\":" + Ranges(node.cuts[c].sides[0]) + ",\"features\":[";
        for (size_t j = 0; j < g.size(); ++j) out += (j > 0 ? "," : "") + Format("%.9g", g[j]);
        out += "]}";
      }
      out += "]";
    }
    out += "}";
  }
  out += "]}\n";
  return out;
}

}  // namespace

int main(int argc, char** argv) {
  Params params;
  Params loose = CandidateParams(params);
  int jobs = 1;
  for (int i = 1; i < argc; i += 2) {
    const std::string option = argv[i];
    const char* value = i + 1 < argc ? argv[i + 1] : "0";
    if (option == "-ml") loose.MinDomainSize = std::atoi(value);
    else if (option == "-ms") loose.MinSegRes = static_cast<float>(std::atof(value));
    else if (option == "-mg") loose.MinGlobularity = static_cast<float>(std::atof(value));
    else if (option == "-mi") loose.MaxInteraction = static_cast<float>(std::atof(value));
    else if (option == "-mt") loose.MaxTime = static_cast<float>(std::atof(value));
    else if (option == "-sp") loose.NumSamplePoints = std::atoi(value);
    else if (option == "-j") jobs = std::atoi(value);
    else if (option == "-noss") { params.FlagSS = 0; loose.FlagSS = 0; --i; }
    else if (option == "-contacts") { gDumpContacts = true; --i; }
  }
  std::vector<std::pair<std::string, std::string>> work;
  std::string line;
  while (std::getline(std::cin, line)) {
    const size_t tab = line.find('\t');
    if (tab == std::string::npos) continue;
    work.emplace_back(line.substr(0, tab), line.substr(tab + 1));
  }
  const DsspLibrary library;
  std::vector<std::string> results(work.size());
  WorkerPool pool(jobs);
  pool.ParallelFor(static_cast<int>(work.size()), [&](int k, int) {
    try {
      results[static_cast<size_t>(k)] = ProbeChain(library, params, loose, work[k].first, work[k].second);
    } catch (const std::exception& error) {
      results[static_cast<size_t>(k)] = "{\"file\":\"" + Escape(work[k].first) + "\",\"chain\":\"" +
                                         Escape(work[k].second) + "\",\"error\":\"" +
                                         Escape(error.what()) + "\"}\n";
    }
  });
  for (const std::string& result : results) std::fputs(result.c_str(), stdout);
  return 0;
}
