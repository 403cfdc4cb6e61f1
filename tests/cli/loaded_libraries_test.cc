// The tool maps the database clients and the spreadsheet writer only in
// the runs that use them: the dynamic loader's own trace (LD_DEBUG=files)
// of each run lists every library it loaded. A failed connection has
// loaded its client all the same, so no server is needed.

#include <gtest/gtest.h>

#include <cstdlib>

#include "support/cli_runner.h"
#include "support/temp_dir.h"

namespace orvalis::testing {
namespace {

TEST(LoadedLibraries, EachRunLoadsOnlyTheClientsItUses) {
  test::TempDir dir("orvalis-loaded-libraries");
  ASSERT_EQ(runCli({"demo-db", "--employees", "20", "--quiet"}, dir.str()).status, 0);
  const std::string book = (dir / "any.xlsx").string();
  struct Case {
    std::vector<std::string> args;
    int status;
    std::string loads;  // of libpq, libodbc, libxlsxwriter; "" for none
  };
  const Case cases[] = {
      {{"query", "EMPADDRALL", "--format", "csv"}, 0, ""},
      {{"query", "EMPADDRALL", "--format", "xlsx", "--out", book}, 0, "libxlsxwriter"},
      {{"--db", "postgresql://nobody@127.0.0.1:1/none", "--timeout", "1", "query", "EMPADDRALL"}, 2, "libpq"},
      {{"--db", "odbc:Driver=/nonexistent/driver.so", "query", "EMPADDRALL"}, 2, "libodbc"},
  };
  setenv("LD_DEBUG", "files", 1);
  for (const Case& c : cases) {
    const CliResult r = runCli(c.args, dir.str());
    const std::string what = c.args[0] + " " + c.args[1] + " " + c.args.back();
    EXPECT_EQ(r.status, c.status) << what;
    for (const std::string library : {"libpq", "libodbc", "libxlsxwriter"}) {
      const bool loaded = r.err.find("file=" + library + ".so") != std::string::npos;
      EXPECT_EQ(loaded, library == c.loads) << what << ": " << library << (loaded ? " loaded" : " not loaded");
    }
  }
  unsetenv("LD_DEBUG");
}

}  // namespace
}  // namespace orvalis::testing
