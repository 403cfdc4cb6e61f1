// The two per-call collections of the HESA staff record check.
//
// Labels (subSetupLabelsCollection): the user-facing label of every column
// of the person and contract tables, keyed "TABLE.COLUMN", plus the master
// fields the check names (PNLEMPMST.DATE_BIRTH, PNLEMPMST.SEX_ID) and the
// staff identifier it reports per contract (PNLEMPHESAC.STAFF_ID). The
// columns are found by opening the fixed column lists with the always-false
// condition "AND 1 = 0" (structure only); the labels come from
// gfncFieldLabel.
//
// Cross references (subSetupXRefCollection): for every column of the two
// fixed lists whose code table (gfncGetFKTable) is a real code table, the
// table's codes and descriptions for the company, keyed by column key and
// code. Each code table is read once however many columns draw on it. A
// column that repeats an employee fact (code table PNLEMPMST) is tested for
// emptiness only, so nothing is read for it.
//
// Keys and codes compare trimmed and without regard to case, as the
// original's collections did. A missing key or code is not an error: the
// lookups answer "". Both setups report errors in the error block of
// SIR_HE. Owned by one report call; single-threaded.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "reports/shared/text_hash.h"
#include "reports/sir_he/code_set.h"

namespace orvalis::reports::hesa {

// Code -> description of one code table (codes upper-cased and trimmed).
using CodeDescriptions = std::unordered_map<std::string, std::string, TextHash, std::equal_to<>>;

class HesaLookups {
 public:
  // Builds the label collection for the company.
  void subSetupLabelsCollection(const std::string& variation);
  // Builds the cross-reference collection for the company.
  void subSetupXRefCollection(const std::string& variation);

  // The label filed under "TABLE.COLUMN", or "".
  const std::string& label(std::string_view key) const;
  // The code table of a column as the dictionary gives it (cached per call).
  const std::string& codeTable(const std::string& table, const std::string& column);
  // The codes filed under a column key, or nullptr when none were filed.
  const CodeDescriptions* codes(std::string_view columnKey) const;
  // The description of a code in a code set, or "" (a null set included).
  static const std::string& description(const CodeDescriptions* codes, std::string_view code);
  // The codes of a set whose description is not "" (views into the set),
  // and the test description(codes, code) != "" against them.
  static CodeSet validCodes(const CodeDescriptions* codes);
  static bool validCode(const CodeSet& valid, std::string_view code);

  // The SQL of the structure-only query of a table's column list.
  static std::string structureSql(const std::string& table, const std::string& columns,
                                  const std::string& variation);
  // The SQL that reads a code table.
  static std::string codeTableSql(const std::string& codeTable, const std::string& variation);

  size_t labelCount() const { return labels_.size(); }
  size_t codeTablesRead() const { return tables_.size(); }

 private:
  std::unordered_map<std::string, std::string> labels_;                        // upper-cased key
  std::unordered_map<std::string, std::shared_ptr<CodeDescriptions>> tables_;  // by code table
  std::unordered_map<std::string, std::shared_ptr<CodeDescriptions>> xref_;    // by column key
  std::unordered_map<std::string, std::string> codeTables_;                    // "TABLE.COLUMN" -> code table
};

}  // namespace orvalis::reports::hesa
