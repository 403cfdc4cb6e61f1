#include "reports/check_lists/check_lists.h"

#include <algorithm>

#include "component/class_registry.h"
#include "data/data_functions.h"
#include "data/dictionary.h"
#include "data/sql_text.h"
#include "diary/rule_offset.h"
#include "query/access.h"
#include "query/sql_identifiers.h"
#include "reports/shared/blank_trimmed.h"
#include "reports/shared/query_driving.h"
#include "reports/shared/report_lookups.h"
#include "runtime/ado.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "runtime/flags.h"

namespace orvalis::reports {

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{"CheckLists", {"ExtractData"}, Handler::Block, newReportClass<CheckLists>};
  return info;
}

constexpr const char* kSource = "ORVALIS.CheckLists";

constexpr int kText = ado::adVarChar;
constexpr int kDate = ado::adDate;
constexpr int kWhole = ado::adInteger;

constexpr ResultField kFields[] = {
    {"EMP_ID", kText, 10},           {"SURNAME", kText, 40},         {"FORENAME", kText, 40},
    {"KNOWNAS", kText, 40},          {"DEPT_ID", kText, 10},         {"DEPARTMENT", kText, 60},
    {"MAN_ID", kText, 10},           {"MANAGER", kText, 60},         {"CHECKLIST_ID", kText, 10},
    {"CHECKLIST", kText, 60},        {"ITEM_SEQ_ID", kWhole, 4},     {"ITEM", kText, 60},
    {"RESPONSIBLE_ROLE", kText, 20}, {"BASE_DATE", kDate, 12},       {"DUE_DATE", kDate, 12},
    {"COMPLETED_DATE", kDate, 12},   {"COMPLETED_BY", kText, 10},    {"STATUS", kText, 12},
    {"DAYS_OVERDUE", kWhole, 4},     {"MANDATORY", kText, 3},        {"NOTE", kText, 80},
};
enum Out {
  oEmp, oSurname, oForename, oKnownAs, oDept, oDeptDesc, oMan, oManDesc, oList, oListDesc, oSeq, oItem, oRole,
  oBase, oDue, oCompleted, oBy, oStatus, oOverdue, oMandatory, oNote
};
// The driving columns (PNLEMPCHK).
enum In { cEmp, cList, cSeq, cDue, cCompleted, cBy, cStatus };
// The employee columns (PNLEMPMST); the base-date columns follow.
enum Emp { eEmp, eSurname, eForename, eKnownAs, eDept, eMan, eBaseFirst };

// The row of a recordset whose key column holds exactly a text (as an SQL
// join on it matches), asked for mostly in the recordset's own key order:
// such a key is the next row's and is found by stepping; any other is
// looked up in a hash index built the first time one is asked for.
class RowsInKeyOrder {
 public:
  RowsInKeyOrder(const Recordset& rs, int column) : rs_(rs), column_(column) {}

  // The row, or -1.
  long find(std::string_view key) {
    if (next_ < rs_.rowCount() && rs_.textViewAt(next_, column_, scratch_) == key) return next_++;
    if (!index_) {
      index_.emplace();
      index_->reserve(static_cast<size_t>(rs_.rowCount()));
      for (long r = 0; r < rs_.rowCount(); ++r) index_->emplace(rs_.textViewAt(r, column_, scratch_), r);
    }
    const auto it = index_->find(key);
    if (it == index_->end()) return -1;
    next_ = it->second + 1;
    return it->second;
  }

 private:
  struct Hash {  // not noexcept: the index keeps each key's hash
    using is_transparent = void;
    size_t operator()(std::string_view s) const { return std::hash<std::string_view>()(s); }
  };
  const Recordset& rs_;
  const int column_;
  long next_ = 0;
  std::string scratch_;
  std::optional<std::unordered_map<std::string, long, Hash, std::equal_to<>>> index_;
};

// A text's value when it is a plain number below 256 (digits only, no
// leading zero), else -1.
int smallNumber(std::string_view text) {
  if (text.empty() || text.size() > 3 || (text[0] == '0' && text.size() > 1)) return -1;
  int n = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return -1;
    n = n * 10 + (c - '0');
  }
  return n < 256 ? n : -1;
}

// STATUS_ID "C" (any case, blanks around).
bool isComplete(std::string_view status) {
  status = blankTrimmed(status);
  return status.size() == 1 && (status[0] == 'C' || status[0] == 'c');
}

}  // namespace

