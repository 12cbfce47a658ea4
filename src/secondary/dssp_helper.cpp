// The helper's text protocol, and running it: atoms on its standard input, rows on its standard
// output, read whole (it reads all its input before it writes).
#include "secondary/dssp_helper.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <stdexcept>

#include "base/text.h"
#include "secondary/dssp_source.h"

extern char** environ;

namespace quarnel {

namespace {

constexpr char kTab = '\t';

std::vector<std::string> Fields(const std::string& line) {
  std::vector<std::string> fields;
  size_t start = 0;
  for (;;) {
    const size_t tab = line.find(kTab, start);
    fields.push_back(line.substr(start, tab == std::string::npos ? std::string::npos : tab - start));
    if (tab == std::string::npos) return fields;
    start = tab + 1;
  }
}

template <size_t N>
void CopyField(char (&to)[N], const std::string& from) {
  std::memset(to, 0, N);
  std::strncpy(to, from.c_str(), N - 1);
}

char CharField(const std::string& field) { return field.empty() ? ' ' : field[0]; }

double Real(const std::string& field) {
  char* end = nullptr;
  const double value = std::strtod(field.c_str(), &end);
  if (field.empty() || *end != '\0') throw std::runtime_error("DSSP helper: not a number: " + field);
  return value;
}

int Whole(const std::string& field) {
  char* end = nullptr;
  const long value = std::strtol(field.c_str(), &end, 10);
  if (field.empty() || *end != '\0') throw std::runtime_error("DSSP helper: not a whole number: " + field);
  return static_cast<int>(value);
}

// Writes all of `text` to fd, then closes it.
bool WriteAll(int fd, const std::string& text) {
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t wrote = ::write(fd, text.data() + done, text.size() - done);
    if (wrote < 0 && errno == EINTR) continue;
    if (wrote <= 0) break;
    done += static_cast<size_t>(wrote);
  }
  ::close(fd);
  return done == text.size();
}

std::string ReadAll(int fd) {
  std::string text;
  char chunk[1 << 16];
  for (;;) {
    const ssize_t got = ::read(fd, chunk, sizeof chunk);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    text.append(chunk, static_cast<size_t>(got));
  }
  ::close(fd);
  return text;
}

// Runs the program with `input` on its standard input; its standard output, whole.
std::string RunHelper(const std::string& program, const std::string& input) {
  int in[2], out[2];
  if (::pipe2(in, O_CLOEXEC) != 0) throw std::runtime_error(std::string("DSSP helper: ") + std::strerror(errno));
  if (::pipe2(out, O_CLOEXEC) != 0) {
    const int error = errno;
    ::close(in[0]);
    ::close(in[1]);
    throw std::runtime_error(std::string("DSSP helper: ") + std::strerror(error));
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
  char* argv[] = {const_cast<char*>(program.c_str()), nullptr};
  pid_t pid = 0;
  const int spawned = posix_spawn(&pid, program.c_str(), &actions, nullptr, argv, environ);
  posix_spawn_file_actions_destroy(&actions);
  ::close(in[0]);
  ::close(out[1]);
  if (spawned != 0) {
    ::close(in[1]);
    ::close(out[0]);
    throw std::runtime_error(Format("cannot run %s: %s", program.c_str(), std::strerror(spawned)));
  }
  WriteAll(in[1], input);
  const std::string output = ReadAll(out[0]);
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
    throw std::runtime_error(Format("%s ended abnormally (status %d)", program.c_str(), status));
  return output;
}

}  // namespace

std::string WriteHelperAtoms(const std::vector<AtomRecord>& atoms) {
  std::string text;
  for (const AtomRecord& a : atoms) {
    text += Format("%s\t%c\t%s\t%c\t%d\t%c\t%.17g\t%.17g\t%.17g\t%.17g\t%s\n", a.name, a.altloc, a.resname,
                   a.chain, a.resnum, a.icode, a.x, a.y, a.z, a.bfactor, a.element);
  }
  return text;
}

std::vector<AtomRecord> ReadHelperAtoms(const std::string& text) {
  std::vector<AtomRecord> atoms;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    const std::vector<std::string> f = Fields(line);
    if (f.size() != 11) throw std::runtime_error("DSSP helper: not an atom line: " + line);
    AtomRecord atom;
    CopyField(atom.name, f[0]);
    atom.altloc = CharField(f[1]);
    CopyField(atom.resname, f[2]);
    atom.chain = CharField(f[3]);
    atom.resnum = Whole(f[4]);
    atom.icode = CharField(f[5]);
    atom.x = Real(f[6]);
    atom.y = Real(f[7]);
    atom.z = Real(f[8]);
    atom.bfactor = Real(f[9]);
    CopyField(atom.element, f[10]);
    atoms.push_back(atom);
  }
  return atoms;
}

std::string WriteHelperRows(const std::vector<DsspRow>& rows) {
  std::string text = std::string(kDsspHelperRows) + "\n";
  for (const DsspRow& r : rows)
    text += Format("%d\t%d\t%c\t%c\t%c\t%d\t%d\t%d\n", r.number, r.resnum, r.icode, r.aa, r.ss, r.partner1,
                   r.partner2, r.chainBreak ? 1 : 0);
  return text;
}

std::string WriteHelperFailure(const std::string& reason) {
  std::string line = reason;
  for (char& c : line)
    if (c == '\n') c = ' ';
  return std::string(kDsspHelperFailed) + "\t" + line + "\n";
}

std::vector<DsspRow> ReadHelperRows(const std::string& text) {
  std::istringstream in(text);
  std::string line;
  if (!std::getline(in, line)) throw std::runtime_error("DSSP helper gave no output");
  if (line.rfind(std::string(kDsspHelperFailed) + "\t", 0) == 0)
    throw std::runtime_error(line.substr(std::strlen(kDsspHelperFailed) + 1));
  if (line != kDsspHelperRows) throw std::runtime_error("DSSP helper gave output of another kind");
  std::vector<DsspRow> rows;
  while (std::getline(in, line)) {
    const std::vector<std::string> f = Fields(line);
    if (f.size() != 8) throw std::runtime_error("DSSP helper: not a row: " + line);
    DsspRow row;
    row.number = Whole(f[0]);
    row.resnum = Whole(f[1]);
    row.icode = CharField(f[2]);
    row.aa = CharField(f[3]);
    row.ss = CharField(f[4]);
    row.partner1 = Whole(f[5]);
    row.partner2 = Whole(f[6]);
    row.chainBreak = f[7] == "1";
    rows.push_back(row);
  }
  return rows;
}

SecondaryStructure HelperDssp::Read(const Structure& structure, std::vector<Message>& messages) {
  std::vector<DsspRow> rows;
  try {
    rows = ReadHelperRows(RunHelper(program_, WriteHelperAtoms(DsspAtoms(structure))));
  } catch (const std::runtime_error& failure) {
    messages.push_back(Message{Stream::kStderr,
                               Format("quarnel: %s: %s; going on without secondary structure\n",
                                      name_.c_str(), failure.what())});
  }
  return MatchDsspRows(rows, structure.residues);
}

}  // namespace quarnel
