// The table writers of the demo generator, one group per file:
//   demo_reference_tables.cc  a company's code tables, jobs, grades, scales,
//                             working patterns, structures, control
//                             parameters and payroll calendar and batches;
//   demo_people_tables.cc     a company's employees and everything that
//                             hangs off them;
//   demo_shared_tables.cc     what the companies share: bank holidays,
//                             users and rights, stored queries and notes.
// Internal to the generator; single-threaded.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "demo/demo_database.h"
#include "demo/demo_model.h"
#include "demo/demo_writer.h"

namespace orvalis::demo {

// One period of a payroll calendar.
struct PayPeriod {
  std::string periodId;  // "YYYYPP"
  int year = 0, period = 0;
  int64_t start = 0, end = 0, payDate = 0;
  bool current = false;
};

struct PayTemplate {
  const char* code;
  const char* description;
  const char* frequency;
  int periodsPerYear;
};
const std::vector<PayTemplate>& payTemplates();  // "MTH" monthly, "WK" weekly

// The periods of a template for the pay years around the as-of date.
std::vector<PayPeriod> payPeriods(const Context& ctx, const PayTemplate& t);

// The full-time salary of a pay spine point in the year from 1 April.
double scaleValue(int point, int year);

// Weekday names, Monday = 1.
const char* weekdayName(int weekday);

void writeReferenceTables(Writer& w, const Context& ctx, const Company& co);
void writePeopleTables(Writer& w, const Context& ctx, const Company& co, DemoDefects& defects);
void writeSharedTables(Writer& w, Context& ctx, const std::vector<Company>& companies);
// Course types, courses and training events (demo_training_tables.cc).
void writeTrainingTables(Writer& w, const Context& ctx, const Company& co);
// Check-list templates, items and the employees' items (demo_checklists.cc).
void writeCheckLists(Writer& w, const Context& ctx, const Company& co);

// The users the shared tables create (USER_ID), for the audit rows.
const std::vector<const char*>& demoUserIds();

// Audit rows written for a company (its "AUDITSEQID" counter).
inline long auditRowCount(const Company& co) { return co.auditRows; }

// Note numbers 1 to kSharedNotes belong to the stored queries and form
// notes; the posts' notes are numbered after them.
inline constexpr int kSharedNotes = 100;

}  // namespace orvalis::demo
