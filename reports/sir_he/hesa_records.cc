#include "reports/sir_he/hesa_records.h"


#include <algorithm>
#include <unordered_map>

#include "data/data_functions.h"
#include "data/sql_text.h"
#include "reports/sir_he/hesa_fields.h"
#include "reports/sir_he/text_slots.h"
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

  void employee(const std::string& empId) override { empId_ = empId; }

  bool personExists() override {
    sql_ = personExistsSql(variation_, empId_);
    return hasRows(sql_);
  }

  RecordRows person() override {
    sql_ = personRowSql(variation_, empId_);
    gfncOpenRecordset(sql_, person_);
    personRows_ = allRows(person_);
    // The check reads the first row.
    return {&person_, std::span<const long>(personRows_).first(std::min<size_t>(personRows_.size(), 1)), 0,
            person_.fieldCount()};
  }

  bool contractsExist() override {
    sql_ = contractsExistSql(variation_, empId_);
    return hasRows(sql_);
  }

  RecordRows contracts() override {
    sql_ = contractRowsSql(variation_, empId_);
    gfncOpenRecordset(sql_, contracts_);
    contractRows_ = allRows(contracts_);
    return {&contracts_, contractRows_, 0, contracts_.fieldCount()};
  }

  const std::string& sql() const override { return sql_; }

 private:
  std::string variation_;
  std::string empId_;
  std::string sql_;
  Recordset person_;
  Recordset contracts_;
  std::vector<long> personRows_;
  std::vector<long> contractRows_;
};

class CompanyReads final : public HesaRecordSource {
 public:
  CompanyReads(const std::string& variation, std::vector<std::string> empIds, bool looseIds)
      : variation_(variation), ids_(std::move(empIds)), looseIds_(looseIds), fallback_(variation) {}

  void employee(const std::string& empId) override {
    if (!loaded_) load();
    fallback_.employee(empId);
    const int32_t at = index_.find(empId);
    current_ = at < 0 ? nullptr : &filed_[static_cast<size_t>(at)];
  }

  bool personExists() override {
    if (!personsRead_) return (usingFallback_ = true, fallback_.personExists());
    return current_ != nullptr && current_->person >= 0;
  }

  RecordRows person() override {
    if (!personsRead_) return (usingFallback_ = true, fallback_.person());
    return {&persons_, std::span<const long>(&current_->person, 1), 0, persons_.fieldCount(), true};
  }

  bool contractsExist() override {
    if (!contractsRead_) return (usingFallback_ = true, fallback_.contractsExist());
    return current_ != nullptr && !current_->contracts.empty();
  }

  RecordRows contracts() override {
    if (!contractsRead_) return (usingFallback_ = true, fallback_.contracts());
    // EMP_ID, read last to file the rows, is not one of the checked columns.
    return {&contracts_, current_->contracts, 0, contracts_.fieldCount() - 1, true};
  }

  const std::string& sql() const override { return usingFallback_ ? fallback_.sql() : sql_; }

 private:
  struct Filed {
    std::string_view id;  // in ids_
    long person = -1;
    std::vector<long> contracts;
  };

  void load() {
    loaded_ = true;
    index_ = TextSlots(ids_.size());
    for (const std::string& id : ids_) {
      if (index_.insert(id, static_cast<int32_t>(filed_.size()))) filed_.push_back({id, -1, {}});
    }
    const std::string where = "WHERE VARIATION_ID = '" + sqlQuote(variation_) + "' ";

    sql_ = std::string("SELECT EMP_ID,") + kPersonColumns + " " + "FROM " + kPersonTable + " " + where +
           "ORDER BY EMP_ID";
    personsRead_ = gfncOpenRecordset(sql_, persons_);
    if (personsRead_) {
      fileRows(persons_, 0, [](Filed& f, long row) {
        if (f.person < 0) f.person = row;  // the first row, as the reference reads
      });
    }

    sql_ = std::string("SELECT SEQ_ID,") + kContractColumns + ",EMP_ID " + "FROM " + kContractTable + " " +
           where + "ORDER BY EMP_ID, SEQ_ID";
    contractsRead_ = gfncOpenRecordset(sql_, contracts_);
    if (contractsRead_) {
      fileRows(contracts_, contracts_.fieldCount() - 1, [](Filed& f, long row) { f.contracts.push_back(row); });
    }
  }

  // Files each row under the employee whose identifier its EMP_ID equals;
  // with looseIds_, a row that equals none exactly goes to the employees it
  // equals without case and trailing blanks.
  template <typename File>
  void fileRows(const Recordset& rs, int empColumn, File file) {
    if (!rs.isOpen() || empColumn < 0) return;
    std::unordered_map<std::string, std::vector<Filed*>> loose;
    std::string scratch;
    // Rows come ordered by EMP_ID: an employee's rows follow each other.
    std::string previous;
    int32_t previousAt = -1;
    for (long r = 0; r < rs.rowCount(); ++r) {
      if (rs.isDeleted(r)) continue;
      const std::string_view id = rs.textViewAt(r, empColumn, scratch);
      if (previousAt < 0 || id != previous) {
        previousAt = index_.find(id);
        previous.assign(id);
      }
      if (previousAt >= 0) {
        file(filed_[static_cast<size_t>(previousAt)], r);
        continue;
      }
      if (!looseIds_) continue;
      if (loose.empty()) {
        for (size_t at = 0; at < filed_.size(); ++at) loose[ucase(rtrim(filed_[at].id))].push_back(&filed_[at]);
      }
      auto it = loose.find(ucase(rtrim(id)));
      if (it == loose.end()) continue;
      for (Filed* f : it->second) file(*f, r);
    }
  }

  std::string variation_;
  std::vector<std::string> ids_;
  bool looseIds_;
  bool loaded_ = false;
  std::string sql_;
  Recordset persons_;
  Recordset contracts_;
  TextSlots index_;           // identifier (a view into ids_) -> its entry in filed_
  std::vector<Filed> filed_;
  const Filed* current_ = nullptr;
  bool personsRead_ = false;
  bool contractsRead_ = false;
  // A company statement that could not be read (the error component was
  // told and chose to go on) leaves every employee to the original
  // statements, so that one unreadable row affects its own employee only.
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
                                                   std::vector<std::string> empIds, bool looseIds) {
  if (reads == RecordReads::PerEmployee) return std::make_unique<PerEmployeeReads>(variation);
  return std::make_unique<CompanyReads>(variation, std::move(empIds), looseIds);
}

}  // namespace orvalis::reports::hesa
