#include "reports/sir_he/hesa_lookups.h"

#include "component/errors/error_handling.h"
#include "data/data_functions.h"
#include "data/dictionary.h"
#include "data/sql_text.h"
#include "reports/sir_he/hesa_fields.h"
#include "runtime/basic_string.h"

namespace orvalis::reports::hesa {

namespace {

const std::string kNothing;

std::string keyOf(std::string_view s) { return upperTrim(s); }

}  // namespace

std::string HesaLookups::structureSql(const std::string& table, const std::string& columns,
                                      const std::string& variation) {
  return "SELECT " + columns + " FROM " + table + " " + "WHERE VARIATION_ID = '" + sqlQuote(variation) +
         "' " + "AND 1 = 0";
}

std::string HesaLookups::codeTableSql(const std::string& codeTable, const std::string& variation) {
  return "SELECT CODE_ID, DESCRIPTION FROM " + codeTable + " WHERE VARIATION_ID = '" + sqlQuote(variation) +
         "'";
}

void HesaLookups::subSetupLabelsCollection(const std::string& variation) {
  std::string sql;
  Procedure proc(Handler::Block, componentNames().reports, "SIR_HE", "subSetupLabelsCollection");
  proc.variables([&] { return Dump().item("STRSQL = ", sql).text(); });
  proc.run([&](Steps& step) {
    std::vector<std::string> keys;
    step(1, [&] {
      labels_.clear();
      keys = {kBirthDateLabel, kGenderLabel, kStaffIdLabel};
    });
    const std::pair<const char*, std::string> lists[] = {
        {kPersonTable, std::string("EMP_ID,") + kPersonColumns},
        {kContractTable, std::string("EMP_ID,") + kContractColumns},
    };
    for (const auto& [table, columns] : lists) {
      step(2, [&] {
        sql = structureSql(table, columns, variation);
        Recordset rs;
        gfncOpenRecordset(sql, rs);
        for (const FieldDef& f : rs.fields()) keys.push_back(std::string(table) + "." + f.name);
      });
    }
    step(3, [&] {
      for (const std::string& key : keys) {
        size_t dot = key.find('.');
        labels_.emplace(keyOf(key), gfncFieldLabel(key.substr(0, dot), key.substr(dot + 1)));
      }
    });
  });
}

void HesaLookups::subSetupXRefCollection(const std::string& variation) {
  std::string colSql;
  std::string xrefEntity;
  Procedure proc(Handler::Block, componentNames().reports, "SIR_HE", "subSetupXRefCollection");
  proc.variables(
      [&] { return Dump().item("STRCOLSQL = ", colSql).item("STRXREFENTITY = ", xrefEntity).text(); });
  proc.run([&](Steps& step) {
    step(1, [&] {
      tables_.clear();
      xref_.clear();
    });
    const std::pair<const char*, const char*> lists[] = {{kPersonTable, kPersonColumns},
                                                         {kContractTable, kContractColumns}};
    for (const auto& [table, columns] : lists) {
      for (const std::string& column : split(columns, ",")) {
        step(2, [&] {
          xrefEntity = upperTrim(codeTable(table, column));
          if (xrefEntity.empty() || xrefEntity == kMasterTable) return;
          std::shared_ptr<CodeDescriptions>& codes = tables_[xrefEntity];
          if (!codes) {
            codes = std::make_shared<CodeDescriptions>();
            colSql = codeTableSql(xrefEntity, variation);
            Recordset rs;
            if (gfncOpenRecordset(colSql, rs)) {
              for (long r = 0; r < rs.rowCount(); ++r) {
                if (rs.isDeleted(r)) continue;
                // The first of two codes that differ only in case wins.
                codes->emplace(keyOf(rs.textAt(r, 0)), rs.textAt(r, 1));
              }
            }
          }
          xref_[keyOf(std::string(table) + "." + column)] = codes;
        });
      }
    }
  });
}

const std::string& HesaLookups::label(std::string_view key) const {
  auto it = labels_.find(keyOf(key));
  return it == labels_.end() ? kNothing : it->second;
}

const std::string& HesaLookups::codeTable(const std::string& table, const std::string& column) {
  std::string key = keyOf(table) + "." + keyOf(column);
  auto it = codeTables_.find(key);
  if (it == codeTables_.end()) it = codeTables_.emplace(key, gfncGetFKTable(table, column)).first;
  return it->second;
}

const CodeDescriptions* HesaLookups::codes(std::string_view columnKey) const {
  auto it = xref_.find(keyOf(columnKey));
  return it == xref_.end() ? nullptr : it->second.get();
}

namespace {

// The code as the sets file it (trimmed, upper case); a copy in `scratch`
// only when it has a lower-case letter, as codes are mostly stored as typed.
std::string_view codeKey(std::string_view code, std::string& scratch) {
  const size_t first = code.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  code = code.substr(first, code.find_last_not_of(' ') - first + 1);
  for (char c : code) {
    if (c >= 'a' && c <= 'z') return scratch = keyOf(code);
  }
  return code;
}

}  // namespace

const std::string& HesaLookups::description(const CodeDescriptions* codes, std::string_view code) {
  if (codes == nullptr) return kNothing;
  std::string scratch;
  auto it = codes->find(codeKey(code, scratch));
  return it == codes->end() ? kNothing : it->second;
}

CodeSet HesaLookups::validCodes(const CodeDescriptions* codes) {
  CodeSet valid(codes ? codes->size() : 0);
  if (codes == nullptr) return valid;
  for (const auto& [code, description] : *codes) {
    if (!description.empty()) valid.insert(code);
  }
  return valid;
}

bool HesaLookups::validCode(const CodeSet& valid, std::string_view code) {
  std::string scratch;
  const size_t first = code.find_first_not_of(' ');
  if (first == std::string_view::npos) code = {};
  else code = code.substr(first, code.find_last_not_of(' ') - first + 1);
  return valid.contains(code, scratch);
}

}  // namespace orvalis::reports::hesa
