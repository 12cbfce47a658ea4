// The helper's text protocol, and running it: atoms on its standard input, rows on its standard
// output, read whole (it reads all its input before it writes).
#include "secondary/dssp_helper.h"

#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "base/text.h"
#include "secondary/dssp_source.h"

extern char** environ;

namespace quarnel {

namespace {

// An atom as the helper gets it: every field DSSP reads, fixed-size.
struct PackedAtom {
  char name[5];
  char altloc;
  char resname[4];
  char chain;
  char icode;
  char element[3];
  int32_t resnum;
  double x, y, z, bfactor;
};

constexpr char kRows = 'R', kFailed = 'F';

bool WriteAll(int fd, const char* data, size_t size) {
  size_t done = 0;
  while (done < size) {
    // A helper that died must not end the caller with SIGPIPE: sockets take MSG_NOSIGNAL.
    const ssize_t wrote = ::send(fd, data + done, size - done, MSG_NOSIGNAL);
    if (wrote < 0 && errno == EINTR) continue;
    if (wrote <= 0) return false;
    done += static_cast<size_t>(wrote);
  }
  return true;
}

bool ReadExactly(int fd, char* data, size_t size) {
  size_t done = 0;
  while (done < size) {
    const ssize_t got = ::read(fd, data + done, size - done);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    done += static_cast<size_t>(got);
  }
  return true;
}

constexpr size_t kMaxMessage = size_t{1} << 32;  // far above the atoms of any chain

}  // namespace

std::string WriteHelperAtoms(const std::vector<AtomRecord>& atoms) {
  std::string text(atoms.size() * sizeof(PackedAtom), '\0');
  for (size_t k = 0; k < atoms.size(); ++k) {
    const AtomRecord& a = atoms[k];
    PackedAtom packed{};
    std::memcpy(packed.name, a.name, sizeof packed.name);
    packed.altloc = a.altloc;
    std::memcpy(packed.resname, a.resname, sizeof packed.resname);
    packed.chain = a.chain;
    packed.icode = a.icode;
    std::memcpy(packed.element, a.element, sizeof packed.element);
    packed.resnum = a.resnum;
    packed.x = a.x;
    packed.y = a.y;
    packed.z = a.z;
    packed.bfactor = a.bfactor;
    std::memcpy(&text[k * sizeof packed], &packed, sizeof packed);
  }
  return text;
}

std::vector<AtomRecord> ReadHelperAtoms(const std::string& text) {
  if (text.size() % sizeof(PackedAtom) != 0) throw std::runtime_error("DSSP helper: not whole atoms");
  std::vector<AtomRecord> atoms(text.size() / sizeof(PackedAtom));
  for (size_t k = 0; k < atoms.size(); ++k) {
    PackedAtom packed;
    std::memcpy(&packed, &text[k * sizeof packed], sizeof packed);
    AtomRecord& a = atoms[k];
    std::memcpy(a.name, packed.name, sizeof a.name);
    a.name[sizeof a.name - 1] = '\0';
    a.altloc = packed.altloc;
    std::memcpy(a.resname, packed.resname, sizeof a.resname);
    a.resname[sizeof a.resname - 1] = '\0';
    a.chain = packed.chain;
    a.icode = packed.icode;
    std::memcpy(a.element, packed.element, sizeof a.element);
    a.element[sizeof a.element - 1] = '\0';
    a.resnum = packed.resnum;
    a.x = packed.x;
    a.y = packed.y;
    a.z = packed.z;
    a.bfactor = packed.bfactor;
  }
  return atoms;
}

std::string WriteHelperRows(const std::vector<DsspRow>& rows) {
  std::string text(1 + rows.size() * sizeof(DsspRow), kRows);
  if (!rows.empty()) std::memcpy(&text[1], rows.data(), rows.size() * sizeof(DsspRow));
  return text;
}

std::string WriteHelperFailure(const std::string& reason) { return kFailed + reason; }

std::vector<DsspRow> ReadHelperRows(const std::string& text) {
  if (!text.empty() && text[0] == kFailed) throw std::runtime_error(text.substr(1));
  if (text.empty() || text[0] != kRows || (text.size() - 1) % sizeof(DsspRow) != 0)
    throw std::runtime_error("DSSP helper gave output of another kind");
  std::vector<DsspRow> rows((text.size() - 1) / sizeof(DsspRow));
  if (!rows.empty()) std::memcpy(rows.data(), &text[1], text.size() - 1);
  return rows;
}

bool WriteHelperMessage(int fd, const std::string& text) {
  const std::string head = std::to_string(text.size()) + "\n";
  return WriteAll(fd, head.data(), head.size()) && WriteAll(fd, text.data(), text.size());
}

bool ReadHelperMessage(int fd, std::string& text) {
  std::string head;
  for (char c = 0; head.size() < 24;) {
    if (!ReadExactly(fd, &c, 1)) return false;
    if (c == '\n') break;
    head += c;
  }
  char* end = nullptr;
  const unsigned long long size = std::strtoull(head.c_str(), &end, 10);
  if (head.empty() || *end != '\0' || size > kMaxMessage) return false;
  text.assign(static_cast<size_t>(size), '\0');
  return ReadExactly(fd, &text[0], text.size());
}

DsspHelpers::DsspHelpers(std::string program) : program_(std::move(program)), owner_(::getpid()) {}

DsspHelpers::~DsspHelpers() {
  for (const Helper& helper : idle_) {
    if (owner_ == ::getpid())
      Stop(helper);
    else
      ::close(helper.socket);  // another process's helper: only our copy of its socket goes
  }
}

DsspHelpers::Helper DsspHelpers::Start() const {
  int sockets[2];
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0)
    throw std::runtime_error(std::string("DSSP helper: ") + std::strerror(errno));
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, sockets[1], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, sockets[1], STDOUT_FILENO);
  char* argv[] = {const_cast<char*>(program_.c_str()), nullptr};
  Helper helper;
  const int spawned = posix_spawn(&helper.pid, program_.c_str(), &actions, nullptr, argv, environ);
  posix_spawn_file_actions_destroy(&actions);
  ::close(sockets[1]);
  if (spawned != 0) {
    ::close(sockets[0]);
    throw std::runtime_error(Format("cannot run %s: %s", program_.c_str(), std::strerror(spawned)));
  }
  helper.socket = sockets[0];
  return helper;
}

