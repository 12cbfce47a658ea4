// Leaving out low-confidence residues of predicted models, record by record.
#include "cli/low_confidence.h"

#include <vector>

#include "base/text.h"

namespace quarnel {

namespace {

struct ResidueLines {
  std::vector<std::string> lines;
  double confidence = 0.0;
  bool hasCa = false;
};

}  // namespace

ConfidentText LeaveOutLowConfidence(const std::string& text, double threshold) {
  ConfidentText kept;
  ResidueLines open;
  bool isOpen = false;
  int32_t openResnum = 0;
  char openIcode = ' ';
  auto close = [&] {
    if (!isOpen) return;
    if (open.confidence >= threshold) {
      for (const std::string& line : open.lines) kept.text += line;
    } else {
      ++kept.leftOut;
    }
    open = ResidueLines();
    isOpen = false;
  };

  const TextSource source("structure", text);
  std::unique_ptr<LineReader> reader = source.Open();
  std::string line;
  while (reader->Next(line)) {
    if (!StartsWith(line, "ATOM  ")) {
      close();
      kept.text += line;
      continue;
    }
    const int32_t resnum = AtoiField(Columns(line, 23, 26));  // resSeq
    const char icode = Column(line, 27);                       // iCode
    if (!isOpen || resnum != openResnum || icode != openIcode) {
      close();
      isOpen = true;
      openResnum = resnum;
      openIcode = icode;
      open.confidence = AtofField(Columns(line, 61, 66));       // tempFactor
    }
    if (!open.hasCa && Columns(line, 13, 16) == " CA ") {
      open.hasCa = true;
      open.confidence = AtofField(Columns(line, 61, 66));
    }
    open.lines.push_back(line);
  }
  close();
  return kept;
}

}  // namespace quarnel
