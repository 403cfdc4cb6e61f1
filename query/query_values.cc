#include "query/query_values.h"

#include <cctype>

#include "component/errors/debug_log.h"
#include "data/dialect.h"
#include "data/dialect_functions.h"
#include "data/hr_environment.h"
#include "data/sql_text.h"
#include "payroll/payroll_calendar.h"
#include "query/date_variables.h"
#include "query/filter_variable.h"
#include "runtime/keyed_text.h"
#include "query/query_module.h"
#include "query/value_scaling.h"
#include "runtime/basic_date.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"

namespace orvalis {

namespace {

constexpr const char* kSource = "HRGridControl";

// Strips one pair of "<" ">" or "[" "]" around a variable.
std::string withoutBrackets(const std::string& value) {
  std::string v = trim(value);
  if (v.size() >= 2 && ((v.front() == '<' && v.back() == '>') || (v.front() == '[' && v.back() == ']'))) {
    return trim(v.substr(1, v.size() - 2));
  }
  return v;
}

// The names the payroll calendar answers.
bool isPayrollName(const std::string& name) {
  static const char* const kNames[] = {
      "THIS_PERIOD",     "THIS_YEAR",       "THIS_PERIOD_ID",    "THIS_PERIOD_START", "THIS_PERIOD_END",
      "THIS_YEAR_START", "THIS_YEAR_END",   "PREV_PERIOD",       "PREV_YEAR",         "PREV_PERIOD_ID",
      "PREV_PERIOD_START", "PREV_PERIOD_END", "PREV_YEAR_START", "PREV_YEAR_END",     "LAST_YEAR",
      "LAST_YEAR_START", "LAST_YEAR_END"};
  for (const char* n : kNames) {
    if (name == n) return true;
  }
  return false;
}

bool isVariable(const std::string& v) { return v.size() >= 2 && v.front() == '<' && v.back() == '>'; }

std::string sessionText(const char* name) { return HREnvironment::session().GlobalVariable(name).text(); }

// A form value the launching form left for this name.
std::optional<std::string> formValue(const std::string& name) {
  const std::string values = sessionText("QUERY_USER_VALUES");
  if (!hasKey(values, name)) return std::nullopt;
  return getKeyedValue(values, name);
}

std::string dateText(const std::optional<DateTime>& d) {
  return d ? formatDate(*d, siteDateFormat()) : std::string();
}

// The position just after a well-formed quoted literal starting at i
// (s[i] == '\''), or npos.
size_t literalEnd(std::string_view s, size_t i) {
  for (size_t j = i + 1; j < s.size(); ++j) {
    if (s[j] != '\'') continue;
    if (j + 1 < s.size() && s[j + 1] == '\'') {
      ++j;  // a doubled quote inside the literal
      continue;
    }
    return j + 1;
  }
  return std::string_view::npos;
}

// A comma list of plain numbers and well-formed literals (what a form may
// hand over for an "in (...)" list).
bool isSafeValueList(const std::string& v) {
  std::string_view s = v;
  size_t i = 0;
  while (true) {
    while (i < s.size() && s[i] == ' ') ++i;
    if (i >= s.size()) return false;
    size_t end;
    if (s[i] == '\'') {
      end = literalEnd(s, i);
      if (end == std::string_view::npos) return false;
    } else {
      end = s.find(',', i);
      if (end == std::string_view::npos) end = s.size();
      if (!isPlainNumber(trim(s.substr(i, end - i)))) return false;
    }
    i = end;
    while (i < s.size() && s[i] == ' ') ++i;
    if (i == s.size()) return true;
    if (s[i] != ',') return false;
    ++i;
  }
}

// A form value spliced into a statement: inside a quoted literal it is
// quoted as literal text; elsewhere it must be a number, a literal or a
// list of them, and anything else becomes one quoted literal.
std::string formValueInStatement(const std::string& value, bool insideLiteral) {
  if (insideLiteral) return sqlQuote(value);
  std::string v = trim(value);
  if (isPlainNumber(v) || isSafeValueList(v)) return v;
  if (ucase(v) == "NULL") return "NULL";
  return quotedLiteral(value);
}

}  // namespace

bool isPlainNumber(const std::string& value) {
  std::string_view s = value;
  size_t i = 0;
  if (i < s.size() && (s[i] == '-' || s[i] == '+')) ++i;
  size_t digits = 0;
  while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i]))) ++i, ++digits;
  if (i < s.size() && s[i] == '.') {
    ++i;
    while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i]))) ++i, ++digits;
  }
  return digits > 0 && i == s.size();
}

std::string quotedLiteral(const std::string& value) {
  if (value.size() >= 2 && value.front() == '\'' && literalEnd(value, 0) == value.size()) return value;
  return "'" + sqlQuote(value) + "'";
}