void DsspHelpers::Stop(const Helper& helper) {
  ::close(helper.socket);  // the helper reads the end of its input and ends
  int status = 0;
  while (::waitpid(helper.pid, &status, 0) < 0 && errno == EINTR) {
  }
}

std::vector<DsspRow> DsspHelpers::Rows(const std::vector<AtomRecord>& atoms) {
  const std::string request = WriteHelperAtoms(atoms);
  for (int attempt = 0;; ++attempt) {
    Helper helper;
    {
      std::lock_guard<std::mutex> lock(mutex_);
      if (owner_ != ::getpid()) {
        for (const Helper& inherited : idle_) ::close(inherited.socket);
        idle_.clear();
        owner_ = ::getpid();
      }
      if (!idle_.empty()) {
        helper = idle_.back();
        idle_.pop_back();
      }
    }
    if (helper.pid < 0) helper = Start();
    std::string answer;
    if (WriteHelperMessage(helper.socket, request) && ReadHelperMessage(helper.socket, answer)) {
      {
        std::lock_guard<std::mutex> lock(mutex_);
        idle_.push_back(helper);
      }
      return ReadHelperRows(answer);
    }
    Stop(helper);
    if (attempt == 1) throw std::runtime_error(program_ + " broke off");
  }
}

SecondaryStructure HelperDssp::Read(const Structure& structure, std::vector<Message>& messages) {
  return MatchedRowsOrNone(structure, name_, messages, [&] { return helpers_.Rows(DsspAtoms(structure)); });
}

}  // namespace quarnel
