#include "reports/sir_he/hesa_records.h"

#include <algorithm>
#include <unordered_set>

#include "data/data_functions.h"
#include "data/sql_text.h"
#include "reports/sir_he/hesa_fields.h"
#include "runtime/basic_string.h"

namespace orvalis::reports::hesa {

namespace {

std::string employeeCondition(const std::string& variation, const std::string& empId) {
  return "WHERE VARIATION_ID = '" + sqlQuote(variation) + "' " + "AND EMP_ID = '" + sqlQuote(empId) + "'";
}

// Rows of a recordset as the cursor would visit them (a driver's recordset
// has no filter, so storage order).
std::vector<long> allRows(const Recordset& rs) {
  std::vector<long> rows;
  if (!rs.isOpen()) return rows;
  for (long r = 0; r < rs.rowCount(); ++r) {
    if (!rs.isDeleted(r)) rows.push_back(r);
  }
  return rows;
}

bool hasRows(const std::string& sql) {
  Recordset rs;
  return gfncOpenRecordset(sql, rs) && rs.recordCount() > 0;
}

class PerEmployeeReads final : public HesaRecordSource {
 public:
  explicit PerEmployeeReads(std::string variation) : variation_(std::move(variation)) {}

  void employee(size_t, const std::string& empId) override { empId_ = empId; }

  bool personExists() override {
    sql_ = personExistsSql(variation_, empId_);
    return hasRows(sql_);
  }

  RecordRows person() override {
    sql_ = personRowSql(variation_, empId_);
    gfncOpenRecordset(sql_, person_);
    std::vector<long> rows = allRows(person_);
    // The check reads the first row. erase, not resize(1): at -O3 GCC 12
    // inlines resize's never-taken growing branch and reports a false
    // -Warray-bounds in it (one of the GCC meta-bug 56456 family).
    if (rows.size() > 1) rows.erase(rows.begin() + 1, rows.end());
    return {&person_, std::move(rows), 0, person_.fieldCount()};
  }

  bool contractsExist() override {
    sql_ = contractsExistSql(variation_, empId_);
    return hasRows(sql_);
  }

  RecordRows contracts() override {
    sql_ = contractRowsSql(variation_, empId_);
    gfncOpenRecordset(sql_, contracts_);
    return {&contracts_, allRows(contracts_), 0, contracts_.fieldCount()};
  }

  const std::string& sql() const override { return sql_; }

 private:
  std::string variation_;
  std::string empId_;
  std::string sql_;
  Recordset person_;
  Recordset contracts_;
};

class BatchedReads final : public HesaRecordSource {
 public:
  BatchedReads(const std::string& variation, std::vector<std::string> empIds)
      : variation_(variation), ids_(std::move(empIds)), fallback_(variation) {}

  void employee(size_t position, const std::string& empId) override {
    if (position >= loadedEnd_ || position < loadedBegin_) load(position);
    fallback_.employee(position, empId);
    auto p = personRow_.find(empId);
    currentPerson_ = p == personRow_.end() ? -1 : p->second;
    auto c = contractRows_.find(empId);
    currentContracts_ = c == contractRows_.end() ? nullptr : &c->second;
  }

  bool personExists() override {
    if (!personsRead_) return (usingFallback_ = true, fallback_.personExists());
    return currentPerson_ >= 0;
  }

  RecordRows person() override {
    if (!personsRead_) return (usingFallback_ = true, fallback_.person());
    return {&persons_, {currentPerson_}, 0, persons_.fieldCount()};
  }

  bool contractsExist() override {
    if (!contractsRead_) return (usingFallback_ = true, fallback_.contractsExist());
    return currentContracts_ != nullptr;
  }

  RecordRows contracts() override {
    if (!contractsRead_) return (usingFallback_ = true, fallback_.contracts());
    // EMP_ID, read last to file the rows, is not one of the checked columns.
    return {&contracts_, *currentContracts_, 0, contracts_.fieldCount() - 1};
  }

  const std::string& sql() const override { return usingFallback_ ? fallback_.sql() : sql_; }

