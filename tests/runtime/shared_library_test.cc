// A library loaded on first use that is missing, or lacks a function,
// fails in one line naming what was loaded, the file and the loader's
// reason. (The tables themselves are used by every PostgreSQL, ODBC and
// workbook test.)

#include <gtest/gtest.h>

#include "runtime/error.h"
#include "runtime/shared_library.h"

namespace orvalis {
namespace {

TEST(SharedLibrary, MissingLibraryOrFunctionFailsInOneLine) {
  struct Case {
    const char* file;
    const char* function;  // nullptr: the load itself fails
    std::string says;
  };
  const Case cases[] = {
      {"liborvalis-absent.so.9", nullptr,
       "cannot load the test library (liborvalis-absent.so.9): liborvalis-absent.so.9: cannot open shared object file"},
      {"libc.so.6", "orvalis_absent_function",
       "cannot load the test library (libc.so.6): it has no function orvalis_absent_function: "},
  };
  for (const Case& c : cases) {
    try {
      const SharedLibrary library(c.file, "the test library", err::kClassNotRegistered, "Tester");
      library.function<void (*)()>(c.function);
      ADD_FAILURE() << c.file << " " << c.function << " loaded";
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), err::kClassNotRegistered);
      EXPECT_EQ(e.source(), "Tester");
      EXPECT_EQ(e.description().rfind(c.says, 0), 0u) << e.description();
      EXPECT_EQ(e.description().find('\n'), std::string::npos) << e.description();
    }
  }
}

}  // namespace
}  // namespace orvalis
