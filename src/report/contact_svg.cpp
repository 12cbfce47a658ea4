// The SVG picture of a chain: its contact map with the domains drawn as blocks, above it the
// secondary structure and the domains along the sequence, beside it a legend.
#include <algorithm>
#include <cmath>
#include <set>

#include "report/palette.h"
#include "report/pictures.h"
#include "run/chain_domains.h"

namespace quarnel {

namespace {

// Layout, in pixels.
constexpr double kMapSize = 560.0;
constexpr double kLeft = 64.0;
constexpr double kTitleBaseline = 26.0;
constexpr double kSsTop = 44.0;
constexpr double kTrackHeight = 12.0;
constexpr double kBarTop = 62.0;
constexpr double kMapTop = 84.0;
constexpr double kTickLength = 5.0;
constexpr double kMinTickGap = 40.0;
constexpr double kLegendLeft = kLeft + kMapSize + 24.0;
constexpr double kLegendWidth = 320.0;
constexpr double kLegendLine = 18.0;
constexpr double kBottomMargin = 48.0;
constexpr double kWidth = kLegendLeft + kLegendWidth;
constexpr double kHeight = kMapTop + kMapSize + kBottomMargin;
constexpr int kTargetTicks = 6;
constexpr size_t kLegendChars = 38;   // 12-pixel text (about 7.5 pixels a character) across the legend
constexpr size_t kTitleChars = 60;    // the entry in the 16-pixel bold title
constexpr double kLegendBottomRoom = 24.0;
// Consecutive CA atoms of a chain lie 3.8 Å apart (2.9 Å across a cis peptide); farther than
// this, residues are missing between them.
constexpr double kMaxBondedCaDistance = 4.2;
constexpr char kBreakColour[] = "#D55E00";
constexpr double kBlockOpacity = 0.18;

// Contacts shaded by weight in four steps, each four times the last: the weights of a residue
// pair run from a single atom contact to the strand weight, so a linear scale would leave
// nearly every cell pale.
constexpr int32_t kShadeFloors[] = {0, 4, 16, 64};
constexpr char kShades[][8] = {"#BDBDBD", "#8A8A8A", "#515151", "#1A1A1A"};
constexpr int kShadeCount = sizeof kShadeFloors / sizeof kShadeFloors[0];

constexpr char kHelixColour[] = "#3A3A3A";
constexpr char kStrandColour[] = "#8C8C8C";
constexpr char kCoilColour[] = "#8C8C8C";

enum class Fold { kCoil, kHelix, kStrand };

// DSSP's letters: three helix kinds, and the strand and the isolated bridge.
Fold FoldOf(char ss) {
  if (ss == 'H' || ss == 'G' || ss == 'I') return Fold::kHelix;
  if (ss == 'E' || ss == 'B') return Fold::kStrand;
  return Fold::kCoil;
}

std::string Escaped(const std::string& text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      default: out += static_cast<unsigned char>(c) < ' ' ? '?' : c;
    }
  }
  return out;
}

// A comment's text never holds "--" nor ends with '-'.
std::string CommentText(std::string text) {
  for (size_t at = text.find("--"); at != std::string::npos; at = text.find("--", at)) text[at + 1] = '~';
  if (!text.empty() && text.back() == '-') text.back() = '~';
  return Escaped(text);
}

