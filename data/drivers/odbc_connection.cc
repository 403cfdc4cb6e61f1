#include "data/drivers/odbc_connection.h"

#include <sql.h>
#include <sqlext.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

#include "data/drivers/column_types.h"
#include "data/drivers/driver_error.h"
#include "data/drivers/value_errors.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "runtime/shared_library.h"

namespace orvalis::drivers {

namespace {

const std::string kDriver = "ODBC";
constexpr SQLLEN kChunk = 16384;
// Texts longer than this are bound as long varchar.
constexpr size_t kLongTextParameter = 4000;

// The driver manager (unixODBC) is loaded on the first ODBC connection
// (runtime/shared_library.h).
#define ORVALIS_ODBC_FUNCTIONS(X) X(SQLAllocHandle) X(SQLBindParameter) X(SQLCancel) X(SQLDescribeCol) \
  X(SQLDisconnect) X(SQLDriverConnect) X(SQLEndTran) X(SQLExecDirect) X(SQLExecute) X(SQLFetch) \
  X(SQLFreeHandle) X(SQLGetData) X(SQLGetDiagRec) X(SQLGetInfo) X(SQLNumResultCols) X(SQLPrepare) \
  X(SQLRowCount) X(SQLSetConnectAttr) X(SQLSetEnvAttr)

struct Odbc {
  ORVALIS_ODBC_FUNCTIONS(ORVALIS_LIBRARY_MEMBER)
};

const Odbc& odbc() {
  static const Odbc table = [] {
    const SharedLibrary library(ORVALIS_ODBC_SONAME, "the ODBC driver manager", err::kClassNotRegistered, kDriver);
    Odbc table;
    ORVALIS_ODBC_FUNCTIONS(ORVALIS_LIBRARY_BIND)
    return table;
  }();
  return table;
}

// One ODBC handle, freed with its owner.
class Handle {
 public:
  Handle() = default;
  Handle(SQLSMALLINT type, SQLHANDLE handle) : type_(type), handle_(handle) {}
  ~Handle() {
    if (handle_ != SQL_NULL_HANDLE) odbc().SQLFreeHandle(type_, handle_);
  }
  Handle(Handle&& o) noexcept : type_(o.type_), handle_(o.handle_) { o.handle_ = SQL_NULL_HANDLE; }
  Handle& operator=(Handle&& o) noexcept {
    std::swap(type_, o.type_);
    std::swap(handle_, o.handle_);
    return *this;
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  SQLHANDLE get() const { return handle_; }
  SQLSMALLINT type() const { return type_; }

 private:
  SQLSMALLINT type_ = 0;
  SQLHANDLE handle_ = SQL_NULL_HANDLE;
};

// "[SQLSTATE] message" for every diagnostic record of the handle.
std::string diagnostics(SQLSMALLINT type, SQLHANDLE handle) {
  std::string out;
  for (SQLSMALLINT i = 1;; ++i) {
    SQLCHAR state[6] = {};
    SQLINTEGER native = 0;
    SQLCHAR message[2048] = {};
    SQLSMALLINT length = 0;
    SQLRETURN rc = odbc().SQLGetDiagRec(type, handle, i, state, &native, message, sizeof message, &length);
    if (!SQL_SUCCEEDED(rc)) break;
    if (!out.empty()) out += "; ";
    out += "[";
    out += reinterpret_cast<const char*>(state);
    out += "] ";
    out += reinterpret_cast<const char*>(message);
  }
  return out.empty() ? "no diagnostic from the driver" : out;
}

bool ok(SQLRETURN rc) { return SQL_SUCCEEDED(rc); }

// The SQLSTATE of the handle's first diagnostic record ("" when none).
std::string firstState(SQLSMALLINT type, SQLHANDLE handle) {
  SQLCHAR state[6] = {};
  SQLINTEGER native = 0;
  SQLSMALLINT length = 0;
  if (!SQL_SUCCEEDED(odbc().SQLGetDiagRec(type, handle, 1, state, &native, nullptr, 0, &length))) return "";
  return reinterpret_cast<const char*>(state);
}

// Class 08 (connection exception) or the server shutting down (57P01..03,
// which psqlODBC passes on from PostgreSQL).
bool connectionState(const std::string& state) {
  return state.rfind("08", 0) == 0 || state == "57P01" || state == "57P02" || state == "57P03";
}

// Cancels a statement with SQLCancel from a second thread when it runs past
// its time limit; the statement's own call then fails (HY008).
class Watchdog {
 public:
  Watchdog(SQLHSTMT st, int seconds) {
    if (seconds <= 0) return;
    thread_ = std::thread([this, st, seconds] {
      std::unique_lock<std::mutex> lock(mutex_);
      if (!done_.wait_for(lock, std::chrono::seconds(seconds), [this] { return finished_; })) {
        fired_ = true;
        odbc().SQLCancel(st);
      }
    });
  }
  ~Watchdog() { stop(); }
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