 private:
  // Reads the records of the employees from `position` on.
  void load(size_t position) {
    loadedBegin_ = position;
    loadedEnd_ = std::min(ids_.size(), position + kBatchSize);
    std::vector<std::string> requested;
    std::unordered_set<std::string> seen;
    for (size_t i = loadedBegin_; i < loadedEnd_; ++i) {
      if (seen.insert(ids_[i]).second) requested.push_back(ids_[i]);
    }
    personRow_.clear();
    contractRows_.clear();
    std::string in;
    for (const std::string& id : requested) {
      if (!in.empty()) in += ", ";
      in += "'" + sqlQuote(id) + "'";
    }
    const std::string where =
        "WHERE VARIATION_ID = '" + sqlQuote(variation_) + "' " + "AND EMP_ID IN (" + in + ") ";

    sql_ = std::string("SELECT EMP_ID,") + kPersonColumns + " " + "FROM " + kPersonTable + " " + where +
           "ORDER BY EMP_ID";
    usingFallback_ = false;
    personsRead_ = gfncOpenRecordset(sql_, persons_);
    fileRows(persons_, 0, seen, requested, [&](const std::string& id, long row) {
      personRow_.emplace(id, row);  // the first row, as the reference reads
    });

    sql_ = std::string("SELECT SEQ_ID,") + kContractColumns + ",EMP_ID " + "FROM " + kContractTable + " " +
           where + "ORDER BY EMP_ID, SEQ_ID";
    contractsRead_ = gfncOpenRecordset(sql_, contracts_);
    fileRows(contracts_, contracts_.fieldCount() - 1, seen, requested,
             [&](const std::string& id, long row) { contractRows_[id].push_back(row); });
  }

  // Files each row under the requested identifier its EMP_ID equals; a row
  // whose EMP_ID equals none exactly (the engine compared without case or
  // trailing blanks) goes to the identifiers it equals in that looser way.
  template <typename File>
  static void fileRows(const Recordset& rs, int empColumn, const std::unordered_set<std::string>& requested,
                       const std::vector<std::string>& order, File file) {
    if (!rs.isOpen() || empColumn < 0) return;
    std::unordered_map<std::string, std::vector<std::string>> loose;
    for (long r : allRows(rs)) {
      std::string id = rs.textAt(r, empColumn);
      if (requested.count(id) != 0) {
        file(id, r);
        continue;
      }
      if (loose.empty()) {
        for (const std::string& want : order) loose[ucase(rtrim(want))].push_back(want);
      }
      auto it = loose.find(ucase(rtrim(id)));
      if (it == loose.end()) continue;
      for (const std::string& want : it->second) file(want, r);
    }
  }

  std::string variation_;
  std::vector<std::string> ids_;
  size_t loadedBegin_ = 0;
  size_t loadedEnd_ = 0;
  std::string sql_;
  Recordset persons_;
  Recordset contracts_;
  std::unordered_map<std::string, long> personRow_;
  std::unordered_map<std::string, std::vector<long>> contractRows_;
  long currentPerson_ = -1;
  const std::vector<long>* currentContracts_ = nullptr;
  bool personsRead_ = false;
  bool contractsRead_ = false;
  // A batch statement that could not be read (the error component was told
  // and chose to go on) leaves its employees to the original statements, so
  // that one unreadable row affects its own employee only, as before.
  PerEmployeeReads fallback_;
  bool usingFallback_ = false;
};

}  // namespace

std::string personExistsSql(const std::string& variation, const std::string& empId) {
  return std::string("SELECT * FROM ") + kPersonTable + " " + employeeCondition(variation, empId);
}

std::string personRowSql(const std::string& variation, const std::string& empId) {
  return std::string("SELECT ") + "EMP_ID," + kPersonColumns + " " + "FROM " + kPersonTable + " " +
         employeeCondition(variation, empId);
}

std::string contractsExistSql(const std::string& variation, const std::string& empId) {
  return std::string("SELECT * FROM ") + kContractTable + " " + employeeCondition(variation, empId);
}

std::string contractRowsSql(const std::string& variation, const std::string& empId) {
  return std::string("SELECT ") + "SEQ_ID," + kContractColumns + " " + "FROM " + kContractTable + " " +
         employeeCondition(variation, empId);
}

std::unique_ptr<HesaRecordSource> makeRecordSource(RecordReads reads, const std::string& variation,
                                                   std::vector<std::string> empIds) {
  if (reads == RecordReads::PerEmployee) return std::make_unique<PerEmployeeReads>(variation);
  return std::make_unique<BatchedReads>(variation, std::move(empIds));
}

}  // namespace orvalis::reports::hesa
