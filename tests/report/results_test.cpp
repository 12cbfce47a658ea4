// Result formats and picture files of a batch run: choppings in chain order, JSON that parses,
// resuming after a killed run, and pictures the real viewers accept.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "formats/pdb_records.h"
#include "report/pictures.h"
#include "report/results.h"
#include "report/resume.h"

namespace quarnel {
namespace {

namespace fs = std::filesystem;

std::string DataFile(const std::string& name) {
  const char* folder = std::getenv("QUARNEL_DATA");
  return std::string(folder != nullptr ? folder : QUARNEL_TEST_DATA) + "/" + name;
}

std::string Slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

struct Command {
  int status;
  std::string out;
};

Command Shell(const std::string& command) {
  Command result{-1, ""};
  FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) return result;
  char buffer[4096];
  for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) result.out.append(buffer, n);
  result.status = pclose(pipe);
  return result;
}

// The Debian viewers run on the system python; a python earlier on PATH must not shadow it.
bool HaveTool(const std::string& tool) {
  return Shell("PATH=/usr/bin:$PATH command -v " + tool + " >/dev/null").status == 0;
}

class Scratch {
 public:
  Scratch() {
    std::string pattern = (fs::temp_directory_path() / "quarnel-cli-XXXXXX").string();
    if (::mkdtemp(pattern.data()) != nullptr) path_ = pattern;
  }
  ~Scratch() { fs::remove_all(path_); }
  std::string File(const std::string& name) const { return (path_ / name).string(); }
  std::string path() const { return path_.string(); }

 private:
  fs::path path_;
};

// ---- a hand-made chain ----

struct Res {
  int32_t resnum;
  char icode;
  int32_t domain;
  const char* resname;
};

// Residues in chain order and the records RunChain's own record builder makes of them.
ChainOutcome HandMade(const std::vector<Res>& chain, int32_t domains, Verdict verdict,
                      std::vector<float> confidence) {
  ChainOutcome outcome;
  outcome.ok = true;
  outcome.entry = "1abcA";
  outcome.input = "in/1abc.pdb";
  outcome.chainId = "A";
  outcome.mode = "classic";
  outcome.seconds = 1.25;
  ChainResult& result = outcome.result;
  for (size_t i = 0; i < chain.size(); ++i) {
    Residue r{};
    r.index = static_cast<int32_t>(i);
    r.chain = 'A';
    r.resnum = chain[i].resnum;
    r.icode = chain[i].icode;
    r.domain = chain[i].domain;
    std::snprintf(r.resname, sizeof r.resname, "%s", chain[i].resname);
    result.structure.residues.push_back(r);
  }
  result.verdict = verdict;
  result.domains = OutputDomains(result.structure.residues, domains);
  result.found = result.domains;
  for (size_t d = 0; d < confidence.size(); ++d) {
    result.domains[d].confidence = confidence[d];
    result.scores.push_back(confidence[d] / 100.0f);
  }
  return outcome;
}

// Domain 1 opens the chain with negative numbers and returns after an insertion code; domain 0
// sits between its two segments.
const std::vector<Res> kSplitChain = {
    {-3, ' ', 1, "ALA"}, {-2, ' ', 1, "GLY"}, {10, ' ', 1, "MSE"}, {11, ' ', 0, "TRP"},
    {52, ' ', 0, "ALA"}, {52, 'A', 1, "ALA"}, {60, ' ', 1, "ALA"}};

ChainOutcome LeftOutBefore(ChainOutcome outcome, size_t position) {
  outcome.gapBefore.assign(outcome.result.structure.residues.size(), false);
  outcome.gapBefore[position] = true;
  return outcome;
}

