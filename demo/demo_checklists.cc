// Check-lists: the joiner and leaver templates, their items and each
// recent joiner's and leaver's items, done on time, late or outstanding.
//
// Drawn from a stream of their own (tag kCheckLists per employee), so the
// other tables come out the same with or without them.

#include <algorithm>
#include <optional>
#include <iterator>

#include "demo/demo_random.h"
#include "demo/demo_tables.h"
#include "runtime/basic_date.h"

namespace orvalis::demo {

namespace {

constexpr uint64_t kCheckLists = 40;

struct Item {
  const char* description;
  int number;
  const char* unit;
  const char* role;
  bool mandatory;
};

struct CheckList {
  const char* code;
  const char* description;
  const char* trigger;
  const char* baseField;
  std::vector<Item> items;
};

const std::vector<CheckList>& checkLists() {
  static const std::vector<CheckList> lists = {
      {"JOIN", "New starter", "J", "PNLEMPMST.DATE_START",
       {{"Right to work checked", 0, "D", "HR", true},
        {"Contract issued", -7, "D", "HR", true},
        {"IT account set up", 0, "D", "IT", false},
        {"Induction completed", 2, "W", "MANAGER", true},
        {"Probation review", 3, "M", "MANAGER", true},
        {"Probation confirmed", 6, "M", "HR", true}}},
      {"LEAVE", "Leaver", "L", "PNLEMPMST.DATE_LEFT",
       {{"Exit interview", -1, "W", "HR", false},
        {"Equipment returned", 0, "D", "MANAGER", true},
        {"System access removed", 1, "D", "IT", true},
        {"Final pay and P45", 1, "M", "PAYROLL", true}}},
      {"POST", "Change of post", "P", "PNLEMPHST.START_DATE",
       {{"New contract letter", 0, "D", "HR", true}, {"Salary change notified", 1, "M", "PAYROLL", true}}},
  };
  return lists;
}

// The item's date from the base (the report counts the same way).
int64_t offsetDay(int64_t base, const Item& it) {
  const DateTime b = DateTime::fromDays(base);
  switch (it.unit[0]) {
    case 'W': return base + 7 * it.number;
    case 'M': return dateAdd("m", it.number, b).days();
    default: return base + it.number;
  }
}

// Days an item of an employee is done after (negative: before) its due
// date, or nothing while it is outstanding on the as-of date.
std::optional<int64_t> completion(Random& r, int64_t due, int64_t asOf) {
  int64_t after = 0;
  if (due > asOf) {
    if (!r.chance(0.15)) return std::nullopt;
    after = -r.between(1, 10);  // done early
  } else {
    const int roll = r.below(100);
    if (roll >= 85) return std::nullopt;                  // outstanding
    after = roll < 60 ? -r.between(0, 5) : r.between(1, 40);  // on time, late
  }
  if (due + after > asOf) return std::nullopt;  // not done yet
  return after;
}

}  // namespace

void writeCheckLists(Writer& w, const Context& ctx, const Company& co) {
  const std::vector<CheckList>& lists = checkLists();
  w.rows("PNLCHKLST", {"VARIATION_ID", "CODE_ID", "DESCRIPTION", "TRIGGER_ID", "BASE_DATE_FIELD"}, lists.size(),
         [&](size_t i, Row& r) {
           r << co.code << lists[i].code << lists[i].description << lists[i].trigger << lists[i].baseField;
         });
  struct Ref {
    size_t list, item;
  };
  std::vector<Ref> items;
  for (size_t l = 0; l < lists.size(); ++l) {
    for (size_t k = 0; k < lists[l].items.size(); ++k) items.push_back({l, k});
  }
  w.rows("PNLCHKITM",
         {"VARIATION_ID", "CHK_ID", "SEQ_ID", "DESCRIPTION", "OFFSET_NUMBER", "OFFSET_UNIT", "RESPONSIBLE_ROLE",
          "MANDATORY_YN"},
         items.size(), [&](size_t i, Row& r) {
           const Item& it = lists[items[i].list].items[items[i].item];
           r << co.code << lists[items[i].list].code << Value(static_cast<long>(items[i].item + 1)) << it.description
             << Value(static_cast<long>(it.number)) << it.unit << it.role << (it.mandatory ? "Y" : "N");
         });

  // Joiners of the last eighteen months and leavers of the last year get
  // their list; one item in eight carries a due date of its own.
  size_t e = 0, k = 0;
  Random r(0);
  int64_t base = 0;
  const CheckList* list = nullptr;
  const auto nextList = [&]() -> bool {
    while (e < co.employees.size()) {
      const Employee& emp = co.employees[e];
      const bool joiner = emp.start > ctx.asOf - 548 && emp.start <= ctx.asOf;
      const bool leaver = !emp.current() && emp.left > ctx.asOf - 365 && emp.left <= ctx.asOf;
      if (list == nullptr && joiner) {
        list = &lists[0];
        base = emp.start;
        r = Random::derive(ctx.seed, static_cast<uint64_t>(co.index) + 1, static_cast<uint64_t>(e) + 1, kCheckLists);
        return true;
      }
      if ((list == nullptr || list == &lists[0]) && leaver) {
        if (list == nullptr) {
          r = Random::derive(ctx.seed, static_cast<uint64_t>(co.index) + 1, static_cast<uint64_t>(e) + 1,
                             kCheckLists);
        }
        list = &lists[1];
        base = emp.left;
        return true;
      }
      list = nullptr;
      ++e;
    }
    return false;
  };
  bool more = nextList();
  w.stream("PNLEMPCHK",
           {"VARIATION_ID", "EMP_ID", "CHK_ID", "ITEM_SEQ_ID", "DUE_DATE", "COMPLETED_DATE", "COMPLETED_BY",
            "STATUS_ID"},
           [&](Row& row) {
             if (!more) return false;
             const Item& it = list->items[k];
             int64_t due = offsetDay(base, it);
             const bool own = r.below(8) == 0;
             if (own) due += r.between(1, 14);
             const auto done = completion(r, due, ctx.asOf);
             // A few completed items were never marked complete.
             const bool marked = done && r.below(10) != 0;
             const auto& users = demoUserIds();
             row << co.code << employeeId(co.employees[e].number) << list->code << Value(static_cast<long>(k + 1))
                 << (own ? dateValue(due) : Value::null()) << (done ? dateValue(due + *done) : Value::null())
                 << (done ? Value(users[static_cast<size_t>(r.below(static_cast<int>(users.size())))]) : Value::null())
                 << (marked ? "C" : "O");
             if (++k == list->items.size()) {
               k = 0;
               more = nextList();
             }
             return true;
           });
}

}  // namespace orvalis::demo