  void stop() {
    if (!thread_.joinable()) return;
    {
      std::lock_guard<std::mutex> lock(mutex_);
      finished_ = true;
    }
    done_.notify_one();
    thread_.join();
  }
  bool fired() {
    std::lock_guard<std::mutex> lock(mutex_);
    return fired_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable done_;
  bool finished_ = false;
  bool fired_ = false;
  std::thread thread_;
};

// Column values read with SQLGetData.
class ValueReader {
 public:
  // The column's value of the current row (column numbers are 1-based).
  Value read(SQLHSTMT st, SQLUSMALLINT col, ColumnKind kind) {
    SQLLEN ind = 0;
    SQLRETURN rc = SQL_SUCCESS;
    switch (kind) {
      case ColumnKind::Integer: {
        SQLBIGINT v = 0;
        rc = odbc().SQLGetData(st, col, SQL_C_SBIGINT, &v, sizeof v, &ind);
        if (!ok(rc) || ind == SQL_NULL_DATA) break;
        return Value(static_cast<long long>(v));
      }
      case ColumnKind::Double:
      case ColumnKind::Numeric: {
        SQLDOUBLE v = 0;
        rc = odbc().SQLGetData(st, col, SQL_C_DOUBLE, &v, sizeof v, &ind);
        if (!ok(rc) || ind == SQL_NULL_DATA) break;
        return Value(static_cast<double>(v));
      }
      case ColumnKind::Boolean: {
        SQLCHAR v = 0;
        rc = odbc().SQLGetData(st, col, SQL_C_BIT, &v, sizeof v, &ind);
        if (!ok(rc) || ind == SQL_NULL_DATA) break;
        return Value(v != 0);
      }
      case ColumnKind::Date: {
        SQL_TIMESTAMP_STRUCT ts{};
        rc = odbc().SQLGetData(st, col, SQL_C_TYPE_TIMESTAMP, &ts, sizeof ts, &ind);
        if (!ok(rc) || ind == SQL_NULL_DATA) break;
        if (auto d = DateTime::fromParts(ts.year, ts.month, ts.day, ts.hour, ts.minute, ts.second)) {
          return Value(*d);
        }
        return readText(st, col, SQL_C_CHAR);
      }
      case ColumnKind::Binary:
        return readText(st, col, SQL_C_BINARY);
      default:
        return readText(st, col, SQL_C_CHAR);
    }
    if (!ok(rc)) throw Error(err::kDatabase, kDriver, "reading a column failed: " + diagnostics(SQL_HANDLE_STMT, st));
    return Value::null();
  }

