// Criterion values of stored queries: comparison codes, literals, form
// values and the variables a value may name. Input: code, field, type letter
// and value, one a line (the value takes the rest).
//
// The promise checked is the one every statement relies on: whatever the
// value, what fncParseValue returns is NULL, a plain number or quoted
// literals, and a form value replaced in a statement never ends a literal
// early. The procedures read the session and control tables, so the target
// runs on a scratch SQLite database with the HR schema, made once.
#include <unistd.h>

#include <filesystem>
#include <memory>

#include "component/errors/recording_error_component.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"
#include "fuzz_input.h"
#include "query/date_variables.h"
#include "query/query_values.h"
#include "runtime/error.h"
#include "runtime/settings_file.h"
#include "schema/schema.h"

using namespace orvalis;

namespace {

std::string databasePath;
std::shared_ptr<StandaloneEnvironment> environment;
std::shared_ptr<ErrorRecorder> errors;

// At exit only the file goes: the environment's thread-local slot is gone
// by then, and the environment itself ends with the other statics.
void removeDatabase() {
  std::error_code ignored;
  std::filesystem::remove(databasePath, ignored);
}

// The end of a well-formed quoted literal starting at i, or npos.
size_t literalEnd(std::string_view s, size_t i) {
  for (size_t j = i + 1; j < s.size(); ++j) {
    if (s[j] != '\'') continue;
    if (j + 1 < s.size() && s[j + 1] == '\'') {
      ++j;
      continue;
    }
    return j + 1;
  }
  return std::string_view::npos;
}

// NULL, a plain number, or a comma list of well-formed quoted literals.
bool safeLiteral(const std::string& v) {
  if (v.empty() || v == "NULL" || isPlainNumber(v)) return true;
  size_t i = 0;
  while (i < v.size()) {
    if (v[i] != '\'') return false;
    i = literalEnd(v, i);
    if (i == std::string::npos) return false;
    if (i == v.size()) return true;
    if (v[i] != ',') return false;
    ++i;
  }
  return false;
}

// The statement's text outside its literals, or "?" when a literal is left
// open.
std::string outsideLiterals(const std::string& sql) {
  std::string out;
  for (size_t i = 0; i < sql.size();) {
    if (sql[i] == '\'') {
      i = literalEnd(sql, i);
      if (i == std::string::npos) return "?";
      continue;
    }
    out += sql[i++];
  }
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  setSettingsPath("/nonexistent/HR.ini");
  databasePath = (std::filesystem::temp_directory_path() /
                  ("orvalis_fuzz_" + std::to_string(::getpid()) + ".db")).string();
  errors = installRecordingErrorComponent();
  StandaloneConfig config;
  config.hrUrl = "sqlite:" + databasePath;
  config.companyCode = "ORV01";
  config.userCode = "ADMIN";
  environment = std::make_shared<StandaloneEnvironment>(std::move(config));
  HREnvironment::set(environment);
  createSchema(environment->hrConnection());
  std::atexit(removeDatabase);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  auto f = fuzz::lines(data, size, 4);
  const std::string &code = f[0], &field = f[1], &type = f[2], &value = f[3];
  errors->clear();

  (void)fncMapQueryFunctionToSQL(code, value);
  (void)isPayrollVariable(value);
  (void)isListVariable(value);
  try {
    (void)gfncParseDate(value, "DD/MM/YYYY");
    (void)gfncParseDate(value, "DD-Mmm-YYYY");
  } catch (const Error&) {
  }

  // The value as a criterion, and as a form value the criterion names.
  auto& session = HREnvironment::session();
  for (const std::string& criterion : {value, std::string("<V>")}) {
    session.SetGlobalVariable("QUERY_USER_VALUES", Value("V=" + value));
    try {
      const std::string literal = fncParseValue(code, field, type, criterion, "");
      fuzz::check(safeLiteral(literal), "a criterion value becomes NULL, a number or quoted literals", literal);
    } catch (const Error&) {
    }
  }

  // The value replacing a form variable in a finished statement: outside
  // the literals only the statement's own text, numbers and NULL remain.
  session.SetGlobalVariable("QUERY_USER_VARIABLES", Value("V"));
  std::string sql = "A=<V> AND B='<V>' AND C IN (<V>)";
  try {
    subApplyFormVariables(sql);
    std::string outside = outsideLiterals(sql);
    bool ok = outside != "?";
    for (char c : outside) {
      ok = ok && std::string_view("ABCDINUL=() .,+-0123456789").find(c) != std::string_view::npos;
    }
    fuzz::check(ok, "a form value stays inside one literal or is a number", sql);
  } catch (const Error&) {
  }
  session.SetGlobalVariable("QUERY_USER_VARIABLES", Value(""));
  session.SetGlobalVariable("QUERY_USER_VALUES", Value(""));
  return 0;
}
