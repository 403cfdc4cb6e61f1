// CheckLists ("ORVALIS.CheckLists"): the check-list report.
//
// "CHECKLISTS": one row per employee check-list item (PNLEMPCHK) of the
// selection, in employee, check-list and item order. Parameters by name:
//   CHECKLIST_ID  one check-list (PNLCHKLST.CODE_ID; one that does not
//                 exist is an error); all when empty
//   STATUS        "O" outstanding (default), "C" complete, "A" all;
//                 anything else is an error
//   AS_AT_DATE    the day the status and the days overdue are judged on,
//                 default today
//   OVERDUE_ONLY  "Y" (or "T", "1"; off unless set) keeps the rows with
//                 DAYS_OVERDUE above 0
//   RESPONSIBLE   one responsible role (PNLCHKITM.RESPONSIBLE_ROLE)
//   QUERY_ID      a stored query's employees
// and the user's access restrictions on PNLEMPMST.
//
// Our rules:
//   - BASE_DATE is the check-list's BASE_DATE_FIELD for the employee: a
//     date column of PNLEMPMST, or of PNLEMPHST read from the employee's
//     main current post (STATUS_ID "R", the highest SEQ_ID). Another name,
//     or one the data dictionary does not know as a date, gives no base
//     date and a NOTE.
//   - DUE_DATE is the row's own DUE_DATE; when it has none, the base date
//     plus the item's OFFSET_NUMBER OFFSET_UNIT, counted as the diary rules
//     count offsets (diary/rule_offset.h: months clip to the month's end).
//   - An item is complete as at AS_AT_DATE when its COMPLETED_DATE is on or
//     before that day, or when it has no COMPLETED_DATE and STATUS_ID "C";
//     an item completed later was still outstanding then. STATUS is
//     "Complete" or "Outstanding".
//   - DAYS_OVERDUE: days from DUE_DATE to AS_AT_DATE for an outstanding
//     item, to COMPLETED_DATE for a complete one (late completion); 0 when
//     not late; Null without a due date.
//   - MANDATORY is "Yes" or "No" (PNLCHKITM.MANDATORY_YN as a flag).
//
// Errors are raised on in the error block (the block handler: the host
// sees every failure). An instance keeps its lookups for one call;
// single-threaded.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "component/report_class.h"
#include "reports/shared/text_hash.h"
#include "runtime/date_time.h"

namespace orvalis::reports {

class CheckLists final : public ReportClass {
 public:
  CheckLists();

  const std::string& lastDrivingSql() const { return sql_; }

 protected:
  void resetWorkingState() override;
  void readParameters(const std::string& method, const Parameters& parameters) override;
  bool recognises(const std::string& method) const override;
  std::string drivingSql(const std::string& method) override;
  bool createBaseRecordset(const std::string& method, Recordset& rsData) override;
  bool baseLoop(const std::string& method, Recordset& rsData, Recordset& driving) override;
  void dumpVariables(Dump& dump) const override;

 private:
  struct List {
    std::string code, description, baseField;
    bool fromPost = false;  // the base date is a PNLEMPHST column, else a PNLEMPMST one
    int baseAt = -1;        // its place in masterColumns_ or postColumns_; -1 when it cannot be read
  };
  struct Item {
    std::string description, unit, role, roleKey;  // roleKey: role upper-cased
    long number = 0;
    bool mandatory = false;
  };

  void subLoadCheckLists();
  // PNLEMPCHK's condition: the company, and the check-list when one is asked for.
  std::string itemsCondition() const;
  Recordset readEmployees() const;
  std::unordered_map<std::string, std::vector<std::optional<DateTime>>> readPostDates() const;
  bool fncBaseLoop(const std::string& method, Recordset& rsData, Recordset& driving);

  std::string checkListId_, status_, asAtText_, overdueText_, responsible_, queryId_;
  bool overdueOnly_ = false;
  DateTime asAt_;
  std::string sql_, empId_;
  std::unordered_map<std::string, List> lists_;
  // A check-list's items by their trimmed SEQ_ID text; those written as a
  // small plain number ("7", not "07") also by that number, found without
  // hashing.
  struct ListItems {
    std::unordered_map<std::string, Item, TextHash, std::equal_to<>> bySeq;
    std::vector<const Item*> byNumber;
    void add(std::string seq, Item item);
    const Item* find(std::string_view seq) const;
    const Item* find(int64_t seq) const;  // as find(its decimal text)
  };
  std::unordered_map<std::string, ListItems> items_;  // by upper-cased CHK_ID
  std::vector<std::string> masterColumns_;          // PNLEMPMST base columns, read with the employees
  std::vector<std::string> postColumns_;            // PNLEMPHST base columns
};

// Adds the class to the registry (reports/report_classes.h).
void registerCheckLists();

}  // namespace orvalis::reports
