// Whole-time equivalence: the share of a full-time salary an employment is
// paid, by the site's rules in PNLWTE (keyed by CODE_ID for the company).
//
// gfncWTE takes one keyed text ("WTE_ID", "EMP_ID", "SALARY", "FACTOR",
// "HOURS", "WEEKS"; runtime/keyed_text.h), applies the rule "WTE_ID" and
// writes "FACTOR" (as "#0.00000") and "SALARY" back into it. "SALARY",
// "HOURS" and "WEEKS" that are empty or not numbers count as 0. An empty
// "WTE_ID" computes nothing; an id with no PNLWTE row has no operator, so the
// factor is 0 and the salary stays as given.
//
// Factor by operator: "P" WTE_FACTOR / 100; "H" hours / WTE_FACTOR; "W"
// weeks / WTE_PERCENT; "C" weeks x hours / (WTE_FACTOR x WTE_PERCENT) (when
// weeks or hours is 0 the text is left exactly as it came and the function
// returns 0); "*" WTE_FACTOR itself; "E" the numeric "FACTOR" of the text.
// A zero divisor leaves the factor 0. Any other operator, "/" included,
// leaves the factor 0 and the salary untouched: there is deliberately no
// dividing rule. A non-zero factor and salary give salary x factor.
//
// Rounding of the salary (our rules, what a payroll officer expects):
//   - WTE_DIVISIBLE d non-zero (its size |d| is the step): the salary is
//     divided by the step; "U" takes the next whole number up (ceiling),
//     "D" the whole number below (floor), any other rounding the nearest
//     whole number, halves away from zero; the whole number is multiplied
//     back by the step. A quotient within 1e-9 of a whole number counts as
//     that number, so 20000 / 100 never rounds up to 201 by binary noise.
//   - then always: to pence, halves away from zero, written with the
//     site's money format (control parameter ADM "MONEYFMT", default
//     "#0") followed by ".00". A format with thousands separators
//     ("#,##0") gives "10,000.00", which still reads back as a number.
// The function returns the salary as written (in pence).
//
// Errors go to the error component (module HRPNLFunctions). Reads through
// the current environment; single-threaded.
#pragma once

#include <string>

namespace orvalis::payroll {

// One row of PNLWTE, operator and rounding trimmed and upper-cased.
struct WteRule {
  std::string op;
  std::string rounding;
  double factor = 0;
  double percent = 0;
  double divisible = 0;
};

// What one computation starts from and ends with.
struct WteCalculation {
  double salary = 0;
  double hours = 0;
  double weeks = 0;
  std::string factorText;  // "FACTOR" as given (used by "E")
  // Results
  double factor = 0;
  bool ended = false;  // "C" with weeks or hours 0: nothing written back
};

// The factor and salary of one rule (no database, no money format: the
// salary is rounded by the step and to pence). Sets calc.factor,
// calc.salary and calc.ended.
void applyWteRule(const WteRule& rule, WteCalculation& calc);

// The rounding of a salary to the rule's step (see above), then to pence.
double roundSalary(double salary, double divisible, const std::string& rounding);

// The PNLWTE row of a rule for the company, or nothing.
struct WteRuleRow {
  bool found = false;
  WteRule rule;
};
WteRuleRow loadWteRule(const std::string& wteId);
std::string wteRuleSql(const std::string& companyCode, const std::string& wteId);

// The site's money format text ("#0" unless set) followed by ".00".
std::string moneyFormat();

// Applies the rule "WTE_ID" of strData and writes FACTOR and SALARY back;
// returns the salary.
double gfncWTE(std::string& strData);

}  // namespace orvalis::payroll
