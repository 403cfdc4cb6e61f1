// A scratch SQLite HR database with the real schema and data dictionary,
// held in HREnvironment, for the HESA staff record tests; helpers that add
// employees with complete, valid HESA data and alter them column by column.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "component/errors/recording_error_component.h"
#include "data/standalone_environment.h"
#include "reports/sir_he/sir_he.h"
#include "runtime/recordset.h"

namespace orvalis::testing {

// A column value written as an SQL literal: "NULL", "'text'", "1.5".
using Columns = std::map<std::string, std::string>;

// One result row as its eight texts.
using ResultRow = std::vector<std::string>;

class SirHeFixture : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  void exec(const std::string& sql);
  // A new environment on the same database, with config changes.
  void reconfigure(const std::function<void(StandaloneConfig&)>& adjust);
  // A control parameter of product module `module` for the company.
  void setControl(const std::string& module, const std::string& param, const std::string& value);
  // Master record (known-as name "Name <id>", birth date, gender "M", a
  // HESA staff identifier, current); `changes` replaces columns.
  void addEmployee(const std::string& empId, const Columns& changes = {});
  // A person record whose every column is valid; `changes` replaces columns.
  void addPerson(const std::string& empId, const Columns& changes = {});
  void addContract(const std::string& empId, int seq, const Columns& changes = {});
  // Employee, person record and one contract, all valid.
  void addCompleteEmployee(const std::string& empId);

  // Runs ExtractData; rows as texts.
  std::vector<ResultRow> extract(const std::string& method, bool* result = nullptr,
                                 reports::hesa::RecordReads reads = reports::hesa::RecordReads::WholeCompany);
  static std::vector<ResultRow> rowsOf(const Recordset& rs);

  std::filesystem::path dir_;
  std::string url_;
  std::shared_ptr<StandaloneEnvironment> env_;
  Recordset last_;                         // the recordset of the last extract
  std::shared_ptr<ErrorRecorder> errors_;  // what the error component was told
  bool expectNoErrors_ = true;             // extract() fails the test on any
};

// A valid literal for a column of the person or contract record.
std::string validLiteral(const std::string& column);

}  // namespace orvalis::testing
