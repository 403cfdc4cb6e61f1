// Runs the built orvalis tool (path from ORVALIS_CLI) and captures its exit
// status, standard output and standard error.
#pragma once

#include <string>
#include <vector>

namespace orvalis::testing {

struct CliResult {
  int status = -1;
  std::string out;
  std::string err;
};

// Arguments are passed as they are (no shell); ORVALIS_WORK_DIR is set to
// workDir when given. Standard output goes to stdoutPath when given (a
// device such as /dev/full; out is then empty).
CliResult runCli(const std::vector<std::string>& args, const std::string& workDir = "",
                 const std::string& stdoutPath = "");

}  // namespace orvalis::testing
