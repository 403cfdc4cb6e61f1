// A small demo database built once per test program and shared by the
// demo tests (they only read it), and the checksums that compare two
// builds. The as-of date is fixed so that the data does not depend on the
// day the tests run.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "data/drivers/connection.h"
#include "demo/demo_database.h"
#include "support/databases.h"

namespace orvalis::testing {

inline constexpr int kDemoEmployees = 600;

DemoOptions demoOptions(int employees, uint64_t seed);

struct SharedDemo {
  std::unique_ptr<test::ScratchDatabase> db;
  std::unique_ptr<Connection> connection;
  DemoReport report;
};

// The shared SQLite demo database (600 employees, 2 companies, seed 7,
// as of 21/11/2026), built on first use.
SharedDemo& sharedDemo();

// One number per table, independent of row order: the sum of a hash of
// each row's values (text and Null-ness).
std::map<std::string, uint64_t> tableChecksums(Connection& connection);

// The first column of the first row of sql as a number.
long scalar(Connection& connection, const std::string& sql);

}  // namespace orvalis::testing
