// Test databases: scratch SQLite files and PostgreSQL schemas.
//
// The PostgreSQL tests run against the throwaway server scripts/test.sh
// starts (scripts/pg-cluster.sh), whose URLs arrive in ORVALIS_TEST_PG_URL
// and ORVALIS_TEST_ODBC. Without them the tests that need the server fail:
// the helpers below throw, and GoogleTest reports the message as the test's
// failure. Call them inside a test body or fixture SetUp, never while
// tests are being registered.
//
// A ScratchDatabase is one test's private database: a temporary SQLite file
// (removed on destruction), or a uniquely named schema on the test server
// (dropped on destruction), reached natively or over ODBC with that schema
// first on the search path. Test programs can therefore run in parallel.
// A ScratchDatabase is owned by one test; not thread-safe.
#pragma once

#include <memory>
#include <string>

#include "data/drivers/connection.h"

namespace orvalis::test {

// ORVALIS_TEST_PG_URL (postgresql://...) and ORVALIS_TEST_ODBC (odbc:...);
// each throws when its variable is not set.
std::string postgresTestUrl();
std::string odbcTestUrl();

enum class Engine { SQLite, PostgreSQL, Odbc };

// "SQLite", "PostgreSQL", "ODBC": usable in test-parameter names.
const char* engineName(Engine engine);

class ScratchDatabase {
 public:
  explicit ScratchDatabase(Engine engine);
  ~ScratchDatabase();
  ScratchDatabase(const ScratchDatabase&) = delete;
  ScratchDatabase& operator=(const ScratchDatabase&) = delete;

  Engine engine() const { return engine_; }
  // The URL openConnection() takes for this database.
  const std::string& url() const { return url_; }
  // A new connection to this database.
  std::unique_ptr<Connection> connect() const;

 private:
  Engine engine_;
  std::string url_;
  std::string sqlitePath_;  // SQLite: the file to remove
  std::string adminUrl_;    // PostgreSQL and ODBC: where the schema lives
  std::string schema_;
};

}  // namespace orvalis::test
