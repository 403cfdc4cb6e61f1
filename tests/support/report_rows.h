// Rows of a report's recordset as texts, compared field by field; and the
// engine list and test-name printer of the tests that run on each engine.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>

#include "runtime/recordset.h"
#include "support/databases.h"

namespace orvalis::test {

// One row by field name: "<NULL>" for Null, ISO text for a date, other
// values as trimmed texts.
using Row = std::map<std::string, std::string>;
using Rows = std::map<std::string, Row>;

Row rowAt(const Recordset& rs, long row);
// Every stored row of rs (none when it is closed), keyed by key(row, its
// number).
Rows rowsBy(const Recordset& rs, const std::function<std::string(const Row&, long)>& key);
// Keyed by the trimmed texts of the first two fields, "/" between.
Rows rowsByFirstTwo(const Recordset& rs);

// Holds when row has each of want's fields with want's text; the failure
// names every field that differs or is missing.
::testing::AssertionResult hasFields(const Row& row, const Row& want);

// The name GoogleTest shows for an engine parameter ("SQLite", ...).
std::string engineParam(const ::testing::TestParamInfo<Engine>& info);

}  // namespace orvalis::test

// Runs Suite's TEST_P cases on SQLite and on the test PostgreSQL server.
#define ORVALIS_ON_SQLITE_AND_POSTGRESQL(Suite)                                                              \
  INSTANTIATE_TEST_SUITE_P(Engines, Suite,                                                                \
                           ::testing::Values(::orvalis::test::Engine::SQLite,                             \
                                             ::orvalis::test::Engine::PostgreSQL),                        \
                           ::orvalis::test::engineParam)