TEST(ResultRows, ChoppingConfidenceAndOrder) {
  struct Case {
    const char* name;
    ChainOutcome outcome;
    const char* row;  // the TSV row after the sequence MD5
  };
  const Case cases[] = {
      {"two domains, one discontinuous: the chain as good as its weakest domain",
       HandMade(kSplitChain, 2, Verdict::kAcceptedFirst, {40.f, 94.1f}),
       "7\t2\t-3-10_52A-60,11-52\t0.400\t1.250\taccepted at first\tin/1abc.pdb\tA\t0.941,0.400\tclassic\tNULL\n"},
      {"relaxed, not judged", HandMade(kSplitChain, 2, Verdict::kRelaxed, {}),
       "7\t2\t-3-10_52A-60,11-52\tNULL\t1.250\trelaxed\tin/1abc.pdb\tA\tNULL\tclassic\tNULL\n"},
      {"one domain: the whole chain", HandMade(kSplitChain, 1, Verdict::kRejected, {}),
       "7\t1\t-3-60\tNULL\t1.250\trejected\tin/1abc.pdb\tA\tNULL\tclassic\tNULL\n"},
      {"one domain, residues left out before 11: no range spans them",
       LeftOutBefore(HandMade(kSplitChain, 1, Verdict::kRejected, {}), 3),
       "7\t1\t-3-10_11-60\tNULL\t1.250\trejected\tin/1abc.pdb\tA\tNULL\tclassic\tNULL\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string row = FormatResult(ResultFormat::kTsv, c.outcome);
    const size_t afterMd5 = std::string("1abcA\t").size() + 33;
    ASSERT_GT(row.size(), afterMd5);
    EXPECT_EQ(row.substr(afterMd5), c.row);
  }
  // MD5 of "AGXWAAA" (MSE is not one of the 20), from md5sum.
  EXPECT_EQ(SequenceMd5(cases[0].outcome.result.structure), "c199d41f178a74c2505ab99efd696b44");
  EXPECT_EQ(DomainId("1abcA", 0), "1abcA01");
  EXPECT_EQ(DomainId("1abcA", 11), "1abcA12");
}

TEST(ResultRows, FailedChainsWriteNothing) {
  ChainOutcome failed;
  failed.entry = "bad";
  for (ResultFormat format : {ResultFormat::kClassic, ResultFormat::kTsv, ResultFormat::kJson, ResultFormat::kResidues})
    EXPECT_EQ(FormatResult(format, failed), "");
}

// ---- residue rows ----

ResidueMark Mark(int32_t resnum, const char* resname) {
  ResidueMark mark{resnum, ' ', false, {}};
  std::snprintf(mark.resname, sizeof mark.resname, "%s", resname);
  return mark;
}

// Labels count domains in chain order, not by the partition's numbers: kSplitChain's domain 1
// comes first and is labelled 1.
TEST(ResidueRows, LabelsInChainOrder) {
  ChainOutcome leftOut = HandMade(kSplitChain, 2, Verdict::kAcceptedFirst, {40.f, 94.1f});
  leftOut.leftOutResidues = {{0, Mark(-5, "GLY")}, {3, Mark(10, " DA")}, {7, Mark(61, "LYS")}};
  struct Case {
    const char* name;
    ChainOutcome outcome;
    const char* labels;  // residue:resname:domain, row after row
  };
  const Case cases[] = {
      {"two domains, one discontinuous", HandMade(kSplitChain, 2, Verdict::kAcceptedFirst, {40.f, 94.1f}),
       "-3:ALA:1 -2:GLY:1 10:MSE:1 11:TRP:2 52:ALA:2 52A:ALA:1 60:ALA:1"},
      {"one domain: every residue in it", HandMade(kSplitChain, 1, Verdict::kRejected, {}),
       "-3:ALA:1 -2:GLY:1 10:MSE:1 11:TRP:1 52:ALA:1 52A:ALA:1 60:ALA:1"},
      {"residues left out, at both ends and within: in file order, in no domain", leftOut,
       "-5:GLY:0 -3:ALA:1 -2:GLY:1 10:MSE:1 10:DA:0 11:TRP:2 52:ALA:2 52A:ALA:1 60:ALA:1 61:LYS:0"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::istringstream rows(FormatResult(ResultFormat::kResidues, c.outcome));
    std::string line, labels;
    std::getline(rows, line);
    const size_t count = std::count(c.labels, c.labels + std::strlen(c.labels), ' ') + 1;
    EXPECT_EQ(line, "# chain_id 1abcA\tinput in/1abc.pdb\tchain A\tresidues " + std::to_string(count));
    while (std::getline(rows, line)) {
      std::regex row("1abcA\tA\t([^\t]+)\t([^\t]+)\t([0-9]+)");
      std::smatch match;
      ASSERT_TRUE(std::regex_match(line, match, row)) << line;
      labels += (labels.empty() ? "" : " ") + match.str(1) + ":" + match.str(2) + ":" + match.str(3);
    }
    EXPECT_EQ(labels, c.labels);
  }
}

// ---- JSON ----

TEST(JsonRows, ParseBackWithPython) {
  if (!HaveTool("python3")) GTEST_SKIP() << "python3 not found";
  ChainOutcome outcome = HandMade(kSplitChain, 2, Verdict::kAcceptedAfterMerging, {40.f, 94.1f});
  outcome.entry = "q\"\\\t\xC3\xA9\xFF";  // quote, backslash, tab, e-acute, a byte that is not UTF-8
  Scratch scratch;
  std::ofstream(scratch.File("rows.jsonl")) << FormatResult(ResultFormat::kJson, outcome);
  const Command parsed = Shell(
      "python3 -c 'import json,sys\n"
      "r = json.loads(open(sys.argv[1], encoding=\"utf-8\").read())\n"
      "print(ascii(r[\"chain_id\"]), r[\"verdict\"], r[\"chopping\"], r[\"chain\"], r[\"confidence\"], r[\"mode\"])\n"
      "for d in r[\"domains\"]: print(ascii(d[\"id\"]), d[\"nres\"], d[\"confidence\"], "
      "[(s[\"start\"], s[\"start_resnum\"], s[\"start_icode\"]) for s in d[\"segments\"]])' " +
      scratch.File("rows.jsonl"));
  EXPECT_EQ(parsed.out,
            "'q\"\\\\\\t\\xe9\\ufffd' accepted after merging -3-10_52A-60,11-52 A 0.4 classic\n"
            "'q\"\\\\\\t\\xe9\\ufffd01' 5 0.941 [('-3', -3, ''), ('52A', 52, 'A')]\n"
            "'q\"\\\\\\t\\xe9\\ufffd02' 2 0.4 [('11', 11, '')]\n");
}

// ---- resume ----

TEST(Resume, CompleteLinesOnly) {
  const std::string tsv = ResultHeader(ResultFormat::kTsv, "-noss");
  const std::string json = ResultHeader(ResultFormat::kJson, "");
  const std::string residues = ResultHeader(ResultFormat::kResidues, "-noss");
  const std::string tsvRow = "1abcA\tmd5\t7\t1\t1-7\tNULL\t0.1\tno cut\ta/1abc.pdb\tA\tNULL\tclassic\n";
  const std::string jsonRow = "{\"input\":\"x\\\"y\\u00e9\",\"chain\":null,\"chain_id\":\"x\"}\n";
  const std::string block = "# chain_id 1abcA\tinput a/1abc.pdb\tchain A\tresidues 2\n1abcA\tA\t1\tALA\t1\n"
                            "1abcA\tA\t2\tGLY\t0\n";
  const std::string blockB = "# chain_id 1abcB\tinput a/1abc.pdb\tchain B\tresidues 2\n1abcB\tA\t1\tALA\t1\n";
  using Keys = std::set<ResumeKey>;
  struct Case {
    const char* name;
    ResultFormat format;
    std::string text;
    Keys done;
    bool recorded, partial;
    std::string dropped;  // what the resumed run cuts off the end of the file
  };
  const Case cases[] = {
      {"tsv killed mid-row", ResultFormat::kTsv, tsv + tsvRow + "2xyzB\tmd5\t9", {{"a/1abc.pdb", "A"}}, true, true,
       "2xyzB\tmd5\t9"},
      {"tsv complete", ResultFormat::kTsv, tsv + tsvRow, {{"a/1abc.pdb", "A"}}, true, false, ""},
      {"json lines, escapes, no chain", ResultFormat::kJson, json + jsonRow + "{\"input\":\"cut",
       {{"x\"y\xC3\xA9", ""}}, true, true, "{\"input\":\"cut"},
      {"tsv of an earlier quarnel: not resumed", ResultFormat::kTsv, std::string(kTsvColumns) + tsvRow, {}, false,
       false, ""},
      {"json read as tsv", ResultFormat::kTsv, json + jsonRow, {}, false, false, ""},
      {"opening lines cut short: started afresh", ResultFormat::kTsv, tsv.substr(0, tsv.size() - 3), {}, false, false,
       tsv.substr(0, tsv.size() - 3)},
      {"empty", ResultFormat::kJson, "", {}, false, false, ""},
      {"residue rows complete", ResultFormat::kResidues, residues + block, {{"a/1abc.pdb", "A"}}, true, false, ""},
      {"residue rows killed after a complete row: the chain's rows all go", ResultFormat::kResidues,
       residues + block + blockB, {{"a/1abc.pdb", "A"}}, true, true, blockB},
      {"residue rows killed mid-row", ResultFormat::kResidues, residues + block + blockB + "1abcB\tA\t2\tG",
       {{"a/1abc.pdb", "A"}}, true, true, blockB + "1abcB\tA\t2\tG"},
      {"tsv read as residue rows", ResultFormat::kResidues, tsv + tsvRow, {}, false, false, ""},
      {"residue rows read as tsv", ResultFormat::kTsv, residues + block, {}, false, false, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const ResumeState state = ReadResume(c.text, c.format);
    EXPECT_EQ(state.done, c.done);
    EXPECT_EQ(state.recorded, c.recorded);
    EXPECT_EQ(state.partialTail, c.partial);
    EXPECT_EQ(c.text.substr(state.completeBytes), c.dropped);
  }
}

TEST(Resume, ReadsBackWhatWasWritten) {
  ChainOutcome outcome = HandMade(kSplitChain, 2, Verdict::kAcceptedFirst, {40.f, 94.1f});
  outcome.input = "odd\tname \xFF.pdb";  // a tab and a byte that is not UTF-8: kept as each format keeps them
  for (ResultFormat format : {ResultFormat::kTsv, ResultFormat::kJson, ResultFormat::kResidues}) {
    const ResumeState state = ReadResume(ResultHeader(format, "-md 2") + FormatResult(format, outcome), format);
    EXPECT_EQ(state.options, "-md 2");
    EXPECT_EQ(state.done, std::set<ResumeKey>{KeyOf(format, outcome.input, "A")});
  }
}

// ---- a real chain ----

ChainOutcome Run2yex() {
  ChainOutcome outcome;
  outcome.file = DataFile("2yex.pdb");
  outcome.input = outcome.file;
  outcome.chainId = "A";
  outcome.entry = "2yexA";
  outcome.records = ReadPdbRecords(std::make_shared<const std::string>(Slurp(outcome.file)));
  const HeldRecords records(outcome.file, outcome.records);
  Params params;
  params.FlagSS = 0;
  RunContext context;
  outcome.result = RunChain(ChainInput{&records, outcome.entry, 'A', outcome.file}, params, nullptr, context);
  outcome.ok = true;
  return outcome;
}

int AtomLinesIn(const std::string& text) {
  int n = 0;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) n += line.rfind("ATOM  ", 0) == 0;
  return n;
}

TEST(RealChain, DomainFilesHoldEveryAtomOnce) {
  const ChainOutcome outcome = Run2yex();
  ASSERT_EQ(ChainDomains(outcome.result).size(), 2u);
  EXPECT_EQ(Chopping(ChainDomains(outcome.result)), "2-86,87-270");
  Scratch scratch;
  const WrittenFiles written = WriteDomainFiles(outcome, scratch.path(), nullptr);
  EXPECT_TRUE(written.errors.empty());
  ASSERT_EQ(written.paths.size(), 2u);
  EXPECT_EQ(written.paths[0], scratch.File("2yexA01.pdb"));
  const std::string first = Slurp(written.paths[0]);
  EXPECT_EQ(AtomLinesIn(first) + AtomLinesIn(Slurp(written.paths[1])), AtomLinesIn(Slurp(outcome.file)));
  EXPECT_EQ(first.find('\r'), std::string::npos);  // 2yex has DOS line ends
  EXPECT_EQ(first.substr(first.size() - 8), "TER\nEND\n");
}

TEST(RealChain, OverwriteOnlyOurOwnFiles) {
  ChainOutcome outcome = Run2yex();
  const std::string file = outcome.file;
  outcome.file = "/elsewhere/2yex.pdb";
  const std::string otherInput = ContactSvg(outcome);
  outcome.file = file;
  struct Case {
    const char* name;
    std::string existing;  // empty: no file there
    size_t errors;
  };
  const Case cases[] = {
      {"no file yet", "", 0},
      {"our file of this chain", ContactSvg(outcome), 0},
      {"our file of another input", otherInput, 1},
      {"someone else's file", "<svg/>\n", 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Scratch scratch;
    if (!c.existing.empty()) std::ofstream(scratch.File("2yexA.svg")) << c.existing;
    const WrittenFiles written = WriteContactSvg(outcome, scratch.path(), nullptr);
    EXPECT_EQ(written.errors.size(), c.errors);
    EXPECT_EQ(Slurp(scratch.File("2yexA.svg")), c.errors ? c.existing : ContactSvg(outcome));
    EXPECT_EQ(std::distance(fs::directory_iterator(scratch.path()), fs::directory_iterator()), 1);
  }
}

TEST(RealChain, PymolRunsHeadless) {
  if (!HaveTool("pymol")) GTEST_SKIP() << "pymol not found";
  Scratch scratch;
  const WrittenFiles written = WritePymol(Run2yex(), scratch.File("with space"), nullptr);
  ASSERT_TRUE(written.errors.empty()) << written.errors.front();
  // The folder moved, the script run from elsewhere: it loads its copy from beside it.
  fs::rename(scratch.File("with space"), scratch.File("moved here"));
  std::ofstream(scratch.File("check.pml"))
      << "@" << scratch.File("moved here/2yexA.pml") << "\n"
      << "print('counts', cmd.count_atoms('color quarnel_1') > 500, cmd.count_atoms('color quarnel_2') > 500,"
         " cmd.count_atoms('color quarnel_0 and name CA'))\n";
  const Command run = Shell("cd " + scratch.path() + " && PATH=/usr/bin:$PATH pymol -cq check.pml");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out.find("Error"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("counts True True 0"), std::string::npos) << run.out;
}

// Text of the SVG that would run past its right edge, at the widths DejaVu Sans takes (about 7.5
// pixels a character at 12 pixels, 10.5 at 16 bold); empty when all fits.
std::string TextPastTheEdge(const std::string& svg) {
  const std::regex text("<text x=\"([0-9.]+)\"[^>]*>([^<]*)</text>");
  const std::regex width("width=\"([0-9]+)\"");
  std::smatch match;
  std::regex_search(svg, match, width);
  const double edge = std::stod(match[1]);
  for (auto it = std::sregex_iterator(svg.begin(), svg.end(), text); it != std::sregex_iterator(); ++it) {
    const std::string content = (*it)[2];
    size_t characters = 0;
    for (unsigned char c : content) characters += (c & 0xC0) != 0x80;
    const double perCharacter = std::stod((*it)[1]) < 100 ? 10.5 : 7.5;  // the title starts at the left
    if (std::stod((*it)[1]) + perCharacter * characters > edge) return content;
  }
  return "";
}

TEST(RealChain, SvgTextFitsAndBreaksAreMarked) {
  ChainOutcome outcome = Run2yex();
  EXPECT_EQ(ContactSvg(outcome).find("chain break"), std::string::npos);  // 2yex A has none
  outcome.entry = "AF-P12345-F1-model_v4_with_a_long_name_that_a_pipeline_gave_it_\xC3\xA9_to_tell_runs_apartA";
  outcome.gapBefore.assign(outcome.result.structure.residues.size(), false);
  outcome.gapBefore[100] = true;  // residues left out between the 100th and the 101st
  const std::string svg = ContactSvg(outcome);
  EXPECT_EQ(TextPastTheEdge(svg), "");
  EXPECT_NE(svg.find("chain break: residues missing"), std::string::npos);
  EXPECT_NE(svg.find("\xE2\x80\xA6"), std::string::npos);  // the name cut in its middle
}

TEST(RealChain, SvgRenders) {
  if (!HaveTool("rsvg-convert")) GTEST_SKIP() << "rsvg-convert not found";
  Scratch scratch;
  const WrittenFiles written = WriteContactSvg(Run2yex(), scratch.path(), nullptr);
  ASSERT_EQ(written.paths.size(), 1u);
  const Command run = Shell("rsvg-convert -o " + scratch.File("map.png") + " " + written.paths[0]);
  EXPECT_EQ(run.status, 0) << run.out;
  EXPECT_GT(fs::file_size(scratch.File("map.png")), 10000u);
}

}  // namespace
}  // namespace quarnel