CheckLists::CheckLists() : ReportClass(published()) {}

void CheckLists::ListItems::add(std::string seq, Item item) {
  const int n = smallNumber(seq);
  const auto [at, added] = bySeq.emplace(std::move(seq), std::move(item));
  if (!added || n < 0) return;  // the first of two equal SEQ_IDs stands
  if (byNumber.size() <= static_cast<size_t>(n)) byNumber.resize(static_cast<size_t>(n) + 1);
  byNumber[static_cast<size_t>(n)] = &at->second;
}

const CheckLists::Item* CheckLists::ListItems::find(int64_t seq) const {
  if (seq >= 0 && seq < 256) return static_cast<size_t>(seq) < byNumber.size() ? byNumber[seq] : nullptr;
  return find(std::to_string(seq));
}

const CheckLists::Item* CheckLists::ListItems::find(std::string_view seq) const {
  if (const int n = smallNumber(seq); n >= 0) return static_cast<size_t>(n) < byNumber.size() ? byNumber[n] : nullptr;
  const auto it = bySeq.find(seq);
  return it == bySeq.end() ? nullptr : &it->second;
}

void registerCheckLists() { registerReportClass(published()); }

bool CheckLists::recognises(const std::string& method) const { return method == "CHECKLISTS"; }

void CheckLists::resetWorkingState() {
  ReportClass::resetWorkingState();
  checkListId_.clear();
  status_.clear();
  asAtText_.clear();
  overdueText_.clear();
  responsible_.clear();
  queryId_.clear();
  sql_.clear();
  empId_.clear();
  lists_.clear();
  items_.clear();
  masterColumns_.clear();
  postColumns_.clear();
  overdueOnly_ = false;
}

void CheckLists::readParameters(const std::string& method, const Parameters& parameters) {
  logExtractStart(kSource, method, parameters);
  checkListId_ = upperTrim(parameters.named("CHECKLIST_ID"));
  status_ = upperTrim(parameters.named("STATUS"));
  if (status_.empty()) status_ = "O";
  asAtText_ = trim(parameters.named("AS_AT_DATE"));
  overdueText_ = trim(parameters.named("OVERDUE_ONLY"));
  overdueOnly_ = flagIsTrue(overdueText_);
  responsible_ = upperTrim(parameters.named("RESPONSIBLE"));
  queryId_ = trim(parameters.named("QUERY_ID"));
  if (!recognises(method)) return;
  if (status_ != "O" && status_ != "C" && status_ != "A") {
    throw Error(err::kInvalidProcedureCall, className(),
                "STATUS \"" + status_ + "\" is not O (outstanding), C (complete) or A (all)");
  }
  asAt_ = dateParameter(className(), "AS_AT_DATE", asAtText_, DateTime::today().datePart());
}

void CheckLists::subLoadCheckLists() {
  const std::string company = "WHERE VARIATION_ID = '" + sqlQuote(gfncCompanyCode()) + "'";
  Recordset lists = readRows(className(), "SELECT CODE_ID, DESCRIPTION, BASE_DATE_FIELD FROM PNLCHKLST " + company);
  for (long r = 0; r < lists.rowCount(); ++r) {
    List l{trim(lists.textAt(r, 0)), trim(lists.textAt(r, 1)), upperTrim(lists.textAt(r, 2)), false, -1};
    // A base date is read only from a date column the dictionary knows, of
    // the employee or of the employee's main post.
    const size_t dot = l.baseField.find('.');
    if (isFieldName(l.baseField) && fieldDataType(l.baseField) == "D") {
      const std::string table = l.baseField.substr(0, dot), column = l.baseField.substr(dot + 1);
      std::vector<std::string>* columns = table == "PNLEMPMST" ? &masterColumns_
                                          : table == "PNLEMPHST" ? &postColumns_
                                                                 : nullptr;
      if (columns) {
        l.fromPost = columns == &postColumns_;
        auto at = std::find(columns->begin(), columns->end(), column);
        if (at == columns->end()) at = columns->insert(at, column);
        l.baseAt = static_cast<int>(at - columns->begin());
      }
    }
    lists_.emplace(ucase(l.code), std::move(l));
  }
  if (!checkListId_.empty() && !lists_.count(checkListId_)) {
    throw Error(err::kInvalidProcedureCall, className(), "CHECKLIST_ID \"" + checkListId_ + "\" is not a check-list");
  }
  Recordset items = readRows(className(),
                             "SELECT CHK_ID, SEQ_ID, DESCRIPTION, OFFSET_NUMBER, OFFSET_UNIT, RESPONSIBLE_ROLE, "
                             "MANDATORY_YN FROM PNLCHKITM " + company);
  for (long r = 0; r < items.rowCount(); ++r) {
    Item it;
    it.description = trim(items.textAt(r, 2));
    it.number = static_cast<long>(cellNumber(items.at(r, 3)).value_or(0));
    it.unit = trim(items.textAt(r, 4));
    it.role = trim(items.textAt(r, 5));
    it.roleKey = ucase(it.role);
    it.mandatory = flagIsYes(trim(items.textAt(r, 6)));
    items_[upperTrim(items.textAt(r, 0))].add(trim(items.textAt(r, 1)), std::move(it));
  }
}