 private:
  // Text or bytes, fetched in pieces.
  Value readText(SQLHSTMT st, SQLUSMALLINT col, SQLSMALLINT cType) {
    const SQLLEN terminator = cType == SQL_C_CHAR ? 1 : 0;
    std::string out;
    for (;;) {
      SQLLEN ind = 0;
      SQLRETURN rc = odbc().SQLGetData(st, col, cType, chunk_, kChunk, &ind);
      if (rc == SQL_NO_DATA) break;
      if (!ok(rc)) {
        throw Error(err::kDatabase, kDriver, "reading a column failed: " + diagnostics(SQL_HANDLE_STMT, st));
      }
      if (ind == SQL_NULL_DATA) return Value::null();
      const bool truncated = ind == SQL_NO_TOTAL || ind > kChunk - terminator;
      if (!truncated) {
        out.append(chunk_, static_cast<size_t>(ind));
        break;
      }
      out.append(chunk_, static_cast<size_t>(kChunk - terminator));
    }
    return Value(std::move(out));
  }

  char chunk_[kChunk];
};

// One bound parameter's storage for the row being inserted.
struct Parameter {
  SQLLEN indicator = 0;
  SQLBIGINT integer = 0;
  SQLDOUBLE number = 0;
  SQLCHAR bit = 0;
  SQL_TIMESTAMP_STRUCT timestamp{};
};

class OdbcConnection final : public Connection {
 public:
  OdbcConnection(const std::string& connectionString, const ConnectionOptions& options)
      : url_(displayUrl("odbc:" + connectionString)), timeoutSeconds_(options.timeoutSeconds) {
    SQLHANDLE env = SQL_NULL_HANDLE;
    if (!ok(odbc().SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env))) {
      raiseDriverError(kDriver, "cannot allocate an ODBC environment", "");
    }
    env_ = Handle(SQL_HANDLE_ENV, env);
    odbc().SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    SQLHANDLE dbc = SQL_NULL_HANDLE;
    if (!ok(odbc().SQLAllocHandle(SQL_HANDLE_DBC, env, &dbc))) {
      raiseDriverError(kDriver, "cannot allocate an ODBC connection", diagnostics(SQL_HANDLE_ENV, env));
    }
    dbc_ = Handle(SQL_HANDLE_DBC, dbc);
    const SQLULEN loginTimeout = timeoutSeconds_ > 0 ? static_cast<SQLULEN>(timeoutSeconds_) : 15;
    odbc().SQLSetConnectAttr(dbc, SQL_ATTR_LOGIN_TIMEOUT, reinterpret_cast<SQLPOINTER>(loginTimeout), 0);

    std::vector<SQLCHAR> in(connectionString.begin(), connectionString.end());
    in.push_back(0);
    SQLCHAR out[2048];
    SQLSMALLINT outLength = 0;
    SQLRETURN rc = odbc().SQLDriverConnect(dbc, nullptr, in.data(), SQL_NTS, out, sizeof out, &outLength,
                                           SQL_DRIVER_NOPROMPT);
    if (!ok(rc)) raiseDriverError(kDriver, "cannot connect through ODBC", diagnostics(SQL_HANDLE_DBC, dbc));
    connected_ = true;

    SQLCHAR name[256] = {};
    SQLSMALLINT nameLength = 0;
    if (ok(odbc().SQLGetInfo(dbc, SQL_DBMS_NAME, name, sizeof name, &nameLength))) {
      dbmsName_ = reinterpret_cast<const char*>(name);
    }
    provider_ = providerForDbmsName(dbmsName_);
    foldColumnNames_ = provider_ == "POSTGRESQL";
  }

  ~OdbcConnection() override {
    if (connected_) {
      if (inTransaction_) odbc().SQLEndTran(SQL_HANDLE_DBC, dbc_.get(), SQL_ROLLBACK);
      odbc().SQLDisconnect(dbc_.get());
    }
  }

  std::string provider() const override { return provider_; }