bool isListVariable(const std::string& value) {
  std::string n = ucase(withoutBrackets(value));
  return isVariable(trim(value)) && (n == "SUBORDINATES_ALL" || n == "SUBORDINATES_DIRECT");
}

bool isPayrollPeriodName(const std::string& value) { return isPayrollName(ucase(withoutBrackets(value))); }

bool isPayrollVariable(const std::string& value) {
  std::string n = ucase(left(withoutBrackets(value), 5));
  return n == "THIS_" || n == "PREV_" || n == "LAST_";
}

std::string fncMapQueryFunctionToSQL(const std::string& strQueryFunction, const std::string& strValue) {
  const std::string code = upperTrim(strQueryFunction);
  const bool isNull = upperTrim(strValue) == "NULL";
  if (code == "EQ") return isNull ? "is" : "=";
  if (code == "<>") return isNull ? "is not" : "<>";
  if (code == "EW" || code == "BW" || code == "CO") return "like";
  if (code == "NC") return "not like";
  if (code == "NI") return "not in";
  if (code == "BN") return ">=";
  if (code == "NB") return "<";
  return trim(strQueryFunction);
}

std::string fncParseValue(const std::string& strQueryFunction, const std::string& strField,
                          const std::string& strFieldType, const std::string& strValue,
                          const std::string& strTemplate) {
  std::string result;
  std::string value = strValue;
  auto proc = query::procedure(query::kGridModule, "fncParseValue");
  proc.variables([&] {
    return Dump().item("STRQUERYFUNCTION:", strQueryFunction).item("STRFIELD:", strField).text();
  });
  proc.run([&](Steps& step) {
    const std::string code = upperTrim(strQueryFunction);
    std::string type = upperTrim(strFieldType);
    if (type.empty()) type = "S";

    // 1. NULL stands bare.
    if (upperTrim(value) == "NULL") {
      result = "NULL";
      return;
    }
    // 2./3. Variables: form values first, then payroll, user and date
    // variables.
    if (isVariable(value)) {
      const std::string name = trim(value.substr(1, value.size() - 2));
      bool done = false;
      step(10, [&] {
        if (auto form = formValue(name)) {
          gsubDebugLog(kSource, "Replace BEFORE : " + value);
          value = *form;
          gsubDebugLog(kSource, "Replace AFTER : " + value);
          done = true;
        }
      });
      if (!done && isPayrollVariable(name)) {
        step(20, [&] { value = gfncParsePayrollVariable(strTemplate, value); });
        if (ucase(value) == "NULL") {
          result = "NULL";
          return;
        }
      } else if (!done && endsWithNoCase(trim(strField), ".EMP_ID")) {
        FilterValues fv;
        step(30, [&] { fv = filterVariableValues(name); });
        if (fv.resolved && fv.list) {
          // A list of employees: quoted items for an "in" list.
          std::vector<std::string> items;
          for (const std::string& v : fv.values) items.push_back(quotedLiteral(v));
          result = items.empty() ? "''" : join(items, ",");
          return;
        }
        if (fv.resolved) value = fv.values.empty() ? std::string() : fv.values.front();
      } else if (!done && (type == "D" || type == "T")) {
        step(40, [&] { value = gfncParseDate(name); });
        if (value == "NULL") {
          result = "NULL";
          return;
        }
      }
    }
    step(50, [&] {
      // 4. The comparison's pattern.
      bool pattern = true;
      if (code == "EW") {
        value = "%" + value;
      } else if (code == "BW") {
        value = value + "%";
      } else if (code == "CO" || code == "NC") {
        value = "%" + value + "%";
      } else {
        pattern = false;
      }
      // 5. Literals by field type.
      if (type == "S" || type == "D" || type == "T") {
        if ((type == "D" || type == "T") && !pattern) {
          Dialect d = currentDialect();
          if ((d == Dialect::SQLite || d == Dialect::PostgreSQL) && parseDate(trim(value))) {
            value = databaseDateText(value);
          }
        }
        result = quotedLiteral(value);
      } else {
        std::string v = pattern ? value : scaledCriterionNumber(strField, trim(value));
        if (v.empty()) {
          result = "NULL";
        } else {
          result = isPlainNumber(v) ? v : quotedLiteral(v);
        }
      }
    });
  });
  return result;
}

