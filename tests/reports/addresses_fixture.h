// A small demo HR database (SQLite or the throwaway PostgreSQL server) for
// the Addresses report tests, with helpers to add stored queries, run the
// report as a given user and read rows back as texts.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "component/errors/recording_error_component.h"
#include "data/standalone_environment.h"
#include "runtime/recordset.h"
#include "support/databases.h"

namespace orvalis::testing {

// A result row as "FIELD" -> text ("<NULL>" for Null).
using NamedRow = std::map<std::string, std::string>;

class AddressesDatabase {
 public:
  explicit AddressesDatabase(test::Engine engine);
  ~AddressesDatabase();

  test::Engine engine() const { return db_.engine(); }
  const std::filesystem::path& folder() const { return dir_; }

  // Runs a statement on the HR database as it stands.
  void exec(const std::string& sql);
  Recordset query(const std::string& sql);
  // The first column of every row, trimmed.
  std::vector<std::string> column(const std::string& sql);
  // A control parameter of the ADM module for the company.
  void control(const std::string& param, const std::string& value);
  // A stored query of type "X" on `entity` showing `columns` ("TABLE.COLUMN",
  // in order) with optional criteria (item, function, value).
  void grid(const std::string& code, const std::string& entity, const std::vector<std::string>& columns,
            const std::vector<std::vector<std::string>>& criteria = {}, const std::string& applyAccess = "Y");

  // Runs ExtractData("EMPLOYEE_ADDRESSES", {"", queryCode}) as `user`.
  bool extract(const std::string& queryCode, const std::string& user = "ADMIN");
  const Recordset& result() const { return result_; }
  // The result's rows keyed by EMP_ID (trimmed text).
  std::map<std::string, NamedRow> rowsByEmployee() const;
  ErrorRecorder& errors() { return *errors_; }

 private:
  test::ScratchDatabase db_;
  std::filesystem::path dir_;
  std::shared_ptr<StandaloneEnvironment> env_;
  std::shared_ptr<ErrorRecorder> errors_;
  Recordset result_;
};

// The text of a value as the tests compare it: "<NULL>" for Null, dates as
// "YYYY-MM-DD", everything else trimmed.
std::string cellText(const Value& v);

}  // namespace orvalis::testing
