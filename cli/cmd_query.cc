// orvalis sql / query / variables: the stored-query engine from the
// command line.
//
//   orvalis sql QUERY_ID [--portal-form REF] [--apply-access Y|N]
//                        [--form-settings TEXT]
//       prints the statement gfncBuildSQL builds for the session's user
//       (--user) in the connection's dialect; --provider shows another
//       dialect's text (the lookups still run on the connection).
//   orvalis query QUERY_ID [the same options] [--format F] [--out FILE]
//       builds the statement and runs it, writing the rows as "orvalis
//       extract" does.
//   orvalis variables [--diary-rules]
//       prints the date-variable catalogue (gfncSystemDateVariables), one
//       "<TOKEN>=Caption" entry per line.
//
// What the builder could not do as asked (a restriction it replaced by a
// condition that returns no row) is printed on stderr, one line each.
// In --form-settings the two characters "\n" stand for a line break between
// entries. Exit status: 0 success, 1 when the query gives no SQL (an empty
// id, a folder query, a self-service query without rows), 2 on an error
// (among them an unknown id and a query without a driving table).

#include <iostream>
#include <memory>
#include <string>

#include "cli/cli_context.h"
#include "cli/recordset_output.h"
#include "data/data_functions.h"
#include "query/date_variables.h"
#include "query/query_details.h"
#include "query/sql_builder.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "runtime/progress.h"

namespace orvalis::cli {
namespace {

struct QueryArgs {
  std::string queryId;
  std::string portalForm;
  std::string applyAccess;
  std::string formSettings;
  std::string format;
  std::string out;
};

// The builder answers an unknown id, or a query without a driving table,
// with broken SQL ("SELECT * from where ..."); the commands refuse them
// instead. Folder queries and an empty id stay "no SQL" (exit status 1).
void checkStoredQuery(const std::string& queryId) {
  if (trim(queryId).empty()) return;
  QueryDetails details;
  gsubQueryDetails(queryId, details);
  if (!details.found) throw Error(err::kItemNotFound, "orvalis", "no stored query " + queryId);
  if (details.entityId.empty() && details.queryType != "F" && details.queryType != "U") {
    throw Error(err::kItemNotFound, "orvalis",
                "stored query " + queryId + " has no driving table (ADMGRIDH.ENTITY_ID is empty)");
  }
}

std::string buildStatement(CliContext& context, const QueryArgs& args) {
  StandaloneEnvironment& env = context.environment();
  QueryHeaderScope headers;  // the check and the build read the header once
  checkStoredQuery(args.queryId);
  const std::string settings = replace(args.formSettings, "\\n", "\n");
  std::string sql = gfncBuildSQL(env.UserCode(), args.queryId, args.portalForm, args.applyAccess, settings);
  for (const std::string& warning : builderWarnings()) std::cerr << "orvalis: warning: " << warning << "\n";
  return sql;
}

void addBuildOptions(CLI::App* cmd, QueryArgs& args) {
  cmd->add_option("QUERY_ID", args.queryId, "stored query (ADMGRIDH.CODE_ID)")->required();
  cmd->add_option("--portal-form", args.portalForm, "self-service form reference (type \"D\" queries)");
  cmd->add_option("--apply-access", args.applyAccess, "N switches the user's data-access restrictions off");
  cmd->add_option("--form-settings", args.formSettings, "KEY=value settings for the select builder (\\n between)");
}

void runSql(CliContext& context, const QueryArgs& args) {
  std::string sql = buildStatement(context, args);
  std::cout << sql << "\n";
  context.exitCode = sql.empty() ? 1 : 0;
}

void runQuery(CliContext& context, const QueryArgs& args) {
  OutputFormat format = defaultOutputFormat();
  if (!args.format.empty()) {
    auto parsed = parseOutputFormat(args.format);
    if (!parsed) throw Error(err::kInvalidProcedureCall, "orvalis", "unknown --format \"" + args.format + "\"");
    format = *parsed;
  }
  checkOutputTarget(format, args.out);
  std::string sql = buildStatement(context, args);
  if (sql.empty()) {
    std::cerr << "orvalis: query \"" << args.queryId << "\" gives no SQL\n";
    context.exitCode = 1;
    return;
  }
  ProgressTask progress("query " + args.queryId);
  std::vector<std::string> parameters;
  if (!args.portalForm.empty()) parameters.push_back("portal form " + args.portalForm);
  if (!args.applyAccess.empty()) parameters.push_back("apply access " + args.applyAccess);
  if (!args.formSettings.empty()) parameters.push_back("form settings " + args.formSettings);
  ReportHeading heading{"query " + args.queryId, args.queryId, context.environment().CompanyCode(), parameters};
  // CSV and JSON are written as the statement's rows come; the other
  // formats need the whole set first. The text is still written at the end,
  // so that a statement failing half way shows no rows.
  if (std::unique_ptr<RowsText> writer = rowsWriter(format, true)) {
    writer->expect(0, "reading");
    const bool read = gfncReadRows(sql, *writer);
    context.output.write(args.out, read ? writer->finish() : recordsetText(Recordset(), format, false, heading));
    context.exitCode = read ? 0 : 2;
    return;
  }
  Recordset rs;
  bool opened = gfncOpenRecordset(sql, rs);
  context.output.write(args.out, recordsetText(rs, format, opened, heading));
  context.exitCode = opened ? 0 : 2;
}

void setup(CLI::App& app, CliContext& context) {
  auto sqlArgs = std::make_shared<QueryArgs>();
  auto* sql = app.add_subcommand("sql", "print the SQL statement of a stored query (gfncBuildSQL)");
  addBuildOptions(sql, *sqlArgs);
  sql->callback([&context, sqlArgs] { runSql(context, *sqlArgs); });

  auto queryArgs = std::make_shared<QueryArgs>();
  auto* query = app.add_subcommand("query", "build a stored query's statement, run it and write its rows");
  addBuildOptions(query, *queryArgs);
  query->add_option("--format", queryArgs->format, "table, csv, json, xml, xlsx or html (default: table on a terminal, else csv)");
  query->add_option("--out", queryArgs->out, "write to this file instead of standard output (- for standard output); written only on success");
  query->callback([&context, queryArgs] { runQuery(context, *queryArgs); });

  auto diaryRules = std::make_shared<bool>(false);
  auto* variables = app.add_subcommand("variables", "list the date variables of query criteria");
  variables->add_flag("--diary-rules", *diaryRules, "append the company's diary date rules");
  variables->callback([&context, diaryRules] {
    context.environment();
    for (const std::string& entry : split(gfncSystemDateVariables(*diaryRules), ",")) std::cout << entry << "\n";
  });
}

const RegisterCommands registered({"sql", "query", "variables"}, setup);

}  // namespace
}  // namespace orvalis::cli