std::string CheckLists::drivingSql(const std::string&) {
  subLoadCheckLists();
  // The items alone: the employees' columns, and the access restrictions
  // that decide whose items are seen, come from one read of PNLEMPMST in
  // the base loop.
  sql_ = "SELECT EMP_ID, CHK_ID, ITEM_SEQ_ID, DUE_DATE, COMPLETED_DATE, COMPLETED_BY, STATUS_ID FROM PNLEMPCHK WHERE " +
         itemsCondition() + " ORDER BY EMP_ID, CHK_ID, ITEM_SEQ_ID";
  return sql_;
}

std::string CheckLists::itemsCondition() const {
  std::string where = "PNLEMPCHK.VARIATION_ID = '" + sqlQuote(gfncCompanyCode()) + "'";
  if (!checkListId_.empty()) where += " AND PNLEMPCHK.CHK_ID = '" + sqlQuote(checkListId_) + "'";
  return where;
}

bool CheckLists::createBaseRecordset(const std::string&, Recordset& rsData) {
  return layOutResult(rsData, kFields);
}

bool CheckLists::baseLoop(const std::string& method, Recordset& rsData, Recordset& driving) {
  return fncBaseLoop(method, rsData, driving);
}

void CheckLists::dumpVariables(Dump& dump) const {
  dump.item("STRSQL = ", sql_)
      .item("STRCHECKLIST_ID:", checkListId_)
      .item("STRSTATUS:", status_)
      .item("STRAS_AT_DATE:", asAtText_)
      .item("STROVERDUE_ONLY:", overdueText_)
      .item("STRRESPONSIBLE:", responsible_)
      .item("STRQUERY_ID:", queryId_);
}

// The employees with items of the selection whose rows the user may see
// (the access restrictions on PNLEMPMST), with their base-date columns, in
// EMP_ID order.
Recordset CheckLists::readEmployees() const {
  std::string selection;
  gsubAddSelection("PNLEMPMST", "", selection, "Y");
  selection = trim(selection);
  std::string sql = "SELECT PNLEMPMST.EMP_ID, PNLEMPMST.SURNAME, PNLEMPMST.FORENAME, PNLEMPMST.KNOWNAS, "
                    "PNLEMPMST.DEPT_ID, PNLEMPMST.MAN_ID";
  for (const std::string& c : masterColumns_) sql += ", PNLEMPMST." + c;
  sql += " FROM PNLEMPMST WHERE PNLEMPMST.VARIATION_ID = '" + sqlQuote(gfncCompanyCode()) +
         "' AND PNLEMPMST.EMP_ID IN (SELECT PNLEMPCHK.EMP_ID FROM PNLEMPCHK WHERE " + itemsCondition() + ")";
  if (!selection.empty()) sql += " AND (" + selection + ")";
  return readRows(className(), sql + " ORDER BY PNLEMPMST.EMP_ID");
}

