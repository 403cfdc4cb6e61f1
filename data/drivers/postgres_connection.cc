#include "data/drivers/postgres_connection.h"

#include <libpq-fe.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <vector>

#include "data/drivers/column_types.h"
#include "data/drivers/driver_error.h"
#include "data/drivers/value_errors.h"
#include "data/drivers/value_text.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "runtime/shared_library.h"

namespace orvalis::drivers {

namespace {

const std::string kDriver = "PostgreSQL";
constexpr std::chrono::seconds kCancelGrace{5};
constexpr size_t kCopyChunk = 1 << 20;

// libpq is loaded on the first PostgreSQL connection (runtime/shared_library.h).
#define ORVALIS_LIBPQ_FUNCTIONS(X) X(PQcancel) X(PQclear) X(PQcmdTuples) X(PQconnectdbParams) \
  X(PQconsumeInput) X(PQerrorMessage) X(PQexec) X(PQfinish) X(PQfmod) X(PQfname) X(PQfreeCancel) \
  X(PQfreemem) X(PQftype) X(PQgetCancel) X(PQgetCopyData) X(PQgetResult) X(PQgetisnull) X(PQgetlength) \
  X(PQgetvalue) X(PQisBusy) X(PQnfields) X(PQntuples) X(PQputCopyData) X(PQputCopyEnd) X(PQresStatus) \
  X(PQresultErrorField) X(PQresultErrorMessage) X(PQresultStatus) X(PQsendQuery) X(PQsetNoticeProcessor) \
  X(PQsetSingleRowMode) X(PQsocket) X(PQstatus) X(PQtransactionStatus)

struct Libpq {
  ORVALIS_LIBPQ_FUNCTIONS(ORVALIS_LIBRARY_MEMBER)
};

const Libpq& libpq() {
  static const Libpq table = [] {
    const SharedLibrary library(ORVALIS_LIBPQ_SONAME, "the PostgreSQL client library", err::kClassNotRegistered,
                                kDriver);
    Libpq table;
    ORVALIS_LIBPQ_FUNCTIONS(ORVALIS_LIBRARY_BIND)
    return table;
  }();
  return table;
}

struct ConnectionCloser {
  void operator()(PGconn* c) const { libpq().PQfinish(c); }
};
struct ResultClearer {
  void operator()(PGresult* r) const { libpq().PQclear(r); }
};
using Result = std::unique_ptr<PGresult, ResultClearer>;

Value decode(const char* text, int length, ColumnKind kind) {
  std::string_view s(text, static_cast<size_t>(length));
  switch (kind) {
    case ColumnKind::Integer: {
      long long v = 0;
      auto [ptr, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
      if (ec == std::errc() && ptr == s.data() + s.size()) return Value(v);
      return Value(s);
    }
    case ColumnKind::Double:
    case ColumnKind::Numeric: {
      double v = 0;
      auto [ptr, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
      if (ec == std::errc() && ptr == s.data() + s.size()) return Value(v);
      return Value(s);
    }
    case ColumnKind::Boolean:
      return Value(s == "t");
    case ColumnKind::Date:
      if (auto d = parseIsoDateTime(s)) return Value(*d);
      return Value(s);
    default:
      return Value(s);
  }
}

// COPY text format: a field's text with its special characters escaped.
void appendCopyText(std::string& out, std::string_view s) {
  size_t from = 0;
  for (size_t i = 0; i < s.size(); ++i) {
    const char c = s[i];
    const char* escaped = c == '\\' ? "\\\\" : c == '\t' ? "\\t" : c == '\n' ? "\\n" : c == '\r' ? "\\r" : nullptr;
    if (escaped == nullptr) continue;
    out.append(s.data() + from, i - from);
    out += escaped;
    from = i + 1;
  }
  out.append(s.data() + from, s.size() - from);
}

// COPY text of the rows of a bulk load, a tab before every value but a
// row's first.
class CopyRow final : public BulkRow {
 public:
  void null() override {
    separate();
    buffer += "\\N";
  }
  void text(std::string_view text) override {
    separate();
    appendCopyText(buffer, text);
  }
  void value(const Value& v) override {
    if (v.isNull() || v.isEmpty()) {
      null();
    } else if (v.isText()) {
      text(v.asText());
    } else {
      separate();
      appendValueText(buffer, v);
    }
  }

  std::string buffer;
  size_t values = 0;  // in the row under way

 private:
  void separate() {
    if (values++) buffer.push_back('\t');
  }
};

// A failed result's SQLSTATE says the connection is gone: class 08
// (connection exception) or 57P01..57P03 (the server shutting down).
bool connectionState(const char* state) {
  if (state == nullptr) return false;
  const std::string_view s(state);
  return s.rfind("08", 0) == 0 || s == "57P01" || s == "57P02" || s == "57P03";
}

class PostgresConnection final : public Connection {
 public:
  PostgresConnection(const std::string& uri, const ConnectionOptions& options)
      : url_(displayUrl(uri)), timeoutSeconds_(options.timeoutSeconds) {
    // Entries before the URI are defaults it may override; those after it
    // are fixed by the driver.
    const std::string connectTimeout = std::to_string(timeoutSeconds_ > 0 ? timeoutSeconds_ : 15);
    const char* keywords[] = {"connect_timeout", "dbname", "client_encoding", nullptr};
    const char* values[] = {connectTimeout.c_str(), uri.c_str(), "UTF8", nullptr};
    conn_.reset(libpq().PQconnectdbParams(keywords, values, 1));
    if (!conn_) raiseDriverError(kDriver, "cannot connect to the PostgreSQL server", "out of memory");
    if (libpq().PQstatus(conn_.get()) != CONNECTION_OK) {
      raiseDriverError(kDriver, "cannot connect to the PostgreSQL server", libpq().PQerrorMessage(conn_.get()));
    }
    libpq().PQsetNoticeProcessor(conn_.get(), [](void*, const char*) {}, nullptr);
    Result r(libpq().PQexec(conn_.get(), "SET DateStyle = 'ISO, YMD'"));
    check(r, "cannot set up the session");
  }

  std::string provider() const override { return "POSTGRESQL"; }

  // Rows arrive in single-row mode and go straight into the recordset, so
  // the result is never held twice. As with PQexec, a text of several
  // statements yields the rows of the last one that returns rows.
  Recordset query(const std::string& sql) override {
    traced(sql);
    const bool inTransaction = libpq().PQtransactionStatus(conn_.get()) != PQTRANS_IDLE;
    if (!libpq().PQsendQuery(conn_.get(), sql.c_str())) {
      if (libpq().PQstatus(conn_.get()) == CONNECTION_BAD) {
        raiseFault(kDriver, inTransaction ? err::kOutcomeUnknown : err::kConnectionLost,
                   lostMessage(url_, sql, inTransaction, false), libpq().PQerrorMessage(conn_.get()));
      }
      raiseDriverError(kDriver, "query failed", libpq().PQerrorMessage(conn_.get()));
    }
    libpq().PQsetSingleRowMode(conn_.get());
    startStatement();

    Recordset rs;
    std::vector<ColumnKind> kinds;
    bool described = false;  // rs has the current statement's fields
    bool finished = false;   // ... and all its rows
    std::string serverError;
    bool connectionGone = false;
    bool rowsRead = false;
    std::exception_ptr failure;
    auto restart = [&](const PGresult* r) {
      rs = Recordset();
      kinds.clear();
      describe(r, rs, kinds);
      described = true;
      finished = false;
    };
    // Every result must be read, even after a failure, before the
    // connection takes the next statement.
    while (Result r{nextResult()}) {
      if (failure || !serverError.empty()) continue;
      try {
        switch (libpq().PQresultStatus(r.get())) {
          case PGRES_SINGLE_TUPLE:
            rowsRead = true;
            if (!described || finished) restart(r.get());
            appendRows(r.get(), rs, kinds);
            break;
          case PGRES_TUPLES_OK:  // the end of a statement's rows (all of them without single-row mode)
            if (!described || finished) restart(r.get());
            appendRows(r.get(), rs, kinds);
            finished = true;
            break;
          case PGRES_COMMAND_OK:
          case PGRES_EMPTY_QUERY:
            break;
          default:
            serverError = failureText(r.get());
            connectionGone = connectionState(libpq().PQresultErrorField(r.get(), PG_DIAG_SQLSTATE));
        }
      } catch (...) {
        failure = std::current_exception();
      }
    }
    if (timedOut_) raiseFault(kDriver, err::kStatementTimeout, timeoutMessage(url_, sql, timeoutSeconds_));
    if (!serverError.empty()) {
      if (connectionGone || libpq().PQstatus(conn_.get()) == CONNECTION_BAD) {
        const bool unknown = inTransaction || rowsRead;
        raiseFault(kDriver, unknown ? err::kOutcomeUnknown : err::kConnectionLost,
                   lostMessage(url_, sql, unknown, false), serverError);
      }
      raiseDriverError(kDriver, "query failed", serverError);
    }
    if (failure) std::rethrow_exception(failure);
    rs.open();
    rs.moveFirst();
    return rs;
  }

  long execute(const std::string& sql) override {
    traced(sql);
    Result r = timeoutSeconds_ > 0 ? execLimited(sql) : Result(libpq().PQexec(conn_.get(), sql.c_str()));
    if (timedOut_) raiseFault(kDriver, err::kStatementTimeout, timeoutMessage(url_, sql, timeoutSeconds_));
    if (libpq().PQstatus(conn_.get()) == CONNECTION_BAD ||
        (r && connectionState(libpq().PQresultErrorField(r.get(), PG_DIAG_SQLSTATE)))) {
      // A statement without rows changes something (or opens or ends a
      // transaction): the server may have done it before the connection went.
      raiseFault(kDriver, err::kOutcomeUnknown, lostMessage(url_, sql, true, true),
                 r ? failureText(r.get()) : std::string(libpq().PQerrorMessage(conn_.get())));
    }
    const ExecStatusType status = libpq().PQresultStatus(r.get());
    if (status == PGRES_COPY_IN || status == PGRES_COPY_OUT) {
      std::string message = failureText(r.get());
      drainResults();
      raiseDriverError(kDriver, "statement failed", message);
    }
    check(r, "statement failed");
    return std::atol(libpq().PQcmdTuples(r.get()));
  }

  void begin() override { execute("BEGIN"); }
  void commit() override { execute("COMMIT"); }
  void rollback() override { execute("ROLLBACK"); }

  long bulkInsert(const std::string& table, const std::vector<std::string>& columns,
                  const std::function<bool(std::vector<Value>&)>& nextRow) override {
    std::vector<Value> row;
    return bulkLoad(table, columns, [&](BulkRow& out) {
      row.resize(columns.size());
      if (!nextRow(row)) return false;
      for (const Value& v : row) out.value(v);
      return true;
    });
  }

  // The values are written as COPY text as they come, and sent a chunk at
  // a time.
  long bulkLoad(const std::string& table, const std::vector<std::string>& columns,
                const std::function<bool(BulkRow&)>& nextRow) override {
    const std::string what = "bulk insert into " + table + " failed";
    if (columns.empty()) raiseDriverError(kDriver, what, "no columns given");
    const std::string sql = "COPY " + table + " (" + join(columns, ", ") + ") FROM STDIN";
    traced(sql);
    {
      Result r(libpq().PQexec(conn_.get(), sql.c_str()));
      if (libpq().PQresultStatus(r.get()) != PGRES_COPY_IN) check(r, what);
    }

    long count = 0;
    try {
      CopyRow row;
      row.buffer.reserve(kCopyChunk + 4096);
      for (;;) {
        row.values = 0;
        if (!nextRow(row)) break;
        if (row.values != columns.size()) {
          raiseDriverError(kDriver, what,
                           "a row has " + std::to_string(row.values) + " values for " +
                               std::to_string(columns.size()) + " columns");
        }
        row.buffer.push_back('\n');
        ++count;
        if (row.buffer.size() >= kCopyChunk) {
          sendCopyData(row.buffer, what);
          row.buffer.clear();
        }
      }
      if (!row.buffer.empty()) sendCopyData(row.buffer, what);
    } catch (...) {
      libpq().PQputCopyEnd(conn_.get(), "bulk insert abandoned");
      drainResults();
      throw;
    }
    if (libpq().PQputCopyEnd(conn_.get(), nullptr) != 1) {
      drainResults();
      raiseDriverError(kDriver, what, libpq().PQerrorMessage(conn_.get()));
    }
    Result end(libpq().PQgetResult(conn_.get()));
    drainResults();
    check(end, what);
    return count;
  }

 private:
  // ---- Time limits: a statement past timeoutSeconds_ is cancelled ----

  void startStatement() {
    timedOut_ = false;
    deadline_ = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds_);
  }

  // The next result of the statement under way. Without a time limit this
  // is PQgetResult; with one, the wait for input ends at the deadline, the
  // server is asked to cancel the statement, and the results that follow
  // (the cancellation's error) are read as usual with timedOut_ set.
  // A server that does not answer the cancel request within kCancelGrace
  // loses the connection: the socket is shut, libpq reports the connection
  // bad, and the next statement opens a fresh one.
  PGresult* nextResult() {
    if (timeoutSeconds_ <= 0) return libpq().PQgetResult(conn_.get());
    PGconn* c = conn_.get();
    while (libpq().PQisBusy(c)) {
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline_ - std::chrono::steady_clock::now());
      if (left.count() <= 0) {
        if (timedOut_) {
          ::shutdown(libpq().PQsocket(c), SHUT_RDWR);
          libpq().PQconsumeInput(c);
          break;
        }
        cancel();
        deadline_ = std::chrono::steady_clock::now() + kCancelGrace;
        continue;
      }
      pollfd p{libpq().PQsocket(c), POLLIN, 0};
      const int n = ::poll(&p, 1, static_cast<int>(left.count()));
      if (n < 0 && errno == EINTR) continue;
      if (n < 0 || !libpq().PQconsumeInput(c)) break;  // PQgetResult reports the failure
    }
    return libpq().PQgetResult(c);
  }

  void cancel() {
    timedOut_ = true;
    char reason[256] = {};
    if (PGcancel* handle = libpq().PQgetCancel(conn_.get())) {
      libpq().PQcancel(handle, reason, sizeof reason);
      libpq().PQfreeCancel(handle);
    }
  }

  // PQexec under the time limit: the last result of the text.
  Result execLimited(const std::string& sql) {
    timedOut_ = false;
    if (!libpq().PQsendQuery(conn_.get(), sql.c_str())) return Result(nullptr);
    startStatement();
    Result last;
    while (Result r{nextResult()}) {
      const ExecStatusType status = libpq().PQresultStatus(r.get());
      last = std::move(r);
      if (status == PGRES_COPY_IN || status == PGRES_COPY_OUT || status == PGRES_COPY_BOTH) break;
    }
    return last;
  }

  static void describe(const PGresult* r, Recordset& rs, std::vector<ColumnKind>& kinds) {
    const int n = libpq().PQnfields(r);
    for (int i = 0; i < n; ++i) {
      Column c = columnForPostgresType(schemaCaseColumnName(libpq().PQfname(r, i)), libpq().PQftype(r, i),
                                       libpq().PQfmod(r, i));
      kinds.push_back(c.kind);
      rs.appendField(std::move(c.field));
    }
    rs.open();
  }

  static void appendRows(const PGresult* r, Recordset& rs, const std::vector<ColumnKind>& kinds) {
    const Libpq& pq = libpq();
    const int rows = pq.PQntuples(r);
    const int n = static_cast<int>(kinds.size());
    // The server types its columns, so a value that does not fit is rare:
    // the message names the result column (no table) and the first column.
    int row = 0;
    RowSource source;
    source.columns = n;
    source.origin = [&rs](int i) { return ColumnOrigin{"", rs.field(i).name, false}; };
    source.text = [r, &row](int i) -> std::optional<std::string> {
      if (libpq().PQgetisnull(r, row, i)) return std::nullopt;
      return std::string(libpq().PQgetvalue(r, row, i), static_cast<size_t>(libpq().PQgetlength(r, row, i)));
    };
    // Text bound for a text field goes straight into its cell.
    std::vector<char> textField(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) {
      textField[static_cast<size_t>(i)] =
          kinds[static_cast<size_t>(i)] == ColumnKind::Text && ado::isTextType(rs.field(i).type);
    }
    for (; row < rows; ++row) {
      rs.addNew();
      const long at = rs.currentRow();
      for (int i = 0; i < n; ++i) {
        if (pq.PQgetisnull(r, row, i)) continue;  // addNew filled the row with Nulls
        if (textField[static_cast<size_t>(i)]) {
          rs.setTextAt(at, i, std::string_view(pq.PQgetvalue(r, row, i), static_cast<size_t>(pq.PQgetlength(r, row, i))));
          continue;
        }
        storeColumnValue(rs, i, decode(pq.PQgetvalue(r, row, i), pq.PQgetlength(r, row, i), kinds[static_cast<size_t>(i)]),
                         kDriver, source);
      }
    }
  }

  void check(const Result& r, std::string_view what) {
    if (!r) raiseDriverError(kDriver, what, libpq().PQerrorMessage(conn_.get()));
    switch (libpq().PQresultStatus(r.get())) {
      case PGRES_COMMAND_OK:
      case PGRES_TUPLES_OK:
      case PGRES_EMPTY_QUERY:
        return;
      default:
        raiseDriverError(kDriver, what, failureText(r.get()));
    }
  }

  // The server's message for a failed result. A COPY that a plain
  // statement started is ended first, so the connection stays usable.
  std::string failureText(const PGresult* r) {
    const ExecStatusType status = libpq().PQresultStatus(r);
    if (status == PGRES_COPY_IN || status == PGRES_COPY_OUT || status == PGRES_COPY_BOTH) {
      if (status == PGRES_COPY_IN) libpq().PQputCopyEnd(conn_.get(), "COPY is only available through bulkInsert");
      char* data = nullptr;
      while (status != PGRES_COPY_IN && libpq().PQgetCopyData(conn_.get(), &data, 0) > 0) libpq().PQfreemem(data);
      return "COPY is only available through bulkInsert";
    }
    const char* message = libpq().PQresultErrorMessage(r);
    return message && *message ? message : libpq().PQresStatus(status);
  }

  void sendCopyData(const std::string& data, std::string_view what) {
    if (libpq().PQputCopyData(conn_.get(), data.data(), static_cast<int>(data.size())) != 1) {
      raiseDriverError(kDriver, what, libpq().PQerrorMessage(conn_.get()));
    }
  }

  void drainResults() {
    while (Result r{libpq().PQgetResult(conn_.get())}) {
    }
  }

  std::unique_ptr<PGconn, ConnectionCloser> conn_;
  std::string url_;
  int timeoutSeconds_ = 0;
  bool timedOut_ = false;
  std::chrono::steady_clock::time_point deadline_;
};

}  // namespace

std::unique_ptr<Connection> openPostgres(const std::string& uri, const ConnectionOptions& options) {
  return std::make_unique<PostgresConnection>(uri, options);
}

}  // namespace orvalis::drivers
