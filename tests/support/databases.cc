#include "support/databases.h"

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <stdexcept>

namespace orvalis::test {

namespace {

const char* kMissingServer =
    " is not set: run the tests through scripts/test.sh, which starts the throwaway PostgreSQL server";

std::string requiredVariable(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr || *value == '\0') throw std::runtime_error(std::string(name) + kMissingServer);
  return value;
}

// A name no other test of any process running now uses.
std::string uniqueName(const char* prefix) {
  static std::atomic<unsigned> counter{0};
  static const unsigned salt = std::random_device{}();
  return std::string(prefix) + std::to_string(::getpid()) + "_" + std::to_string(counter++) + "_" +
         std::to_string(salt % 100000);
}

}  // namespace

std::string postgresTestUrl() { return requiredVariable("ORVALIS_TEST_PG_URL"); }
std::string odbcTestUrl() {
  // The ODBC tests reach the same server; without it they fail the same way.
  postgresTestUrl();
  return requiredVariable("ORVALIS_TEST_ODBC");
}

const char* engineName(Engine engine) {
  switch (engine) {
    case Engine::SQLite:
      return "SQLite";
    case Engine::PostgreSQL:
      return "PostgreSQL";
    case Engine::Odbc:
      return "ODBC";
  }
  return "?";
}

ScratchDatabase::ScratchDatabase(Engine engine) : engine_(engine) {
  if (engine == Engine::SQLite) {
    sqlitePath_ = (std::filesystem::temp_directory_path() / (uniqueName("orvalis_test_") + ".db")).string();
    url_ = "sqlite:" + sqlitePath_;
    return;
  }
  adminUrl_ = postgresTestUrl();
  std::string odbcBase = engine == Engine::Odbc ? odbcTestUrl() : std::string();
  schema_ = uniqueName("orvalis_t");
  openConnection(adminUrl_)->execute("CREATE SCHEMA " + schema_);
  if (engine == Engine::PostgreSQL) {
    // libpq URI parameter: options=-c search_path=<schema>
    url_ = adminUrl_ + (adminUrl_.find('?') == std::string::npos ? "?" : "&") +
           "options=-csearch_path%3D" + schema_;
  } else {
    // psqlODBC runs ConnSettings right after connecting.
    url_ = odbcBase + (odbcBase.empty() || odbcBase.back() == ';' ? "" : ";") +
           "ConnSettings=SET search_path TO " + schema_;
  }
}

ScratchDatabase::~ScratchDatabase() {
  try {
    if (engine_ == Engine::SQLite) {
      std::error_code ec;
      for (const char* suffix : {"", "-journal", "-wal", "-shm"}) std::filesystem::remove(sqlitePath_ + suffix, ec);
    } else if (!schema_.empty()) {
      openConnection(adminUrl_)->execute("DROP SCHEMA IF EXISTS " + schema_ + " CASCADE");
    }
  } catch (...) {
    // A schema left behind disappears with the throwaway server.
  }
}

std::unique_ptr<Connection> ScratchDatabase::connect() const { return openConnection(url_); }

}  // namespace orvalis::test