// The main current post's base-date columns of the employees with items of
// the selection, by EMP_ID (trimmed, upper-cased).
std::unordered_map<std::string, std::vector<std::optional<DateTime>>> CheckLists::readPostDates() const {
  std::string sql = "SELECT EMP_ID, SEQ_ID";
  for (const std::string& c : postColumns_) sql += ", " + c;
  sql += " FROM PNLEMPHST WHERE VARIATION_ID = '" + sqlQuote(gfncCompanyCode()) +
         "' AND STATUS_ID = 'R' AND EMP_ID IN (SELECT PNLEMPCHK.EMP_ID FROM PNLEMPCHK WHERE " + itemsCondition() +
         ") ORDER BY EMP_ID, SEQ_ID";
  const Recordset posts = readRows(className(), sql);
  std::unordered_map<std::string, std::vector<std::optional<DateTime>>> dates;
  for (long r = 0; r < posts.rowCount(); ++r) {
    std::vector<std::optional<DateTime>>& post = dates[upperTrim(posts.textAt(r, 0))];
    post.clear();  // the highest SEQ_ID comes last
    for (size_t c = 0; c < postColumns_.size(); ++c) post.push_back(cellDate(posts.at(r, static_cast<int>(c) + 2)));
  }
  return dates;
}

bool CheckLists::fncBaseLoop(const std::string& method, Recordset& rsData, Recordset& driving) {
  bool result = false;
  Procedure proc(Handler::Block, componentNames().reports, className(), "fncBaseLoop");
  proc.variables([&] {
    return Dump().item("STRMETHODNAME:", method).item("STRSQL = ", sql_).item("STREMP_ID:", empId_).text();
  });
  proc.run([&](Steps& step) {
    step(10, [&] {
      const CodeDescriptions departments(className(), "PNLDEPT");
      const CodeDescriptions managers(className(), "PNLMAN");
      const QueryEmployees selected(className(), queryId_);
      // An item's employee is found as a join on EMP_ID finds it: the same
      // text. An item whose employee is not among them is not shown. Both
      // reads are in EMP_ID order, so most are found by stepping.
      const Recordset employees = readEmployees();
      RowsInKeyOrder employeeRow(employees, eEmp);
      std::string scratch;
      // The main current posts are read when a row first needs one.
      std::optional<std::unordered_map<std::string, std::vector<std::optional<DateTime>>>> postDates;

      // The rows come in employee and check-list order: the lookups of the
      // row before are kept while its keys repeat.
      std::string listScratch, seqScratch;
      std::string lastEmp, lastList, lastDept, lastMan;
      const ListItems* listItems = nullptr;
      bool empLooked = false, listLooked = false, postLooked = false;
      long emp = -1;  // the employee's row, -1 when not shown
      const std::vector<std::optional<DateTime>>* post = nullptr;
      auto l = lists_.end();
      std::string listUpper;
      std::string_view surname, forename, knownAs, dept, man;
      std::string empScratch[5];
      const std::string* deptDesc = nullptr;
      const std::string* manDesc = nullptr;
      rsData.reserve(driving.rowCount());
      for (long r = 0; r < driving.rowCount(); ++r) {
        const std::string_view empKey = driving.textViewAt(r, cEmp, scratch);
        if (!empLooked || empKey != lastEmp) {
          empLooked = true;
          lastEmp.assign(empKey);
          empId_.assign(blankTrimmed(empKey));
          emp = employeeRow.find(empKey);
          if (emp >= 0) {
            result = true;  // the run has rows, whichever the filters keep
            if (!selected.includes(empId_)) emp = -1;
          }
          if (emp >= 0) {
            surname = blankTrimmed(employees.textViewAt(emp, eSurname, empScratch[0]));
            forename = blankTrimmed(employees.textViewAt(emp, eForename, empScratch[1]));
            knownAs = blankTrimmed(employees.textViewAt(emp, eKnownAs, empScratch[2]));
            dept = blankTrimmed(employees.textViewAt(emp, eDept, empScratch[3]));
            man = blankTrimmed(employees.textViewAt(emp, eMan, empScratch[4]));
            if (!deptDesc || dept != lastDept) {
              lastDept.assign(dept);
              deptDesc = &departments.describe(lastDept);
            }
            if (!manDesc || man != lastMan) {
              lastMan.assign(man);
              manDesc = &managers.describe(lastMan);
            }
          }
          postLooked = false;
        }
        if (emp < 0) continue;
        const std::string_view listId = blankTrimmed(driving.textViewAt(r, cList, listScratch));
        // ITEM_SEQ_ID read as a whole number is found by it, as its text
        // would find it.
        const Value seqValue = driving.at(r, cSeq);
        const bool seqWhole = seqValue.kind() == Value::Kind::Integer;
        const auto seqText = [&] { return blankTrimmed(driving.textViewAt(r, cSeq, seqScratch)); };
        if (!listLooked || listId != lastList) {
          listLooked = true;
          lastList.assign(listId);
          listUpper = ucase(listId);
          l = lists_.find(listUpper);
          const auto i = items_.find(listUpper);
          listItems = i == items_.end() ? nullptr : &i->second;
        }
        const Item* item = !listItems ? nullptr
                           : seqWhole     ? listItems->find(seqValue.asInteger())
                                          : listItems->find(seqText());
        if (!responsible_.empty() && (!item || item->roleKey != responsible_)) continue;

        std::string note;
        std::optional<DateTime> base;
        if (l == lists_.end()) {
          note = "Check-list " + std::string(listId) + " does not exist";
        } else if (l->second.baseAt < 0) {
          note = "Base date field \"" + l->second.baseField + "\" is not a date of the employee or the post";
        } else {
          if (!l->second.fromPost) {
            base = cellDate(employees.at(emp, eBaseFirst + l->second.baseAt));
          } else {
            if (!postLooked) {
              if (!postDates) postDates = readPostDates();
              const auto p = postDates->find(upperTrim(empId_));
              post = p == postDates->end() ? nullptr : &p->second;
              postLooked = true;
            }
            if (post) base = (*post)[static_cast<size_t>(l->second.baseAt)];
          }
          if (!base) note = "No base date (" + l->second.baseField + ")";
        }
        if (!item && note.empty()) note = "Item " + std::string(seqText()) + " of check-list " + std::string(listId) + " does not exist";
        std::optional<DateTime> due = cellDate(driving.at(r, cDue));
        if (!due && base && item) {
          due = diary::ruleOffsetDate(*base, item->number, item->unit);
          if (!due) note = "Offset unit \"" + item->unit + "\" is not D, W, M or Y";
        }
        const auto completed = cellDate(driving.at(r, cCompleted));
        const bool complete = completed ? *completed <= asAt_ : isComplete(driving.textViewAt(r, cStatus, scratch));
        if ((status_ == "O" && complete) || (status_ == "C" && !complete)) continue;
        std::optional<long> overdue;
        if (due) {
          const DateTime until = complete && completed ? *completed : asAt_;
          overdue = std::max<long>(0, static_cast<long>(until.days() - due->days()));
          if (complete && !completed) overdue = 0;
        }
        if (overdueOnly_ && (!overdue || *overdue <= 0)) continue;

        // A new row's cells are Null until written.
        rsData.addNew();
        const long out = rsData.currentRow();
        rsData.setTextAt(out, oEmp, empId_);
        rsData.setTextAt(out, oSurname, surname);
        rsData.setTextAt(out, oForename, forename);
        rsData.setTextAt(out, oKnownAs, knownAs);
        rsData.setTextAt(out, oDept, lastDept);
        rsData.setTextAt(out, oDeptDesc, *deptDesc);
        rsData.setTextAt(out, oMan, lastMan);
        rsData.setTextAt(out, oManDesc, *manDesc);
        rsData.setTextAt(out, oList, listId);
        rsData.setTextAt(out, oListDesc, l == lists_.end() ? std::string_view() : l->second.description);
        rsData.setAt(out, oSeq, Value(static_cast<long>(cellNumber(seqValue).value_or(0))));
        if (item) {
          rsData.setTextAt(out, oItem, item->description);
          rsData.setTextAt(out, oRole, item->role);
        } else {
          rsData.setTextAt(out, oItem, {});
          rsData.setTextAt(out, oRole, {});
        }
        if (base) rsData.setAt(out, oBase, Value(*base));
        if (due) rsData.setAt(out, oDue, Value(*due));
        if (completed) rsData.setAt(out, oCompleted, Value(*completed));
        rsData.setTextAt(out, oBy, blankTrimmed(driving.textViewAt(r, cBy, scratch)));
        rsData.setTextAt(out, oStatus, complete ? "Complete" : "Outstanding");
        if (overdue) rsData.setAt(out, oOverdue, Value(*overdue));
        rsData.setTextAt(out, oMandatory, item && item->mandatory ? "Yes" : "No");
        rsData.setTextAt(out, oNote, note);
      }
      if (rsData.recordCount() > 0) rsData.moveFirst();
    });
  });
  return result;
}

}  // namespace orvalis::reports