  Recordset query(const std::string& sql) override {
    traced(sql);
    Handle st = statement();
    Underway underway(*this, sql, false, st);
    run(st, sql, "query failed");

    SQLSMALLINT n = 0;
    check(odbc().SQLNumResultCols(st.get(), &n), st, "query failed");
    Recordset rs;
    std::vector<ColumnKind> kinds;
    for (SQLUSMALLINT i = 1; i <= static_cast<SQLUSMALLINT>(n); ++i) {
      SQLCHAR name[512] = {};
      SQLSMALLINT nameLength = 0, sqlType = 0, digits = 0, nullable = 0;
      SQLULEN size = 0;
      check(odbc().SQLDescribeCol(st.get(), i, name, sizeof name, &nameLength, &sqlType, &size, &digits, &nullable), st,
            "describing a column failed");
      std::string columnName(reinterpret_cast<const char*>(name));
      if (foldColumnNames_) columnName = schemaCaseColumnName(columnName);
      Column c = columnForOdbcType(std::move(columnName), sqlType, size, digits);
      kinds.push_back(c.kind);
      rs.appendField(std::move(c.field));
    }
    rs.open();
    if (n > 0) {
      auto reader = std::make_unique<ValueReader>();
      // Values are read column by column: a value error can name the key
      // only from the columns already stored, and names no table.
      int stored = 0;
      RowSource source;
      source.columns = n;
      source.origin = [&rs](int i) { return ColumnOrigin{"", rs.field(i).name, false}; };
      source.text = [&rs, &stored](int i) -> std::optional<std::string> {
        if (i >= stored || rs.get(i).isNull()) return std::nullopt;
        return rs.get(i).text();
      };
      SQLRETURN rc;
      while (ok(rc = odbc().SQLFetch(st.get()))) {
        rowsRead_ = true;
        rs.addNew();
        for (SQLUSMALLINT i = 1; i <= static_cast<SQLUSMALLINT>(n); ++i) {
          stored = i - 1;
          Value v = reader->read(st.get(), i, kinds[i - 1u]);
          if (!v.isNull()) storeColumnValue(rs, i - 1, std::move(v), kDriver, source);
        }
      }
      if (rc != SQL_NO_DATA) check(rc, st, "fetching rows failed");
    }
    rs.moveFirst();
    return rs;
  }

  long execute(const std::string& sql) override {
    traced(sql);
    Handle st = statement();
    Underway underway(*this, sql, true, st);
    if (!run(st, sql, "statement failed")) return 0;
    SQLLEN rows = 0;
    check(odbc().SQLRowCount(st.get(), &rows), st, "statement failed");
    return rows < 0 ? 0 : static_cast<long>(rows);
  }

  void begin() override {
    traced("BEGIN");
    if (inTransaction_) raiseDriverError(kDriver, "cannot begin a transaction", "a transaction is already open");
    setAutoCommit(false);
    inTransaction_ = true;
  }

  void commit() override { endTransaction(SQL_COMMIT, "COMMIT"); }
  void rollback() override { endTransaction(SQL_ROLLBACK, "ROLLBACK"); }

  long bulkInsert(const std::string& table, const std::vector<std::string>& columns,
                  const std::function<bool(std::vector<Value>&)>& nextRow) override {
    const std::string what = "bulk insert into " + table + " failed";
    if (columns.empty()) raiseDriverError(kDriver, what, "no columns given");
    std::string sql = "INSERT INTO " + table + " (" + join(columns, ", ") + ") VALUES (";
    for (size_t i = 0; i < columns.size(); ++i) sql += i ? ", ?" : "?";
    sql += ")";
    const bool ownTransaction = !inTransaction_;
    if (ownTransaction) begin();
    try {
      traced(sql);
      Handle st = statement();
      std::vector<SQLCHAR> text(sql.begin(), sql.end());
      check(odbc().SQLPrepare(st.get(), text.data(), static_cast<SQLINTEGER>(text.size())), st, what);
      std::vector<Parameter> params(columns.size());
      std::vector<Value> row(columns.size());
      long count = 0;
      for (;;) {
        row.resize(columns.size());
        if (!nextRow(row)) break;
        if (row.size() != columns.size()) {
          raiseDriverError(kDriver, what,
                           "a row has " + std::to_string(row.size()) + " values for " +
                               std::to_string(columns.size()) + " columns");
        }
        for (size_t i = 0; i < row.size(); ++i) bind(st, static_cast<SQLUSMALLINT>(i + 1), row[i], params[i], what);
        SQLRETURN rc = odbc().SQLExecute(st.get());
        if (rc != SQL_NO_DATA) check(rc, st, what);
        ++count;
      }
      if (ownTransaction) commit();
      return count;
    } catch (...) {
      if (ownTransaction && inTransaction_) {
        odbc().SQLEndTran(SQL_HANDLE_DBC, dbc_.get(), SQL_ROLLBACK);
        setAutoCommit(true);
        inTransaction_ = false;
      }
      throw;
    }
  }