// A name cut in its middle to `room` characters (UTF-8 ellipsis), so that its start and end,
// which tell entries apart, stay readable.
std::string Fitted(const std::string& text, size_t room) {
  if (text.size() <= room) return text;
  auto continuation = [&](size_t at) { return (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80; };
  size_t head = (room - 1) / 2, tailStart = text.size() - (room - 1 - head);
  while (head > 0 && continuation(head)) --head;  // never half a UTF-8 character
  while (tailStart < text.size() && continuation(tailStart)) ++tailStart;
  return text.substr(0, head) + "\u2026" + text.substr(tailStart);
}

struct Run {
  int first, last;  // positions in chain order
  int value;
};

// Maximal runs of equal values along the chain.
template <typename F>
std::vector<Run> RunsOf(int n, F value) {
  std::vector<Run> runs;
  for (int i = 0; i < n; ++i) {
    const int v = value(i);
    if (!runs.empty() && runs.back().value == v) runs.back().last = i;
    else runs.push_back(Run{i, i, v});
  }
  return runs;
}

std::string Rect(double x, double y, double w, double h, const std::string& fill) {
  return Format("<rect x=\"%.1f\" y=\"%.1f\" width=\"%.2f\" height=\"%.1f\" fill=\"%s\"/>\n", x, y, w,
                h, fill.c_str());
}

std::string Text(double x, double y, const char* anchor, const std::string& text) {
  return Format("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"%s\">", x, y, anchor) + Escaped(text) +
         "</text>\n";
}

struct Layout {
  int n;
  double cell;  // pixels per residue
  int bin;      // residues per drawn contact cell
  double X(double position) const { return kLeft + position * cell; }
  double Y(double position) const { return kMapTop + position * cell; }
};

int Shade(int32_t weight) {
  int shade = 0;
  while (shade + 1 < kShadeCount && weight >= kShadeFloors[shade + 1]) ++shade;
  return shade;
}

// The darkest shade of each column bin in one row bin, -1 where no pair has an atom contact.
std::vector<int> BinRow(const ChainResult& result, const Layout& layout, int row) {
  const std::vector<Residue>& residues = result.structure.residues;
  const ContactMap& map = result.contacts;
  std::vector<int> shades(static_cast<size_t>((layout.n + layout.bin - 1) / layout.bin), -1);
  for (int i = row * layout.bin; i < std::min(layout.n, (row + 1) * layout.bin); ++i) {
    const int a = residues[static_cast<size_t>(i)].index;
    for (int j = 0; j < layout.n; ++j) {
      const int b = residues[static_cast<size_t>(j)].index;
      if (i == j || a >= map.size() || b >= map.size()) continue;
      const Contact c = map.at(a, b);
      const Contact d = map.at(b, a);
      if (c.count <= 0 && d.count <= 0) continue;
      int& shade = shades[static_cast<size_t>(j / layout.bin)];
      shade = std::max(shade, Shade(std::max(c.weight, d.weight)));
    }
  }
  return shades;
}

// One path per shade, a cell run per row: "M<x> <y>h<w>v<h>h-<w>z" in residue units, scaled
// once by the group. Only cells with an atom contact are drawn, which keeps a large map small;
// past one residue a pixel, residues are binned so that no contact falls between pixels.
std::string ContactCells(const ChainResult& result, const Layout& layout) {
  std::vector<std::string> paths(kShadeCount);
  const int bins = (layout.n + layout.bin - 1) / layout.bin;
  for (int row = 0; row < bins; ++row) {
    const std::vector<int> shades = BinRow(result, layout, row);
    for (const Run& run : RunsOf(bins, [&](int column) { return shades[static_cast<size_t>(column)]; })) {
      if (run.value < 0) continue;
      const int width = (run.last - run.first + 1) * layout.bin;
      paths[static_cast<size_t>(run.value)] +=
          Format("M%d %dh%dv%dh-%dz", run.first * layout.bin, row * layout.bin, width, layout.bin, width);
    }
  }
  std::string svg = Format("<g transform=\"translate(%.1f %.1f) scale(%.6f)\" shape-rendering=\"crispEdges\">\n",
                           kLeft, kMapTop, layout.cell);
  for (int s = 0; s < kShadeCount; ++s)
    if (!paths[static_cast<size_t>(s)].empty())
      svg += Format("<path fill=\"%s\" d=\"", kShades[s]) + paths[static_cast<size_t>(s)] + "\"/>\n";
  return svg + "</g>\n";
}

// Every pair of a domain's segments is one block: on the diagonal for a segment with itself,
// off it where a discontinuous domain's segments meet. The tint goes under the contacts, the
// outline over them.
std::string DomainBlocks(const std::vector<int>& places, const Layout& layout, bool outline) {
  const std::vector<Run> runs = RunsOf(layout.n, [&](int i) { return places[static_cast<size_t>(i)]; });
  std::string svg;
  for (const Run& a : runs) {
    if (a.value < 0) continue;
    const std::string colour = HexColour(DomainColour(a.value));
    for (const Run& b : runs) {
      if (b.value != a.value) continue;
      const std::string paint =
          outline ? "fill=\"none\" stroke=\"" + colour + "\" stroke-width=\"1.5\""
                  : "fill=\"" + colour + "\" fill-opacity=\"" + Format("%.2f", kBlockOpacity) + "\"";
      svg += Format("<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" ", layout.X(a.first),
                    layout.Y(b.first), (a.last - a.first + 1) * layout.cell,
                    (b.last - b.first + 1) * layout.cell) + paint + "/>\n";
    }
  }
  return svg;
}

std::string SequenceTracks(const ChainResult& result, const std::vector<int>& places,
                           const Layout& layout) {
  const std::vector<Residue>& residues = result.structure.residues;
  std::string svg = Rect(kLeft, kSsTop + kTrackHeight / 2 - 1, kMapSize, 2, kCoilColour);
  for (const Run& run : RunsOf(layout.n, [&](int i) { return static_cast<int>(FoldOf(residues[i].ss)); })) {
    const double w = (run.last - run.first + 1) * layout.cell;
    if (run.value == static_cast<int>(Fold::kHelix))
      svg += Rect(layout.X(run.first), kSsTop, w, kTrackHeight, kHelixColour);
    else if (run.value == static_cast<int>(Fold::kStrand))
      svg += Rect(layout.X(run.first), kSsTop + kTrackHeight / 4, w, kTrackHeight / 2, kStrandColour);
  }
  for (const Run& run : RunsOf(layout.n, [&](int i) { return places[static_cast<size_t>(i)]; }))
    svg += Rect(layout.X(run.first), kBarTop, (run.last - run.first + 1) * layout.cell, kTrackHeight,
                HexColour(DomainColour(run.value)));
  svg += "<g text-anchor=\"end\" font-size=\"10\">\n";
  svg += Text(kLeft - 6, kSsTop + kTrackHeight - 2, "end", "SS");
  svg += Text(kLeft - 6, kBarTop + kTrackHeight - 2, "end", "domain");
  return svg + "</g>\n";
}

// ---- chain breaks ----

bool HasCa(const Residue& r) { return r.ca[0] != kNoCoordinate; }

// Positions with residues missing before them: their CA too far from the one before, the
// numbering jumping where a CA is missing, another chain, or residues left out (--min-plddt).
// The map gives every residue read one column, so these would pass unseen.
std::vector<int> ChainBreaks(const ChainOutcome& outcome) {
  const std::vector<Residue>& residues = outcome.result.structure.residues;
  std::vector<int> breaks;
  for (size_t i = 1; i < residues.size(); ++i) {
    const Residue& a = residues[i - 1];
    const Residue& b = residues[i];
    const bool far = HasCa(a) && HasCa(b) &&
                     std::hypot(a.ca[0] - b.ca[0], a.ca[1] - b.ca[1], a.ca[2] - b.ca[2]) > kMaxBondedCaDistance;
    const bool skipped = (!HasCa(a) || !HasCa(b)) && static_cast<int64_t>(b.resnum) - a.resnum > 1;
    const bool leftOut = i < outcome.gapBefore.size() && outcome.gapBefore[i];
    if (far || skipped || a.chain != b.chain || leftOut) breaks.push_back(static_cast<int>(i));
  }
  return breaks;
}

// A dashed line across the map and the tracks at each break.
std::string BreakMarks(const std::vector<int>& breaks, const Layout& layout) {
  if (breaks.empty()) return "";
  std::string path;
  for (int i : breaks) {
    const double at = layout.X(i);
    path += Format("M%.2f %.1fV%.1fM%.1f %.2fH%.1f", at, kSsTop - 2, kMapTop + kMapSize, kLeft,
                   layout.Y(i), kLeft + kMapSize);
  }
  return Format("<path fill=\"none\" stroke=\"%s\" stroke-width=\"0.8\" stroke-dasharray=\"3 2\" d=\"",
                kBreakColour) + path + "\"/>\n";
}

// ---- axes ----

int TickStep(int n) {
  for (int step = 1;; step *= 10)
    for (int factor : {1, 2, 5})
      if (n / (step * factor) <= kTargetTicks) return step * factor;
}

// Positions labelled on the axes: residues whose author number is a multiple of a round step,
// far enough apart to be read; numbering without such residues falls back to even positions.
std::vector<int> TickPositions(const std::vector<Residue>& residues, const Layout& layout) {
  const int step = TickStep(layout.n);
  std::vector<int> ticks;
  for (int i = 0; i < layout.n; ++i) {
    const Residue& r = residues[static_cast<size_t>(i)];
    if (r.icode != ' ' || r.resnum % step != 0) continue;
    if (!ticks.empty() && (i - ticks.back()) * layout.cell < kMinTickGap) continue;
    ticks.push_back(i);
  }
  if (ticks.size() >= 2) return ticks;
  ticks.clear();
  for (int i = 0; i < layout.n; i += std::max(1, layout.n / kTargetTicks)) ticks.push_back(i);
  return ticks;
}

std::string TickLabel(const std::vector<Residue>& residues, int i, bool chains) {
  const Residue& r = residues[static_cast<size_t>(i)];
  const std::string label = ResidueLabel(r.resnum, r.icode);
  return chains && r.chain != ' ' ? std::string(1, r.chain) + ":" + label : label;
}

std::string Axes(const std::vector<Residue>& residues, const Layout& layout) {
  std::set<char> chainIds;
  for (const Residue& r : residues) chainIds.insert(r.chain);
  const bool chains = chainIds.size() > 1;
  const double bottom = kMapTop + kMapSize;
  std::string svg = "<g font-size=\"11\" stroke-width=\"1\">\n";
  for (int i : TickPositions(residues, layout)) {
    const double x = layout.X(i + 0.5);
    const double y = layout.Y(i + 0.5);
    svg += Format("<path stroke=\"#000\" d=\"M%.1f %.1fv%.1fM%.1f %.1fh%.1f\"/>\n", x, bottom,
                  kTickLength, kLeft, y, -kTickLength);
    svg += Text(x, bottom + kTickLength + 12, "middle", TickLabel(residues, i, chains));
    svg += Text(kLeft - kTickLength - 3, y + 4, "end", TickLabel(residues, i, chains));
  }
  svg += Text(kLeft + kMapSize / 2, bottom + 38, "middle", "residue (author numbering)");
  return svg + "</g>\n";
}

// ---- legend ----

// A chopping cut at segment boundaries into lines that fit the legend.
std::vector<std::string> Wrapped(const std::string& chopping) {
  std::vector<std::string> lines(1);
  size_t start = 0;
  while (start <= chopping.size()) {
    size_t end = chopping.find('_', start);
    const std::string piece = chopping.substr(start, end == std::string::npos ? end : end - start + 1);
    if (!lines.back().empty() && lines.back().size() + piece.size() > kLegendChars) lines.emplace_back();
    lines.back() += piece;
    if (end == std::string::npos) break;
    start = end + 1;
  }
  return lines;
}

std::string LegendEntry(double& y, Rgb colour, const std::string& label,
                        const std::vector<std::string>& more) {
  std::string svg = Rect(kLegendLeft, y - 11, 14, 14, HexColour(colour));
  svg += Text(kLegendLeft + 22, y, "start", label);
  for (const std::string& line : more) {
    y += kLegendLine - 4;
    svg += Text(kLegendLeft + 22, y, "start", line);
  }
  y += kLegendLine + 4;
  return svg;
}

// The legend, and in `bottom` where it ends, so that the picture can be made tall enough.
std::string Legend(const ChainOutcome& outcome, const std::vector<int>& places, bool breaks, double& bottom) {
  const std::vector<ChainDomain> domains = ChainDomains(outcome);
  double y = kMapTop + 10;
  std::string svg = "<g font-size=\"12\">\n";
  for (size_t place = 0; place < domains.size(); ++place) {
    const ChainDomain& domain = domains[place];
    const std::string id = DomainId(outcome.entry, static_cast<int>(place));
    std::string facts = Format("%d residues", domain.residues);
    if (domain.judged) facts += Format(", %.1f%% confidence", static_cast<double>(domain.confidence));
    std::vector<std::string> more = Wrapped(Chopping({domain}));
    std::string label = id + ": " + facts;
    if (label.size() > kLegendChars) {  // a long name gets a line of its own
      label = Fitted(id, kLegendChars);
      more.insert(more.begin(), facts);
    }
    svg += LegendEntry(y, DomainColour(static_cast<int>(place)), label, more);
  }
  if (std::count(places.begin(), places.end(), -1) > 0)
    svg += LegendEntry(y, kNoDomainColour, "in no domain", {});
  if (breaks) {
    svg += Format("<path stroke=\"%s\" stroke-width=\"1.5\" stroke-dasharray=\"3 2\" d=\"M%.1f %.1fv14\"/>\n",
                  kBreakColour, kLegendLeft + 7, y - 11);
    svg += Text(kLegendLeft + 22, y, "start", "chain break: residues missing");
    y += kLegendLine + 4;
  }
  y += kLegendLine;
  svg += Text(kLegendLeft, y, "start", std::string("verdict: ") + VerdictName(outcome.result.verdict));
  y += kLegendLine * 1.5;
  svg += Rect(kLegendLeft, y - 11, 24, kTrackHeight, kHelixColour) + Text(kLegendLeft + 32, y, "start", "helix");
  svg += Rect(kLegendLeft + 90, y - 8, 24, kTrackHeight / 2, kStrandColour) + Text(kLegendLeft + 122, y, "start", "strand");
  svg += Rect(kLegendLeft + 180, y - 6, 24, 2, kCoilColour) + Text(kLegendLeft + 212, y, "start", "coil");
  y += kLegendLine * 1.5;
  svg += Text(kLegendLeft, y, "start", "contacts, by weight:");
  for (int s = 0; s < kShadeCount; ++s)
    svg += Rect(kLegendLeft + 130 + 18 * s, y - 11, 14, 14, kShades[s]);
  bottom = y + kLegendBottomRoom;
  return svg + "</g>\n";
}

}  // namespace