std::string gfncParsePayrollVariable(const std::string& strTemplate_ID, const std::string& strValue) {
  std::string result;
  auto proc = query::procedure(query::kGridModule, "gfncParsePayrollVariable");
  proc.variables([&] { return Dump().item("STRTEMPLATE_ID:", strTemplate_ID).text(); });
  proc.run([&](Steps& step) {
    gsubDebugLog(kSource, "gfncParsePayrollVariable - START - " + strValue);
    const std::string name = ucase(withoutBrackets(strValue));
    if (name == "NULL") {
      result = "NULL";
      return;
    }
    if (!isPayrollName(name)) {
      // "PREV_WEEK_START", "NEXT_..." and the like are date variables.
      step(5, [&] { result = gfncParseDate(name); });
      gsubDebugLog(kSource, "gfncParsePayrollVariable : Revised Value : " + result);
      return;
    }
    std::string tmpl = trim(strTemplate_ID);
    step(10, [&] {
      if (tmpl.empty()) tmpl = payroll::sessionTemplateId();
    });
    std::string current;
    step(20, [&] { current = payroll::currentPeriodId(tmpl); });
    auto cur = payroll::splitPeriodId(current);

    // "PREV_" and "LAST_" start from a period id that must be numeric and
    // not before 201000.
    auto usable = [](const std::string& id) {
      auto k = payroll::splitPeriodId(id);
      return k && k->year * 100 + k->period >= 201000;
    };
    step(30, [&] {
      if (name == "THIS_PERIOD") {
        result = cur ? std::to_string(cur->period) : "";
      } else if (name == "THIS_YEAR") {
        result = cur ? std::to_string(cur->year) : "";
      } else if (name == "THIS_PERIOD_ID") {
        result = current;
      } else if (name == "THIS_PERIOD_START" || name == "THIS_PERIOD_END") {
        if (cur) {
          result = dateText(name == "THIS_PERIOD_START" ? payroll::periodStart(tmpl, cur->year, cur->period)
                                                        : payroll::periodEnd(tmpl, cur->year, cur->period));
        }
      } else if (name == "THIS_YEAR_START" || name == "THIS_YEAR_END") {
        if (cur) {
          result = dateText(name == "THIS_YEAR_START" ? payroll::payYearStart(tmpl, cur->year)
                                                      : payroll::payYearEnd(tmpl, cur->year));
        }
      } else if (startsWith(name, "PREV_")) {
        std::string prev = payroll::previousPeriodId(tmpl);
        auto p = payroll::splitPeriodId(prev);
        if (!usable(prev) || !p) {
          result = "";
        } else if (name == "PREV_PERIOD") {
          result = format(Value(static_cast<long>(p->period)), "00");
        } else if (name == "PREV_YEAR") {
          result = format(Value(static_cast<long>(p->year)), "0000");
        } else if (name == "PREV_PERIOD_ID") {
          result = prev;
        } else if (name == "PREV_PERIOD_START") {
          result = dateText(payroll::periodStart(tmpl, p->year, p->period));
        } else if (name == "PREV_PERIOD_END") {
          result = dateText(payroll::periodEnd(tmpl, p->year, p->period));
        } else if (name == "PREV_YEAR_START") {
          result = dateText(payroll::payYearStart(tmpl, p->year));
        } else {
          result = dateText(payroll::payYearEnd(tmpl, p->year));
        }
      } else if (startsWith(name, "LAST_")) {
        if (!usable(current) || !cur) {
          result = "";
        } else if (name == "LAST_YEAR") {
          result = format(Value(static_cast<long>(cur->year - 1)), "0000");
        } else if (name == "LAST_YEAR_START") {
          result = dateText(payroll::payYearStart(tmpl, cur->year - 1));
        } else {
          result = dateText(payroll::payYearEnd(tmpl, cur->year - 1));
        }
      } else {
        result = "NULL";
      }
    });
    gsubDebugLog(kSource, "gfncParsePayrollVariable : Revised Value : " + result);
  });
  return result;
}

void subApplyFormVariables(std::string& strSQL) {
  auto proc = query::procedure(query::kGridModule, "subApplyFormVariables");
  proc.variables([&] { return Dump().item("STRSQL:", strSQL).text(); });
  proc.run([&](Steps& step) {
    std::vector<std::string> names;
    std::string values;
    step(10, [&] {
      names = split(sessionText("QUERY_USER_VARIABLES"), ",");
      values = sessionText("QUERY_USER_VALUES");
    });
    for (const std::string& raw : names) {
      const std::string name = trim(raw);
      if (name.empty()) continue;
      if (!hasKey(values, name)) continue;  // no value: the placeholder stays as written
      std::optional<std::string> value = getKeyedValue(values, name);
      step(20, [&] {
        const std::string placeholder = "<" + name + ">";
        std::string out;
        out.reserve(strSQL.size());
        bool inLiteral = false;
        for (size_t i = 0; i < strSQL.size();) {
          if (strSQL.compare(i, placeholder.size(), placeholder) == 0) {
            out += formValueInStatement(*value, inLiteral);
            i += placeholder.size();
            continue;
          }
          if (strSQL[i] == '\'') inLiteral = !inLiteral;  // '' toggles twice
          out += strSQL[i++];
        }
        strSQL = std::move(out);
        gsubDebugLog(kSource, "Replace : " + name + " : " + *value);
      });
    }
  });
}

}  // namespace orvalis
