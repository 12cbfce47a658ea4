// Test helpers: clean state, temporary files, and running the built tool.
#include "support/test_support.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "run/state.h"

extern char** environ;

void RestartRandomSequence() {
  unsigned short zero[3] = {0, 0, 0};
  seed48(zero);
}

void StartCleanRun() {
  ResetRunState();
  RestartRandomSequence();
}

std::string DataPath(const std::string& file) {
  const char* data = std::getenv("QUARNEL_DATA");
  std::string dir = data != nullptr ? data : QUARNEL_DEFAULT_DATA;
  return dir + "/" + file;
}

TempDir::TempDir() {
  const char* base = std::getenv("TMPDIR");
  std::string pattern = std::string(base != nullptr ? base : "/tmp") + "/quarnel-test-XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  if (mkdtemp(buffer.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  path_ = buffer.data();
}

TempDir::~TempDir() {
  std::string command = "rm -rf '" + path_ + "'";
  int ignored = std::system(command.c_str());
  (void)ignored;
}

void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary);
  out << text;
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream buffer;
  buffer << in.rdbuf();
  return buffer.str();
}

bool FileExists(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0;
}

std::string DsspAdapter() {
  const char* source = std::getenv("QUARNEL_SOURCE");
  return std::string(source != nullptr ? source : QUARNEL_DEFAULT_SOURCE) + "/tools/quarnel-dssp";
}

ToolRun RunTool(const std::vector<std::string>& args, const std::string& directory,
                const std::vector<std::string>& environment) {
  const char* bin = std::getenv("QUARNEL_BIN");
  std::string tool = bin != nullptr ? bin : QUARNEL_DEFAULT_BIN;

  TempDir capture;
  std::string outPath = capture.File("stdout");
  std::string errPath = capture.File("stderr");

  std::vector<std::string> env;
  for (char** e = environ; *e != nullptr; ++e) {
    if (std::strncmp(*e, "DSSP_PATH=", 10) == 0) continue;
    env.push_back(*e);
  }
  for (const std::string& setting : environment) env.push_back(setting);

  std::vector<char*> argv;
  argv.push_back(const_cast<char*>(tool.c_str()));
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  std::vector<char*> envp;
  for (std::string& e : env) envp.push_back(const_cast<char*>(e.c_str()));
  envp.push_back(nullptr);

  pid_t pid = fork();
  if (pid < 0) throw std::runtime_error("fork failed");
  if (pid == 0) {
    if (chdir(directory.c_str()) != 0) _exit(127);
    int out = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    int err = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (out < 0 || err < 0) _exit(127);
    dup2(out, 1);
    dup2(err, 2);
    execve(tool.c_str(), argv.data(), envp.data());
    _exit(127);
  }
  int status = 0;
  waitpid(pid, &status, 0);
  ToolRun run;
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  run.out = ReadFile(outPath);
  run.err = ReadFile(errPath);
  return run;
}