std::string ContactSvg(const ChainOutcome& outcome) {
  const ChainResult& result = outcome.result;
  const std::vector<int> places = DomainPlaces(result);
  const int n = result.structure.size();
  const Layout layout{n, kMapSize / std::max(1, n), std::max(1, static_cast<int>(std::ceil(n / kMapSize)))};
  const size_t count = ChainDomains(outcome).size();
  const std::vector<int> breaks = ChainBreaks(outcome);
  double legendBottom = 0.0;
  const std::string legend = Legend(outcome, places, !breaks.empty(), legendBottom);
  const double height = std::max(kHeight, legendBottom);
  std::string svg = "<!-- quarnel contact map of " + CommentText(outcome.file) +
                    (outcome.chainId.empty() ? ", whole file" : ", chain " + CommentText(outcome.chainId)) +
                    " -->\n";
  svg += Format("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%.0f\" height=\"%.0f\" "
                "viewBox=\"0 0 %.0f %.0f\" font-family=\"DejaVu Sans, Arial, sans-serif\">\n",
                kWidth, height, kWidth, height);
  svg += Rect(0, 0, kWidth, height, "#FFFFFF");
  svg += "<g font-size=\"16\" font-weight=\"bold\">\n" +
         Text(kLeft, kTitleBaseline, "start",
              Format("%s: %d residues, %d domain%s", Fitted(outcome.entry, kTitleChars).c_str(), layout.n,
                     static_cast<int>(count), count == 1 ? "" : "s")) +
         "</g>\n";
  if (layout.n > 0) {
    svg += SequenceTracks(result, places, layout);
    svg += DomainBlocks(places, layout, false);
    svg += ContactCells(result, layout);
    svg += DomainBlocks(places, layout, true);
    svg += Format("<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" fill=\"none\" stroke=\"#000\"/>\n",
                  kLeft, kMapTop, kMapSize, kMapSize);
    svg += BreakMarks(breaks, layout);
    svg += Axes(result.structure.residues, layout);
  }
  svg += legend;
  return svg + "</svg>\n";
}

}  // namespace quarnel
