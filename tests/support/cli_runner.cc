#include "support/cli_runner.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace orvalis::testing {

namespace {
std::string slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}
}  // namespace

CliResult runCli(const std::vector<std::string>& args, const std::string& workDir, const std::string& stdoutPath) {
  const char* cli = std::getenv("ORVALIS_CLI");
  if (cli == nullptr) throw std::runtime_error("ORVALIS_CLI is not set (run through ctest)");
  char outName[] = "/tmp/orvalis-cli-out.XXXXXX";
  char errName[] = "/tmp/orvalis-cli-err.XXXXXX";
  int outFd = mkstemp(outName);
  int errFd = mkstemp(errName);
  pid_t pid = fork();
  if (pid == 0) {
    if (!stdoutPath.empty()) {
      int target = open(stdoutPath.c_str(), O_WRONLY);
      if (target < 0) _exit(126);
      dup2(target, 1);
    } else {
      dup2(outFd, 1);
    }
    dup2(errFd, 2);
    int devnull = open("/dev/null", O_RDONLY);
    dup2(devnull, 0);
    if (!workDir.empty()) setenv("ORVALIS_WORK_DIR", workDir.c_str(), 1);
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(cli));
    for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    execv(cli, argv.data());
    _exit(127);
  }
  int status = 0;
  waitpid(pid, &status, 0);
  close(outFd);
  close(errFd);
  CliResult r;
  r.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  r.out = slurp(outName);
  r.err = slurp(errName);
  unlink(outName);
  unlink(errName);
  return r;
}

}  // namespace orvalis::testing