 private:
  Handle statement() {
    SQLHANDLE st = SQL_NULL_HANDLE;
    if (!ok(odbc().SQLAllocHandle(SQL_HANDLE_STMT, dbc_.get(), &st))) {
      raiseDriverError(kDriver, "cannot allocate a statement", diagnostics(SQL_HANDLE_DBC, dbc_.get()));
    }
    return Handle(SQL_HANDLE_STMT, st);
  }

  // Executes sql directly; false when it produced no result (SQL_NO_DATA).
  bool run(const Handle& st, const std::string& sql, std::string_view what) {
    std::vector<SQLCHAR> text(sql.begin(), sql.end());
    text.push_back(0);
    SQLRETURN rc = odbc().SQLExecDirect(st.get(), text.data(), static_cast<SQLINTEGER>(sql.size()));
    if (rc == SQL_NO_DATA) return false;
    check(rc, st, what);
    return true;
  }

  void check(SQLRETURN rc, const Handle& h, std::string_view what) const {
    if (ok(rc)) return;
    const std::string message = diagnostics(h.type(), h.get());
    if (statement_ == nullptr && connectionState(firstState(h.type(), h.get()))) {
      // Ending a transaction, or work outside any statement.
      raiseFault(kDriver, err::kOutcomeUnknown, lostMessage(url_, what, true, true), message);
    }
    if (statement_ != nullptr) {
      const std::string state = firstState(h.type(), h.get());
      if (watchdog_ != nullptr && watchdog_->fired()) {
        raiseFault(kDriver, err::kStatementTimeout, timeoutMessage(url_, *statement_, timeoutSeconds_));
      }
      if (state == "HYT00") {
        raiseFault(kDriver, err::kStatementTimeout, timeoutMessage(url_, *statement_, timeoutSeconds_));
      }
      if (connectionState(state)) {
        const bool unknown = writing_ || inTransaction_ || rowsRead_;
        raiseFault(kDriver, unknown ? err::kOutcomeUnknown : err::kConnectionLost,
                   lostMessage(url_, *statement_, unknown, writing_), message);
      }
    }
    raiseDriverError(kDriver, what, message);
  }

  // Marks the statement under way (for the messages of check()) and keeps
  // its time limit.
  struct Underway {
    Underway(OdbcConnection& c, const std::string& sql, bool write, const Handle& st)
        : c_(c), watchdog_(st.get(), c.timeoutSeconds_) {
      c_.statement_ = &sql;
      c_.writing_ = write;
      c_.rowsRead_ = false;
      c_.watchdog_ = &watchdog_;
    }
    ~Underway() {
      watchdog_.stop();
      c_.statement_ = nullptr;
      c_.writing_ = false;
      c_.watchdog_ = nullptr;
    }
    Underway(const Underway&) = delete;
    Underway& operator=(const Underway&) = delete;
    OdbcConnection& c_;
    Watchdog watchdog_;
  };

  void setAutoCommit(bool on) {
    SQLRETURN rc = odbc().SQLSetConnectAttr(
        dbc_.get(), SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF), 0);
    check(rc, dbc_, "cannot switch auto-commit");
  }

  void endTransaction(SQLSMALLINT completion, const char* statement) {
    traced(statement);
    if (!inTransaction_) {
      raiseDriverError(kDriver, std::string("cannot ") + lcase(statement), "no transaction is open");
    }
    SQLRETURN rc = odbc().SQLEndTran(SQL_HANDLE_DBC, dbc_.get(), completion);
    inTransaction_ = false;
    setAutoCommit(true);
    check(rc, dbc_, std::string(statement) + " failed");
  }

