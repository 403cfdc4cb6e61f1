// Criterion values of stored queries: comparison codes, literals and
// variables.
//
// A criterion row holds a comparison code (QUERY_FUNCTION) and a value text
// (QUERY_VALUE). fncMapQueryFunctionToSQL turns the code into an SQL
// operator; fncParseValue turns one value into one SQL literal, resolving
// the variables a value may name between "<" and ">": form values left by
// the launching form ("QUERY_USER_VALUES"), payroll-period variables
// ("THIS_...", "PREV_...", "LAST_..."), user and self-service variables on
// employee-key fields (filter_variable.h) and date variables on date fields
// (date_variables.h). subApplyFormVariables replaces the form variables
// left in a finished statement.
//
// Literals are always safe to splice into a statement: text is quoted with
// sqlQuote (a value cannot end its literal early), numbers are written bare
// only when they are plain numbers, and date texts become ISO literals on
// SQLite and PostgreSQL (SQL Server and Oracle keep the site's date text).
//
// Procedures of the query builder's module (error block "HRSQLControl").
// Single-threaded.
#pragma once

#include <string>
#include <vector>

namespace orvalis {

// The SQL operator of a comparison code: "EQ" "=" (or "is" for a NULL
// value), "<>" (or "is not"), "EW"/"BW"/"CO" "like", "NC" "not like",
// "NI" "not in", "BN" ">=", "NB" "<"; any other code is returned trimmed.
std::string fncMapQueryFunctionToSQL(const std::string& strQueryFunction, const std::string& strValue);

// One value of a criterion on strField (type letter strFieldType: "S",
// "D", "T", "N", "B") as an SQL literal. strTemplate is the payroll
// template for payroll-period variables.
std::string fncParseValue(const std::string& strQueryFunction, const std::string& strField,
                          const std::string& strFieldType, const std::string& strValue,
                          const std::string& strTemplate);

// One payroll-period variable ("THIS_PERIOD_ID", "[PREV_PERIOD_END]", ...)
// of the template's calendar. Period numbers and years as texts, period
// ids "YYYYPP", dates in the site's date format; "NULL" stays "NULL"; "" for
// "PREV_"/"LAST_" variables whose starting period id is not numeric or is
// before 201000. Any other name (a date variable that happens to begin
// "PREV_" or "NEXT_", such as "PREV_WEEK_START") goes to gfncParseDate,
// which gives "NULL" for an unknown one.
std::string gfncParsePayrollVariable(const std::string& strTemplate_ID, const std::string& strValue);

// True when the name (brackets "<", ">", "[", "]" allowed) begins with
// "THIS_", "PREV_" or "LAST_".
bool isPayrollVariable(const std::string& value);

// True when the name (brackets allowed) is one the payroll calendar answers
// ("THIS_PERIOD_ID", "PREV_YEAR_END", ...), not a date variable.
bool isPayrollPeriodName(const std::string& value);

// Replaces "<NAME>" in strSQL by the form value of each name listed in the
// session variable "QUERY_USER_VARIABLES"; names without a value in
// "QUERY_USER_VALUES" stay as written. The values are the form's own text.
void subApplyFormVariables(std::string& strSQL);

// A text as a quoted SQL string literal: kept when it already is a
// well-formed literal ('...' with every inner quote doubled), else quoted
// with sqlQuote.
std::string quotedLiteral(const std::string& value);

// True for a plain decimal number ("12", "-3.5"): what may stand bare.
bool isPlainNumber(const std::string& value);

// True when the text names a list-valued variable ("<SUBORDINATES_ALL>",
// "<SUBORDINATES_DIRECT>"), whose literal is a comma list of quoted items.
bool isListVariable(const std::string& value);

}  // namespace orvalis
