#include "payroll/wte.h"

#include <cmath>

#include "component/errors/error_handling.h"
#include "data/control.h"
#include "data/data_functions.h"
#include "data/sql_text.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/keyed_text.h"
#include "runtime/value.h"

namespace orvalis::payroll {

namespace {

// A keyed number: empty or non-numeric texts are 0.
double numberOf(const std::string& text) { return parseNumber(text).value_or(0.0); }

// Pence, halves away from zero, the amount read at 15 significant digits
// (2.675 is 2.68) as the money format itself rounds.
double toPence(double amount) { return parseNumber(format(Value(amount), "0.00")).value_or(0.0); }

// The whole number of steps under the rounding rule.
double wholeSteps(double quotient, const std::string& rounding) {
  const double nearest = std::round(quotient);  // halves away from zero
  if (std::fabs(quotient - nearest) <= 1e-9 * std::max(1.0, std::fabs(quotient))) return nearest;
  if (rounding == "U") return std::ceil(quotient);
  if (rounding == "D") return std::floor(quotient);
  return nearest;
}

}  // namespace

double roundSalary(double salary, double divisible, const std::string& rounding) {
  if (divisible != 0) {
    const double step = std::fabs(divisible);
    salary = wholeSteps(salary / step, rounding) * step;
  }
  return toPence(salary);
}

void applyWteRule(const WteRule& rule, WteCalculation& calc) {
  calc.factor = 0;
  calc.ended = false;
  const std::string& op = rule.op;
  if (op == "P") {
    calc.factor = rule.factor / 100;
  } else if (op == "H") {
    if (rule.factor != 0) calc.factor = calc.hours / rule.factor;
  } else if (op == "W") {
    if (rule.percent != 0) calc.factor = calc.weeks / rule.percent;
  } else if (op == "C") {
    if (calc.weeks == 0 || calc.hours == 0) {
      calc.ended = true;
      return;
    }
    if (rule.factor != 0 && rule.percent != 0) calc.factor = (calc.weeks * calc.hours) / (rule.factor * rule.percent);
  } else if (op == "*") {
    calc.factor = rule.factor;
  } else if (op == "E") {
    if (auto explicitFactor = parseNumber(calc.factorText)) calc.factor = *explicitFactor;
  }
  // "/" and anything else: no factor, the salary stays as given.
  static const std::string kApplied = "HWCPE*";
  if (calc.salary != 0 && op.size() == 1 && kApplied.find(op) != std::string::npos && calc.factor != 0) {
    calc.salary *= calc.factor;
  }
  calc.salary = roundSalary(calc.salary, rule.divisible, rule.rounding);
}

std::string wteRuleSql(const std::string& companyCode, const std::string& wteId) {
  return "SELECT WTE_OPERATOR, WTE_ROUNDING, WTE_FACTOR, WTE_PERCENT, WTE_DIVISIBLE FROM PNLWTE "
         "WHERE VARIATION_ID = '" + sqlQuote(companyCode) + "' AND CODE_ID = '" + sqlQuote(wteId) + "'";
}

WteRuleRow loadWteRule(const std::string& wteId) {
  WteRuleRow row;
  Recordset rs;
  if (!gfncOpenRecordset(wteRuleSql(gfncCompanyCode(), wteId), rs) || rs.eof()) return row;
  row.found = true;
  row.rule.op = upperTrim(rs.get(0).text());
  row.rule.rounding = upperTrim(rs.get(1).text());
  row.rule.factor = numberOf(rs.get(2).text());
  row.rule.percent = numberOf(rs.get(3).text());
  row.rule.divisible = numberOf(rs.get(4).text());
  return row;
}

std::string moneyFormat() {
  std::string f = trim(gfncGetControlValue("", "ADM", "MONEYFMT"));
  if (f.empty()) f = "#0";
  return f + ".00";
}

double gfncWTE(std::string& strData) {
  double result = 0;
  std::string strWTE_ID, strSEQ_ID, strEMP_ID, strOperator, strRounding, strOffset, strTest;
  bool bolOK = false;
  Procedure proc(Handler::ErrorComponent, componentNames().personnelUi, "HRPNLFunctions", "gfncWTE");
  proc.parameters([&] { return Dump().item("STRDATA:", strData).text(); });
  proc.variables([&] {
    return Dump()
        .item("STRWTE_ID = ", strWTE_ID)
        .item("STRSEQ_ID = ", strSEQ_ID)
        .item("STREMP_ID = ", strEMP_ID)
        .item("STROPERATOR = ", strOperator)
        .item("STRROUNDING = ", strRounding)
        .item("STROFFSET = ", strOffset)
        .item("BOLOK = ", bolOK)
        .item("STRTEST = ", strTest)
        .text();
  });
  proc.run([&](Steps& step) {
    step(10, [&] {
      strWTE_ID = getKeyedValue(strData, "WTE_ID");
      strEMP_ID = getKeyedValue(strData, "EMP_ID");
    });
    if (strWTE_ID.empty()) return;
    WteCalculation calc;
    WteRule rule;
    step(20, [&] {
      calc.salary = numberOf(getKeyedValue(strData, "SALARY"));
      calc.factorText = ucase(getKeyedValue(strData, "FACTOR"));
      calc.hours = numberOf(getKeyedValue(strData, "HOURS"));
      calc.weeks = numberOf(getKeyedValue(strData, "WEEKS"));
      WteRuleRow row = loadWteRule(strWTE_ID);
      bolOK = row.found;
      rule = row.rule;
      strOperator = rule.op;
      strRounding = rule.rounding;
      strOffset = format(Value(rule.divisible), "");
    });
    step(30, [&] { applyWteRule(rule, calc); });
    if (calc.ended) return;
    step(40, [&] {
      strTest = format(Value(calc.salary), moneyFormat());
      setKeyedValue(strData, "FACTOR", format(Value(calc.factor), "#0.00000"));
      setKeyedValue(strData, "SALARY", strTest);
      result = calc.salary;
    });
  });
  return result;
}

}  // namespace orvalis::payroll