  void bind(const Handle& st, SQLUSMALLINT number, const Value& v, Parameter& p, std::string_view what) {
    SQLSMALLINT cType = SQL_C_CHAR, sqlType = SQL_VARCHAR, digits = 0;
    SQLULEN size = 1;
    SQLPOINTER data = nullptr;
    SQLLEN length = 0;
    switch (v.kind()) {
      case Value::Kind::Empty:
      case Value::Kind::Null:
        data = &p.bit;  // never read
        p.indicator = SQL_NULL_DATA;
        break;
      case Value::Kind::Boolean:
        p.bit = v.asBool() ? 1 : 0;
        cType = SQL_C_BIT;
        sqlType = SQL_BIT;
        data = &p.bit;
        p.indicator = 0;
        break;
      case Value::Kind::Integer:
        p.integer = v.asInteger();
        cType = SQL_C_SBIGINT;
        sqlType = SQL_BIGINT;
        size = 19;
        data = &p.integer;
        p.indicator = 0;
        break;
      case Value::Kind::Double:
        p.number = v.asDouble();
        cType = SQL_C_DOUBLE;
        sqlType = SQL_DOUBLE;
        size = 15;
        data = &p.number;
        p.indicator = 0;
        break;
      case Value::Kind::Date: {
        DateTime d = v.asDate();
        p.timestamp = SQL_TIMESTAMP_STRUCT{static_cast<SQLSMALLINT>(d.year()),
                                           static_cast<SQLUSMALLINT>(d.month()),
                                           static_cast<SQLUSMALLINT>(d.day()),
                                           static_cast<SQLUSMALLINT>(d.hour()),
                                           static_cast<SQLUSMALLINT>(d.minute()),
                                           static_cast<SQLUSMALLINT>(d.second()),
                                           0};
        cType = SQL_C_TYPE_TIMESTAMP;
        sqlType = SQL_TYPE_TIMESTAMP;
        size = 19;
        data = &p.timestamp;
        p.indicator = 0;
        break;
      }
      case Value::Kind::Text: {
        const std::string& s = v.asText();
        sqlType = s.size() > kLongTextParameter ? SQL_LONGVARCHAR : SQL_VARCHAR;
        size = s.empty() ? 1 : s.size();
        data = const_cast<char*>(s.data());
        length = static_cast<SQLLEN>(s.size());
        p.indicator = length;
        break;
      }
    }
    SQLRETURN rc = odbc().SQLBindParameter(st.get(), number, SQL_PARAM_INPUT, cType, sqlType, size, digits, data,
                                           length, &p.indicator);
    check(rc, st, what);
  }

  Handle env_;
  Handle dbc_;
  bool connected_ = false;
  bool inTransaction_ = false;
  bool foldColumnNames_ = false;
  std::string dbmsName_;
  std::string provider_;
  std::string url_;
  int timeoutSeconds_ = 0;
  const std::string* statement_ = nullptr;  // the statement under way
  bool writing_ = false;
  bool rowsRead_ = false;
  Watchdog* watchdog_ = nullptr;
};

}  // namespace

std::string providerForDbmsName(const std::string& dbmsName) {
  if (dbmsName == "Microsoft SQL Server") return "SQLOLEDB";
  if (containsNoCase(dbmsName, "Oracle")) return "MSDAORA";
  if (equalsNoCase(dbmsName, "PostgreSQL")) return "POSTGRESQL";
  if (equalsNoCase(dbmsName, "SQLite")) return "SQLITE";
  return ucase(dbmsName);
}

std::unique_ptr<Connection> openOdbc(const std::string& connectionString, const ConnectionOptions& options) {
  return std::make_unique<OdbcConnection>(connectionString, options);
}

}  // namespace orvalis::drivers
